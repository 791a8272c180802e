# The analysis tool, its relay, and the stand-in for the tool.
add_executable(standin_analysis standin_analysis/main.cpp standin_analysis/standinplatform.h)
set_target_properties(standin_analysis PROPERTIES AUTOMOC OFF)
target_sources(standin_analysis PRIVATE standin_analysis/standinplatform_$<IF:$<BOOL:${WIN32}>,win,linux>.cpp)
target_link_libraries(standin_analysis PRIVATE project_options $<$<BOOL:${WIN32}>:ws2_32>)
if(WIN32)
  target_link_options(standin_analysis PRIVATE -static)
endif()

find_package(Qt5 5.15 REQUIRED COMPONENTS Network)
add_library(standin_control STATIC
  standin_analysis/argumentrules.h
  standin_analysis/hostilenames.h
  standin_analysis/standincontrol.cpp standin_analysis/standincontrol.h
  standin_analysis/testfolder.h
  standin_analysis/workerrun.cpp standin_analysis/workerrun.h)
target_link_libraries(standin_control PUBLIC vexa_analysis Qt5::Network Qt5::Test PRIVATE project_options)
# Relative to the folder of the tests, which is another one when Windows programs see it.
target_compile_definitions(standin_control PRIVATE
  VEXA_STANDIN="$<TARGET_FILE_NAME:standin_analysis>"
  VEXA_RELAY="../app/$<TARGET_FILE_NAME:pipe_stdout>")
add_dependencies(standin_control standin_analysis pipe_stdout)

vexa_test(commandfile LABEL unit LIBS vexa_relay standin_control)
vexa_test(analysisparser LABEL unit LIBS vexa_analysis)
vexa_test(relay LABEL unit TIMEOUT 180 LIBS standin_control)
vexa_test(analysisworker LABEL unit TIMEOUT 180 LIBS standin_control)
