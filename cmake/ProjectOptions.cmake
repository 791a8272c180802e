# What every target of ours is compiled with. Nothing here reaches a consumer: link it PRIVATE.
option(VEXA_WERROR "Treat warnings as errors (on in CI)" OFF)
set(VEXA_SANITIZE "" CACHE STRING "Sanitizers to build with: empty, address or thread")
set_property(CACHE VEXA_SANITIZE PROPERTY STRINGS "" address thread)
add_feature_info(warnings-as-errors VEXA_WERROR "-Werror")
option(VEXA_COVERAGE "The program counts the lines it has run, however it ends" OFF)
option(VEXA_FUZZ "Build the fuzz targets (with clang)" OFF)
add_feature_info(fuzz-targets VEXA_FUZZ "libFuzzer, run by scripts/fuzz")

find_program(VEXA_CCACHE ccache)
if(VEXA_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # What it needs to take precompiled headers, too; GCC also -fpch-preprocess.
  set(CMAKE_C_COMPILER_LAUNCHER "${VEXA_CCACHE}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${VEXA_CCACHE}")
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

if(VEXA_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(VEXA_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(VEXA_SANITIZE)
  message(FATAL_ERROR "VEXA_SANITIZE is '${VEXA_SANITIZE}'; it may be empty, address or thread")
endif()

# Hardening of the optimised builds, which are what is shipped, for every file of the build: the library that writes crash
# dumps is one of them, and precompiled headers need the same options everywhere. A sanitizer checks more by itself.
if(NOT VEXA_SANITIZE AND NOT VEXA_FUZZ)
  set(vexa_optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
  set(vexa_fortify 2)
  if(NOT MINGW AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12) # MinGW's headers and library stop at 2
    set(vexa_fortify 3)
  endif()
  add_compile_options("$<${vexa_optimised}:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=${vexa_fortify}>")
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|amd64|AMD64")
    add_compile_options("$<${vexa_optimised}:-fcf-protection>")
  endif()
  if(MINGW)
    add_link_options(-Wl,--nxcompat -Wl,--dynamicbase -Wl,--high-entropy-va)
    # Last on the link line and the static one: no further DLL to ship.
    string(APPEND CMAKE_CXX_STANDARD_LIBRARIES " -l:libssp.a")
  else()
    add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  endif()
endif()

if(VEXA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VEXA_FUZZ needs clang; the compiler is ${CMAKE_CXX_COMPILER_ID}")
  endif()
  # The fuzzer sees the way through all of our code; its main() comes with the targets alone.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2
  $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments> # Qt's logging macros
  $<$<BOOL:${VEXA_WERROR}>:-Werror>)
target_compile_definitions(project_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DEPRECATED_WARNINGS
  $<$<BOOL:${WIN32}>:NOMINMAX> $<$<BOOL:${WIN32}>:WIN32_LEAN_AND_MEAN>
  $<$<BOOL:${WIN32}>:UNICODE> $<$<BOOL:${WIN32}>:_UNICODE> $<$<BOOL:${WIN32}>:_WIN32_WINNT=0x0A00>)
target_include_directories(project_options INTERFACE "${PROJECT_SOURCE_DIR}")
