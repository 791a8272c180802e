# The window itself.
add_library(vexa_window STATIC
  analysisview.cpp analysisview.h
  chartreport.cpp chartreport.h
  controlstates.cpp controlstates.h
  figures.cpp figures.h
  machinetabs.cpp machinetabs.h
  modeswitch.cpp modeswitch.h
  ndiwindow.cpp ndiwindow.h
  ndiwindowparts.cpp ndiwindowparts.h
  previewwarmup.cpp previewwarmup.h
  reportfiles.cpp reportfiles.h
  sourcelists.cpp sourcelists.h
  sourcesearch.cpp sourcesearch.h
  windowlog.cpp windowlog.h)
target_link_libraries(vexa_window PUBLIC vexa_form vexa_windowparts vexa_machine vexa_finder
  PRIVATE vexa_report vexa_benchmark vexa_charts vexa_display vexa_load vexa_loadchart vexa_tables vexa_widgets project_options)
set_target_properties(vexa_window PROPERTIES AUTOUIC OFF) # vexa_form makes ui_ndiwindow.h
