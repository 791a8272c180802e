# vexa_screen_test(NAME ...): vexa_test() for what needs a screen and OpenGL. Same arguments. On Linux it runs in an
# X server of its own with Mesa, under Wine with an X display of its own, whatever QT_QPA_PLATFORM says outside.
include_guard(DIRECTORY)

if(CMAKE_CROSSCOMPILING_EMULATOR)
  set(vexa_screen_runner ${CMAKE_CROSSCOMPILING_EMULATOR})
  list(INSERT vexa_screen_runner 1 --xvfb)
elseif(NOT WIN32)
  set(vexa_screen_runner "${CMAKE_CURRENT_LIST_DIR}/support/on-screen" 1280x1024x24)
endif()

function(vexa_screen_test name)
  vexa_test(${name} ${ARGN})
  # What CMake puts before the command of a test: an emulator, or a launcher from 3.29 on.
  if(CMAKE_VERSION VERSION_GREATER_EQUAL 3.29 AND NOT CMAKE_CROSSCOMPILING)
    set_property(TARGET tst_${name} PROPERTY TEST_LAUNCHER ${vexa_screen_runner})
  else()
    set_property(TARGET tst_${name} PROPERTY CROSSCOMPILING_EMULATOR ${vexa_screen_runner})
  endif()
  if(WIN32)
    set(environment QT_QPA_PLATFORM=windows:dpiawareness=0)
  else()
    set(environment QT_QPA_PLATFORM=xcb LIBGL_ALWAYS_SOFTWARE=1)
  endif()
  set_property(TEST ${name} PROPERTY ENVIRONMENT ${environment})
  if(VEXA_SANITIZE STREQUAL "address")
    # The X client libraries copy texts without their ends, and the drivers they load leave memory behind.
    set_property(TEST ${name} PROPERTY ENVIRONMENT_MODIFICATION
      "ASAN_OPTIONS=string_append::strict_string_checks=0:detect_leaks=0")
  endif()
endfunction()
