#pragma once

#include <QByteArray>
#include <QString>

/// Names the device of a "device" folder of /sys: the PCI name of the device or of the one that carries
/// it, the product of a USB device, else the name of its driver. Empty when the folder tells none.
QString sysfsDeviceName(const QString &deviceFolder, const QByteArray &pciIds);
