vexa_test(framegeometry LABEL unit LIBS vexa_frame)
foreach(test framelesswindow framestates frameclosing)
  vexa_screen_test(${test} LABEL unit TIMEOUT 240 LIBS vexa_frame vexa_resources)
endforeach()

# The window on screens of these sizes.
if(NOT WIN32)
  add_executable(tst_framescreens tst_framescreens.cpp)
  target_link_libraries(tst_framescreens PRIVATE test_support vexa_frame vexa_resources project_options)
  foreach(size IN ITEMS 1920x1080 2560x1440)
    add_test(NAME framescreens_${size}
      COMMAND "${CMAKE_CURRENT_LIST_DIR}/support/on-screen" ${size}x24 $<TARGET_FILE:tst_framescreens>)
    set_tests_properties(framescreens_${size} PROPERTIES LABELS unit TIMEOUT 60
      ENVIRONMENT "QT_QPA_PLATFORM=xcb;LIBGL_ALWAYS_SOFTWARE=1;VEXA_TEST_SCREEN=${size}")
    if(VEXA_SANITIZE STREQUAL "address")
      set_property(TEST framescreens_${size} PROPERTY ENVIRONMENT_MODIFICATION
        "ASAN_OPTIONS=string_append::strict_string_checks=0:detect_leaks=0") # as in screentest.cmake
    endif()
  endforeach()
endif()
