# The journal of a running test, and what the next start makes of it.
vexa_test(journalformat LABEL unit LIBS vexa_record)
vexa_test(journalqueue ENGINE LABEL unit LIBS vexa_journal)
vexa_test(journal ENGINE SERIAL LABEL unit LIBS vexa_testrun)
if(NOT WIN32)
  vexa_test(journal_linux LABEL unit LIBS vexa_testrun)
endif()

add_executable(journal_driver journal_driver/main.cpp)
target_link_libraries(journal_driver PRIVATE vexa_testrun project_options Threads::Threads)
vexa_test(journalkill SERIAL LABEL integration TIMEOUT 120 LIBS vexa_journal)
target_compile_definitions(tst_journalkill PRIVATE VEXA_JOURNAL_DRIVER="$<TARGET_FILE:journal_driver>")
add_dependencies(tst_journalkill journal_driver)

include(screentest.cmake)
vexa_screen_test(journalwindow LABEL window TIMEOUT 180 LIBS vexa_window vexa_journal vexa_resources)
set_target_properties(tst_journalwindow PROPERTIES AUTOUIC OFF) # the form is the window's
