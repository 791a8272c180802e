vexa_test(customheader LABEL unit LIBS vexa_tables vexa_resources)
vexa_test(qtcustomtablewidget LABEL unit LIBS vexa_tables vexa_resources)
# With the preview, which is for OpenGL.
vexa_screen_test(ndiwindowform LABEL unit LIBS vexa_form)
vexa_screen_test(ndiwindowlook LABEL unit LIBS vexa_form)
