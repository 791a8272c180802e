vexa_test(crashhandler LABEL unit LIBS vexa_crash vexa_upload)

# Where crashes leave dumps. Their symbols are read by programs of this machine, so that is a test of its own.
if(TARGET breakpad_client)
  include(screentest.cmake)
  set(crash_dumps "${CMAKE_CURRENT_BINARY_DIR}/crash-dumps")
  vexa_test(crashconsole LABEL console TIMEOUT 280)
  vexa_screen_test(crashwindow LABEL window TIMEOUT 280)
  foreach(test crashconsole crashwindow)
    target_compile_definitions(tst_${test} PRIVATE VEXA_CRASH_DUMPS="${crash_dumps}")
    set_property(TEST ${test} PROPERTY FIXTURES_SETUP crash_dumps)
  endforeach()
  if(CMAKE_HOST_SYSTEM_NAME STREQUAL "Linux")
    add_custom_target(breakpad_tools ALL COMMAND "${PROJECT_SOURCE_DIR}/scripts/breakpad-tools" >/dev/null VERBATIM)
    add_test(NAME crashnames
      COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/crash_names/names-are-told" "${crash_dumps}" "${CMAKE_BINARY_DIR}")
    set_tests_properties(crashnames PROPERTIES LABELS integration TIMEOUT 240 FIXTURES_REQUIRED crash_dumps)
  endif()
endif()
