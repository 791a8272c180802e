# The external analysis tool: finding it, running it through the relay, reading what it prints. Qt Core only.
if(NOT TARGET vexa_relay)
  add_subdirectory("${PROJECT_SOURCE_DIR}/relay" "${PROJECT_BINARY_DIR}/relay")
endif()

add_library(vexa_analysis STATIC
  analysisparser.cpp analysisparser.h
  analysistool.cpp analysistool.h
  analysisworker.cpp analysisworker.h)
target_sources(vexa_analysis PRIVATE analysistool_$<IF:$<BOOL:${WIN32}>,win,linux>.cpp)
target_link_libraries(vexa_analysis PUBLIC Qt5::Core PRIVATE project_options)
# Whoever runs the worker needs the relay.
add_dependencies(vexa_analysis pipe_stdout)
