# The report file: text in, values out, and back.
add_library(vexa_report STATIC
  reportdata.h
  reportreader.cpp reportreader.h
  reportwriter.cpp reportwriter.h)
target_link_libraries(vexa_report PUBLIC Qt5::Core PRIVATE project_options)
