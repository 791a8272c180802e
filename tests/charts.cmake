# A second, plain way to draw a chart, and the comparison of pictures.
add_library(test_charts STATIC
  charts/naivechart.cpp charts/naivechart.h
  charts/picturecompare.cpp charts/picturecompare.h)
target_link_libraries(test_charts PUBLIC Qt5::Gui PRIVATE vexa_charts project_options)

vexa_test(chartpicture LABEL image TIMEOUT 120 LIBS vexa_charts test_charts)
vexa_test(chartgeometry LABEL unit LIBS vexa_charts)
vexa_test(chartcurves LABEL unit LIBS vexa_charts test_charts)
vexa_test(chartcallout LABEL image LIBS vexa_charts)
vexa_test(customsourcebutton LABEL image LIBS vexa_sourcebutton)
vexa_test(customplot LABEL image LIBS vexa_charts vexa_sourcebutton test_charts)
vexa_test(chartpictures LABEL image LIBS vexa_charts test_charts)
target_compile_definitions(tst_chartpictures PRIVATE VEXA_TEST_SOURCE_DIR="${CMAKE_CURRENT_SOURCE_DIR}")
