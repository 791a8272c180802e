#include "probes/displayinfo.h"

QString displayModeText(const DisplayMode &mode)
{
    return QStringLiteral("%1x%2 (%3bit) %4 Hz")
        .arg(mode.width)
        .arg(mode.height)
        .arg(mode.bitsPerPixel)
        .arg(mode.refreshHz);
}

void describeDisplays(const QVector<DisplayDevice> &devices, QStringList &adapters, QStringList &modes)
{
    adapters.clear();
    modes.clear();
    DisplayMode mode;
    for (const DisplayDevice &device : devices) {
        if (!device.isAttached)
            continue;
        adapters.append(device.adapter);
        mode = device.mode.value_or(mode);
        modes.append(displayModeText(mode));
    }
    adapters.removeDuplicates();
}
