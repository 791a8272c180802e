# For looking at the style; not a test.
add_executable(vexa_style_viewer style_viewer/main.cpp style_viewer/pages.cpp style_viewer/pages.h)
target_link_libraries(vexa_style_viewer PRIVATE vexa_style vexa_resources project_options)

vexa_test(darkstyle LABEL unit LIBS vexa_style vexa_sourcebutton)
