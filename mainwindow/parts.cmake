# What the window consists of, each testable without it.
add_library(vexa_windowparts STATIC
  analysisrun.cpp analysisrun.h
  formatprobes.cpp formatprobes.h
  previewchoice.cpp previewchoice.h
  sourcecatalog.cpp sourcecatalog.h
  videoformat.cpp videoformat.h)
target_link_libraries(vexa_windowparts PUBLIC vexa_ndi vexa_analysis vexa_testrun vexa_preview PRIVATE project_options)
