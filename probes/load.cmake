# How busy processor and graphics are, once a second. Qt Core only.
add_library(vexa_load STATIC
  childoutput.cpp childoutput.h
  gpuloadtext.cpp gpuloadtext.h
  graphicsdriver.h
  loadabort.h
  loadreader.h
  loadtrack.cpp loadtrack.h
  procstat.cpp procstat.h)
if(WIN32)
  target_sources(vexa_load PRIVATE graphicsdriver_win.cpp loadreader_win.cpp)
  target_link_libraries(vexa_load PRIVATE pdh)
else()
  target_sources(vexa_load PRIVATE
    drmclients_linux.cpp drmclients_linux.h
    graphicsdriver_linux.cpp
    loadreader_linux.cpp loadreader_linux.h
    startoffile_linux.cpp startoffile_linux.h)
  target_link_libraries(vexa_load PRIVATE ${CMAKE_DL_LIBS})
endif()
target_link_libraries(vexa_load PUBLIC Qt5::Core PRIVATE vexa_tooloutput project_options)
