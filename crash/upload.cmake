find_package(Qt5 5.15 REQUIRED COMPONENTS Network)

add_library(vexa_upload STATIC qbreakpadhttpuploader.cpp qbreakpadhttpuploader.h)
target_link_libraries(vexa_upload PUBLIC Qt5::Core Qt5::Network PRIVATE project_options)
