vexa_test(framegeometry LABEL unit LIBS vexa_frame)
vexa_screen_test(framelesswindow LABEL unit LIBS vexa_frame vexa_resources)
vexa_screen_test(framestates LABEL unit LIBS vexa_frame vexa_resources)
vexa_screen_test(frameclosing LABEL unit LIBS vexa_frame vexa_resources)

# For looking at the frame; not a test.
add_executable(vexa_frame_viewer
  frame_viewer/main.cpp form_viewer/formsamples.cpp form_viewer/formsamples.h)
target_link_libraries(vexa_frame_viewer PRIVATE vexa_form vexa_frame vexa_resources project_options)
