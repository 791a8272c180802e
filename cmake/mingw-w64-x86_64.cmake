# Toolchain: Windows x64 with Debian's MinGW-w64 (POSIX threads), on Linux.
#
# The Windows libraries (folders qt5 and ffmpeg) are looked for in the cache variable VEXA_WIN64_ROOT, then in the
# environment variable VEXA_WIN64_ROOT, then in build/win64 of the project, into which the ready-made archive is
# unpacked when there is one. packaging/windows/build-sysroot makes them where there is none.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_VERSION 10.0)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(vexa_triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${vexa_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${vexa_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${vexa_triple}-windres)

# The same sources give the same file, whenever they are linked.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--no-insert-timestamp")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-Wl,--no-insert-timestamp")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-Wl,--no-insert-timestamp")

get_filename_component(vexa_project_dir "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

# A check of the compiler (try_compile) reads this file again, without the cache of the build.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VEXA_WIN64_ROOT)

if(NOT VEXA_WIN64_ROOT)
  if(NOT "$ENV{VEXA_WIN64_ROOT}" STREQUAL "")
    set(vexa_win64_root "$ENV{VEXA_WIN64_ROOT}")
  else()
    execute_process(
      COMMAND "${vexa_project_dir}/packaging/windows/unpack-sysroot"
      OUTPUT_VARIABLE vexa_win64_root OUTPUT_STRIP_TRAILING_WHITESPACE
      ERROR_VARIABLE vexa_unpack_error ERROR_STRIP_TRAILING_WHITESPACE
      RESULT_VARIABLE vexa_unpack_status)
    if(vexa_unpack_status EQUAL 3)
      message(FATAL_ERROR
        "No Windows libraries found (${vexa_unpack_error}). Set VEXA_WIN64_ROOT to a folder with qt5 and ffmpeg in it, "
        "or VEXA_WIN64_ARCHIVE to the archive, or make them with packaging/windows/build-sysroot.")
    elseif(NOT vexa_unpack_status EQUAL 0)
      message(FATAL_ERROR "The Windows libraries could not be unpacked: ${vexa_unpack_error}")
    endif()
  endif()
  set(VEXA_WIN64_ROOT "${vexa_win64_root}" CACHE PATH "Folder with the Windows libraries: qt5 and ffmpeg")
endif()

get_filename_component(vexa_win64_root "${VEXA_WIN64_ROOT}" ABSOLUTE BASE_DIR "${vexa_project_dir}")
if(NOT EXISTS "${vexa_win64_root}/qt5" AND EXISTS "${vexa_win64_root}/win64/qt5")
  set(vexa_win64_root "${vexa_win64_root}/win64")
endif()
foreach(vexa_file IN ITEMS qt5/lib/cmake/Qt5/Qt5Config.cmake qt5/bin/moc ffmpeg/lib/libswscale.dll.a)
  if(NOT EXISTS "${vexa_win64_root}/${vexa_file}")
    message(FATAL_ERROR "VEXA_WIN64_ROOT is '${VEXA_WIN64_ROOT}', but '${vexa_win64_root}/${vexa_file}' is not there")
  endif()
endforeach()

set(CMAKE_FIND_ROOT_PATH "/usr/${vexa_triple}" "${vexa_win64_root}/qt5" "${vexa_win64_root}/ffmpeg")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Programs of the build (tests, code generators) run under Wine, with the DLLs where they are.
set(vexa_dll_dirs "${vexa_win64_root}/qt5/bin" "${vexa_win64_root}/ffmpeg/bin")
foreach(vexa_file IN ITEMS libstdc++-6.dll libwinpthread-1.dll)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${vexa_file}
    OUTPUT_VARIABLE vexa_path OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(IS_ABSOLUTE "${vexa_path}")
    get_filename_component(vexa_path "${vexa_path}" REALPATH)
    get_filename_component(vexa_path "${vexa_path}" DIRECTORY)
    list(APPEND vexa_dll_dirs "${vexa_path}")
  endif()
endforeach()
list(REMOVE_DUPLICATES vexa_dll_dirs)
set(CMAKE_CROSSCOMPILING_EMULATOR "${vexa_project_dir}/packaging/windows/run-under-wine")
foreach(vexa_path IN LISTS vexa_dll_dirs)
  list(APPEND CMAKE_CROSSCOMPILING_EMULATOR --dll-dir "${vexa_path}")
endforeach()
list(APPEND CMAKE_CROSSCOMPILING_EMULATOR --)
