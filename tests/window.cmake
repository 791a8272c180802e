vexa_screen_test(ndiwindow LABEL window TIMEOUT 180 LIBS vexa_window vexa_resources)
set_target_properties(tst_ndiwindow PROPERTIES AUTOUIC OFF) # the form is the window's
