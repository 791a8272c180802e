# The window without a frame of the system's: title bar, borders, shadows. It gives ui_framelesswindow.h.
add_library(vexa_frame STATIC
  framegeometry.cpp framegeometry.h
  framelesswindow.cpp framelesswindow.h framelesswindow.ui
  frameshadow.cpp frameshadow.h
  windowdragger.cpp windowdragger.h
  windowsystem.cpp windowsystem.h)
target_link_libraries(vexa_frame PUBLIC vexa_resources Qt5::Widgets PRIVATE project_options)
