if(NOT WIN32)
  add_subdirectory(faults)
endif()
