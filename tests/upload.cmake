add_library(test_httpserver STATIC support/httpserver.cpp support/httpserver.h)
target_link_libraries(test_httpserver PUBLIC Qt5::Network PRIVATE project_options)

vexa_test(httpuploader LABEL unit LIBS vexa_upload test_httpserver)
