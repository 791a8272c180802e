# For looking at the window's form in every mode; not a test.
add_executable(vexa_form_viewer form_viewer/main.cpp form_viewer/formsamples.cpp form_viewer/formsamples.h)
target_link_libraries(vexa_form_viewer PRIVATE vexa_form project_options)

vexa_test(customheader LABEL unit LIBS vexa_tables vexa_resources)
vexa_test(qtcustomtablewidget LABEL unit LIBS vexa_tables vexa_resources)
# With the preview, which is for OpenGL.
vexa_screen_test(ndiwindowform LABEL unit LIBS vexa_form)
vexa_screen_test(ndiwindowlook LABEL unit LIBS vexa_form)
