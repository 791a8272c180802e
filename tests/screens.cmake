# Makes the pictures of the documents: scripts/screenshots. Not a test; it is built with them so that it stays current.
if(WIN32)
  return()
endif()
add_executable(vexa_screens
  screens/main.cpp
  screens/stage.cpp screens/stage.h)
set_target_properties(vexa_screens PROPERTIES AUTOUIC OFF) # the form is the window's
target_link_libraries(vexa_screens PRIVATE test_support standin_control
  vexa_benchmark vexa_charts vexa_frame vexa_resources vexa_style vexa_tables vexa_window project_options)
target_compile_definitions(vexa_screens PRIVATE VEXA_STANDIN_BENCHMARK="$<TARGET_FILE:standin_benchmark>")
add_dependencies(vexa_screens standin_benchmark)
