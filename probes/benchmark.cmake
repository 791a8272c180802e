# The benchmark tool: finding, running and reading it needs Qt Core only; the dialog stands above.
add_library(vexa_benchmarkparser STATIC
  benchmarkparser.cpp benchmarkparser.h
  benchmarktool.cpp benchmarktool.h)
if(WIN32)
  target_sources(vexa_benchmarkparser PRIVATE benchmarktool_win.cpp)
else()
  target_sources(vexa_benchmarkparser PRIVATE benchmarktool_linux.cpp)
endif()
target_link_libraries(vexa_benchmarkparser PUBLIC Qt5::Core PRIVATE vexa_tooloutput project_options)

add_library(vexa_benchmark STATIC benchmarkdlg.cpp benchmarkdlg.h)
target_link_libraries(vexa_benchmark PUBLIC Qt5::Widgets PRIVATE vexa_benchmarkparser vexa_widgets project_options)
