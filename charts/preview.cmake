# libswscale comes from the system, or from the ready-made Windows libraries; both are found the same way.
find_path(VEXA_SWSCALE_INCLUDE_DIR libswscale/swscale.h REQUIRED)
find_library(VEXA_SWSCALE_LIBRARY swscale REQUIRED)
find_library(VEXA_AVUTIL_LIBRARY avutil REQUIRED)
mark_as_advanced(VEXA_SWSCALE_INCLUDE_DIR VEXA_SWSCALE_LIBRARY VEXA_AVUTIL_LIBRARY)
add_library(vexa_swscale INTERFACE)
target_include_directories(vexa_swscale SYSTEM INTERFACE "${VEXA_SWSCALE_INCLUDE_DIR}")
target_link_libraries(vexa_swscale INTERFACE "${VEXA_SWSCALE_LIBRARY}" "${VEXA_AVUTIL_LIBRARY}")

# The preview: fitting and scaling need no widget, the feed no OpenGL.
add_library(vexa_preview STATIC
  openglwindow.cpp openglwindow.h
  previewfeed.cpp previewfeed.h
  previewgeometry.cpp previewgeometry.h
  previewscaler.cpp previewscaler.h
  previewthread.cpp previewthread.h
  videoglpreview.cpp videoglpreview.h)
target_link_libraries(vexa_preview PUBLIC Qt5::Widgets PRIVATE vexa_swscale project_options)
