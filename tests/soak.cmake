# One test after the other in the window: two minutes of it here, an hour by hand (docs/reliability.md).
if(NOT WIN32)
  include(screentest.cmake)
  add_executable(window_soak soak/main.cpp)
  target_link_libraries(window_soak PRIVATE
    test_support vexa_window vexa_frame vexa_style vexa_resources vexa_record project_options)
  set_target_properties(window_soak PROPERTIES AUTOUIC OFF) # the form is the window's
  if(NOT VEXA_SANITIZE)
    add_test(NAME window_soak COMMAND ${vexa_screen_runner} $<TARGET_FILE:window_soak> 120 20)
    set_tests_properties(window_soak PROPERTIES LABELS soak TIMEOUT 300 RUN_SERIAL TRUE
      ENVIRONMENT "QT_QPA_PLATFORM=xcb;LIBGL_ALWAYS_SOFTWARE=1")
  endif()
endif()
