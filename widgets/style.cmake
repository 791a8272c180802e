# The application's style: a palette, a style sheet and the few primitives that both cannot give.
add_library(vexa_style STATIC
  darkstyle.cpp darkstyle.h
  stylesheetnoise.cpp stylesheetnoise.h
  style.qrc)
target_link_libraries(vexa_style PUBLIC Qt5::Widgets PRIVATE project_options)
