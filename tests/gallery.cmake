# For looking at the widgets; not a test.
add_executable(vexa_gallery
  gallery/chartpage.cpp gallery/chartpage.h
  gallery/main.cpp
  gallery/pages.cpp gallery/pages.h
  gallery/widgetpage.cpp gallery/widgetpage.h)
target_link_libraries(vexa_gallery PRIVATE
  vexa_benchmark vexa_charts vexa_loadchart vexa_preview vexa_resources vexa_widgets project_options)
