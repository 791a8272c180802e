# How fluid the window is during a test, and what it costs beside the console program. Needs a screen.
add_executable(window_bench window_bench.cpp)
target_link_libraries(window_bench PRIVATE vexa_window vexa_frame vexa_resources vexa_style project_options)
target_compile_definitions(window_bench PRIVATE
  VEXA_PROGRAM="$<TARGET_FILE:TessalyNDIVexa>" VEXA_LOOPBACK_DIR="${CMAKE_BINARY_DIR}/loopback-runtime")
add_dependencies(window_bench TessalyNDIVexa loopback_runtime)
set_target_properties(window_bench PROPERTIES AUTOUIC OFF) # the form is the window's

# What receiving costs in the window, and without anything around it.
add_executable(receive_bench receive_bench.cpp)
target_link_libraries(receive_bench PRIVATE vexa_window vexa_resources vexa_style vexa_ndi project_options)
target_compile_definitions(receive_bench PRIVATE VEXA_LOOPBACK_DIR="${CMAKE_BINARY_DIR}/loopback-runtime")
add_dependencies(receive_bench loopback_runtime)
set_target_properties(receive_bench PROPERTIES AUTOUIC OFF) # the form is the window's
