include(screentest.cmake)

# The windows of the real program, seen and driven from outside.
add_library(window_driver STATIC support/windowdriver.h)
target_sources(window_driver PRIVATE support/windowdriver_$<IF:$<BOOL:${WIN32}>,win,linux>.cpp)
target_link_libraries(window_driver PUBLIC Qt5::Core PRIVATE project_options)
if(NOT WIN32)
  find_package(X11 REQUIRED)
  target_link_libraries(window_driver PRIVATE X11::X11)
endif()

vexa_screen_test(windowlife LABEL window TIMEOUT 240 LIBS window_driver)
target_compile_definitions(tst_windowlife PRIVATE VEXA_FAKE_DRIVER="$<TARGET_FILE:fake_graphics_driver>")
add_dependencies(tst_windowlife fake_graphics_driver)
vexa_test(firstpaint LABEL unit LIBS vexa_windowlife Qt5::Widgets)
