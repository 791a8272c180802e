# Facts about the machine: processor, memory, uptime, build, network adapters. Qt Core and Network only.
add_library(vexa_machine STATIC
  adaptergathering.cpp adaptergathering.h
  cpuidentity.cpp cpuidentity.h
  cpuinfo.cpp cpuinfo.h
  interfacerecords.cpp interfacerecords.h
  ipconfigparser.cpp ipconfigparser.h
  linkspeed.cpp linkspeed.h
  machinefactsreader.cpp machinefactsreader.h
  memoryinfo.cpp memoryinfo.h
  networkadapterinfo.h
  networkadapters.h
  pciids.cpp pciids.h
  routetable.cpp routetable.h
  systembuild.h
  uptime.cpp uptime.h
  wirelessrate.cpp wirelessrate.h)
if(WIN32)
  target_sources(vexa_machine PRIVATE
    cpuidentity_win.cpp linkspeed_win.cpp memoryinfo_win.cpp networkadapters_win.cpp systembuild_win.cpp uptime_win.cpp
    management_win.cpp management_win.h)
  target_link_libraries(vexa_machine PRIVATE wbemuuid ole32 oleaut32)
else()
  target_sources(vexa_machine PRIVATE
    linkspeed_linux.cpp memoryinfo_linux.cpp networkadapters_linux.cpp systembuild_linux.cpp uptime_linux.cpp
    sysfs_linux.cpp sysfs_linux.h
    sysfsdevice_linux.cpp sysfsdevice_linux.h
    wirelessrate_linux.cpp wirelessrate_linux.h)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
    target_sources(vexa_machine PRIVATE cpuidentity_linux.cpp)
  else()
    target_sources(vexa_machine PRIVATE cpuidentity_linux_proc.cpp)
  endif()
endif()
find_package(Qt5 5.15 REQUIRED COMPONENTS Gui Network)
target_link_libraries(vexa_machine PUBLIC vexa_tooloutput Qt5::Core PRIVATE Qt5::Network project_options)

# Display adapters and modes: the one probe that asks the application for its screens.
add_library(vexa_display STATIC displayinfo.cpp displayinfo.h)
if(WIN32)
  target_sources(vexa_display PRIVATE displayinfo_win.cpp)
else()
  target_sources(vexa_display PRIVATE displayadapters_linux.cpp displayadapters_linux.h displayinfo_linux.cpp)
endif()
target_link_libraries(vexa_display PUBLIC Qt5::Core PRIVATE vexa_machine Qt5::Gui project_options)
