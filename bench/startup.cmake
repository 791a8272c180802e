# Time to the first painted window; no benchmark of the library's kind, since each run is a process.
add_executable(startup_bench startup_bench.cpp)
target_link_libraries(startup_bench PRIVATE vexa_windowlife Qt5::Widgets project_options)
target_compile_definitions(startup_bench PRIVATE
  VEXA_PROGRAM="$<TARGET_FILE:TessalyNDIVexa>" VEXA_LOOPBACK_DIR="${CMAKE_BINARY_DIR}/loopback-runtime")
add_dependencies(startup_bench TessalyNDIVexa loopback_runtime)
