# The strip chart of processor and graphics load.
add_library(vexa_loadchart STATIC
  cpugputrack.cpp cpugputrack.h
  loadchartgeometry.cpp loadchartgeometry.h)
target_link_libraries(vexa_loadchart PUBLIC vexa_load Qt5::Widgets PRIVATE project_options)
