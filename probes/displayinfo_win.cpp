#include "probes/displayinfo.h"

#include <windows.h>

void getDisplayInfo(QStringList &adapters, QStringList &modes)
{
    QVector<DisplayDevice> devices;
    DISPLAY_DEVICEA found{};
    found.cb = sizeof(found);
    for (DWORD index = 0; EnumDisplayDevicesA(nullptr, index, &found, 0); ++index) {
        DisplayDevice device;
        device.adapter = QString::fromLocal8Bit(found.DeviceString);
        device.isAttached = (found.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) != 0;
        DEVMODEA mode{};
        mode.dmSize = sizeof(mode);
        if (device.isAttached && EnumDisplaySettingsA(found.DeviceName, ENUM_CURRENT_SETTINGS, &mode)) {
            device.mode = DisplayMode{static_cast<int>(mode.dmPelsWidth), static_cast<int>(mode.dmPelsHeight),
                                      static_cast<int>(mode.dmBitsPerPel), static_cast<int>(mode.dmDisplayFrequency)};
        }
        devices.append(device);
        found = {};
        found.cb = sizeof(found);
    }
    describeDisplays(devices, adapters, modes);
}
