vexa_test(progressindicator LABEL unit LIBS vexa_widgets)
vexa_test(roundbararc LABEL unit LIBS vexa_widgets)
vexa_test(roundprogressbar LABEL unit LIBS vexa_widgets)
# The same on a screen with two device pixels to one.
add_test(NAME roundprogressbar_hidpi COMMAND tst_roundprogressbar)
set_tests_properties(roundprogressbar_hidpi PROPERTIES LABELS unit TIMEOUT 60 ENVIRONMENT QT_SCALE_FACTOR=2)
vexa_test(custommessagebox LABEL unit LIBS vexa_widgets)
vexa_test(benchmarkparser LABEL unit LIBS vexa_benchmarkparser)
vexa_test(benchmarkdlg LABEL unit LIBS vexa_benchmark vexa_benchmarkparser vexa_widgets)

# A stand-in for the benchmark tool, under a name of its own: tests copy it to where they want it found.
add_executable(standin_benchmark standin_benchmark/standinbenchmark.cpp)
target_link_libraries(standin_benchmark PRIVATE Threads::Threads project_options)
if(MINGW)
  target_link_options(standin_benchmark PRIVATE -static) # runs from any folder
endif()
foreach(test IN ITEMS tst_benchmarkparser tst_benchmarkdlg)
  target_compile_definitions(${test} PRIVATE VEXA_STANDIN_BENCHMARK="$<TARGET_FILE:standin_benchmark>")
  add_dependencies(${test} standin_benchmark)
endforeach()
# A folder of its own: the dialog's test puts the tool beside its program.
set_target_properties(tst_benchmarkdlg PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/benchmarkdlg")
