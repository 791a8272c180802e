# Below both lives: what keeps a test's measurements over the end of the process, and the test itself.
add_library(vexa_journal STATIC
  backgroundrecovery.cpp backgroundrecovery.h
  journal.cpp journal.h
  journalqueue.cpp journalqueue.h
  journalrecovery.cpp journalrecovery.h)
target_link_libraries(vexa_journal PUBLIC vexa_record PRIVATE project_options Threads::Threads)

add_library(vexa_testrun STATIC testrecorder.cpp testrecorder.h testrun.cpp testrun.h unusedmemory.h)
target_sources(vexa_testrun PRIVATE $<IF:$<BOOL:${WIN32}>,unusedmemory_win.cpp,unusedmemory_linux.cpp>)
target_link_libraries(vexa_testrun PUBLIC vexa_ndi vexa_journal PRIVATE project_options)
