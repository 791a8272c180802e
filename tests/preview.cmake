include(screentest.cmake)

add_library(preview_support STATIC
  support/previewframes.cpp support/previewframes.h
  support/previewscene.h
  support/previewscreen.h)
target_link_libraries(preview_support PUBLIC vexa_preview PRIVATE project_options)

vexa_test(previewgeometry LABEL unit LIBS vexa_preview)
vexa_test(previewscaler LABEL unit LIBS vexa_preview vexa_swscale)
vexa_test(previewoffscreen SERIAL LABEL unit LIBS preview_support)
vexa_screen_test(videoglpreview LABEL unit TIMEOUT 240 LIBS preview_support)
vexa_screen_test(openglwindow LABEL unit TIMEOUT 120 LIBS preview_support)
vexa_screen_test(previewthread SERIAL LABEL unit TIMEOUT 120 LIBS preview_support)
vexa_screen_test(previewfeed LABEL integration LIBS preview_support vexa_ndi)

# Not a test, it takes its time: scripts/preview-soak.
if(NOT WIN32)
  add_executable(preview_soak EXCLUDE_FROM_ALL preview_soak/main.cpp)
  target_link_libraries(preview_soak PRIVATE vexa_preview vexa_ndi project_options)
  add_dependencies(preview_soak loopback_runtime)
endif()
