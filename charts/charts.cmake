# The chart: what it computes needs no widget, only its painting and the chart itself do.
add_library(vexa_charts STATIC
  callout.cpp callout.h
  chartgeometry.cpp chartgeometry.h
  chartpicture.cpp chartpicture.h
  chartstyle.h
  columnbins.cpp columnbins.h
  cursorpick.cpp cursorpick.h
  customplot.cpp customplot.h
  naturalspline.cpp naturalspline.h
  pointseries.h
  repaintpacer.cpp repaintpacer.h
  segments.cpp segments.h
  smoothcurve.cpp smoothcurve.h
  xrange.h)
target_link_libraries(vexa_charts PUBLIC Qt5::Widgets PRIVATE vexa_sourcebutton project_options)
