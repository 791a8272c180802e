# The tables of the window, their columns and their check boxes.
add_library(vexa_tables STATIC
  customheader.cpp customheader.h
  qtcustomtablewidget.cpp qtcustomtablewidget.h
  resulttables.cpp resulttables.h
  sourcecheck.cpp sourcecheck.h)
target_link_libraries(vexa_tables PUBLIC Qt5::Widgets PRIVATE project_options)

# What the window looks like: all its widgets, in a file for Qt Designer. It gives ui_ndiwindow.h.
add_library(vexa_form STATIC
  elidedcombobox.cpp elidedcombobox.h
  elidedlabel.cpp elidedlabel.h
  ndiwindow.ui
  ndiwindowform.cpp ndiwindowform.h
  optionlabel.cpp optionlabel.h
  wholetexttip.cpp wholetexttip.h)
target_link_libraries(vexa_form
  PUBLIC vexa_tables vexa_charts vexa_loadchart vexa_preview vexa_widgets vexa_resources Qt5::Widgets
  PRIVATE vexa_sourcebutton project_options)
# What uic writes lies in the build folder, and includes our headers from the project's root.
target_include_directories(vexa_form PUBLIC
  "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_BINARY_DIR}/vexa_form_autogen/include")
