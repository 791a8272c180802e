# breakpad_client: the part of Google Breakpad that writes minidumps, from deps/breakpad (scripts/fetch-breakpad). Only
# the files that are needed, as they are; what the compiler has to say about them is not for us.
set(breakpad_dir "${PROJECT_SOURCE_DIR}/deps/breakpad/deps")
set(breakpad_src "${breakpad_dir}/breakpad/src")

set(breakpad_found OFF)
if(EXISTS "${breakpad_src}/google_breakpad/common/minidump_format.h")
  set(breakpad_found ON)
endif()

set(breakpad_used OFF)
if(VEXA_SANITIZE OR VEXA_FUZZ)
  # A sanitizer tells of crashes itself, from the same signals.
elseif(breakpad_found AND WIN32)
  set(breakpad_used ON)
  add_library(breakpad_client STATIC
    "${breakpad_src}/client/windows/crash_generation/crash_generation_client.cc"
    "${breakpad_src}/client/windows/handler/exception_handler.cc"
    "${breakpad_src}/common/windows/guid_string.cc")
  target_compile_definitions(breakpad_client PUBLIC UNICODE _UNICODE _WIN32_WINNT=0x0A00)
  # The thread of a writer that goes is asked to end. To terminate it may leave the loader's lock taken for ever.
  target_compile_definitions(breakpad_client PRIVATE BREAKPAD_NO_TERMINATE_THREAD)
elseif(breakpad_found AND CMAKE_SYSTEM_NAME STREQUAL "Linux" AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|amd64|AMD64")
  set(breakpad_used ON)
  set(breakpad_client_sources
    client/linux/crash_generation/crash_generation_client.cc
    client/linux/dump_writer_common/thread_info.cc
    client/linux/dump_writer_common/ucontext_reader.cc
    client/linux/handler/exception_handler.cc
    client/linux/handler/minidump_descriptor.cc
    client/linux/log/log.cc
    client/linux/microdump_writer/microdump_writer.cc
    client/linux/minidump_writer/linux_dumper.cc
    client/linux/minidump_writer/linux_ptrace_dumper.cc
    client/linux/minidump_writer/minidump_writer.cc
    client/linux/minidump_writer/pe_file.cc
    client/minidump_file_writer.cc
    common/convert_UTF.cc
    common/string_conversion.cc
    common/linux/elfutils.cc
    common/linux/file_id.cc
    common/linux/guid_creator.cc
    common/linux/linux_libc_support.cc
    common/linux/memory_mapped_file.cc
    common/linux/safe_readlink.cc)
  list(TRANSFORM breakpad_client_sources PREPEND "${breakpad_src}/")
  add_library(breakpad_client STATIC ${breakpad_client_sources})
  target_compile_definitions(breakpad_client PRIVATE HAVE_GETCONTEXT HAVE_GETRANDOM HAVE_SYS_RANDOM_H)
  target_link_libraries(breakpad_client PRIVATE Threads::Threads)
endif()
if(breakpad_used)
  set_target_properties(breakpad_client PROPERTIES AUTOMOC OFF AUTORCC OFF AUTOUIC OFF)
  target_include_directories(breakpad_client SYSTEM PUBLIC "${breakpad_src}" "${breakpad_dir}")
  target_compile_options(breakpad_client PRIVATE -w)
endif()
add_feature_info(crash-dumps breakpad_used "minidumps of crashes, with deps/breakpad (scripts/fetch-breakpad)")
