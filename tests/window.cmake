foreach(test ndiwindow ndiwindow_loopback ndiwindow_reports ndiwindow_sources ndiwindow_states)
  vexa_screen_test(${test} LABEL window TIMEOUT 240 LIBS vexa_window vexa_resources vexa_tables)
endforeach()
vexa_screen_test(ndiwindow_tools LABEL window TIMEOUT 240
  LIBS vexa_window vexa_resources vexa_benchmark vexa_charts standin_control)
foreach(test ndiwindow ndiwindow_loopback ndiwindow_reports ndiwindow_sources ndiwindow_states
    ndiwindow_tools)
  set_target_properties(tst_${test} PROPERTIES AUTOUIC OFF) # the form is the window's
endforeach()
vexa_screen_test(previewwarmup LABEL window TIMEOUT 120 LIBS vexa_window preview_support)
set_target_properties(tst_previewwarmup PROPERTIES AUTOUIC OFF)
if(NOT WIN32 AND NOT VEXA_SANITIZE) # sanitizers have memory stores of their own
  vexa_screen_test(unusedmemory LABEL window LIBS vexa_window vexa_resources vexa_tables)
  set_target_properties(tst_unusedmemory PROPERTIES AUTOUIC OFF)
endif()
