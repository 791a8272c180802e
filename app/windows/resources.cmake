# vexa_add_windows_resources(<target> [DESCRIPTION <text>] [NO_ICON])
#
# Gives a program its version, manifest and, unless NO_ICON, icon. Does nothing where the program is not for Windows.
# DESCRIPTION is the name the task manager shows. The file name in the version is <target>.exe.
set(VEXA_WINDOWS_RESOURCE_DIR "${CMAKE_CURRENT_LIST_DIR}")

function(vexa_add_windows_resources target)
  if(NOT WIN32)
    return()
  endif()
  cmake_parse_arguments(PARSE_ARGV 1 arg "NO_ICON" "DESCRIPTION" "")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vexa_add_windows_resources: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()

  set(VEXA_RC_NAME "${target}")
  set(VEXA_RC_DESCRIPTION "Tessaly NDI VEXA")
  if(arg_DESCRIPTION)
    set(VEXA_RC_DESCRIPTION "${arg_DESCRIPTION}")
  endif()
  set(VEXA_RC_WITH_ICON 1)
  if(arg_NO_ICON)
    set(VEXA_RC_WITH_ICON 0)
  endif()
  set(VEXA_RC_ICON "${VEXA_WINDOWS_RESOURCE_DIR}/vexa.ico")
  set(VEXA_RC_MANIFEST "${VEXA_WINDOWS_RESOURCE_DIR}/vexa.manifest")

  set(rc "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
  configure_file("${VEXA_WINDOWS_RESOURCE_DIR}/vexa.rc.in" "${rc}" @ONLY)
  set_source_files_properties("${rc}" PROPERTIES OBJECT_DEPENDS "${VEXA_RC_ICON};${VEXA_RC_MANIFEST}")
  target_sources(${target} PRIVATE "${rc}")
endfunction()
