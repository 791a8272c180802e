#pragma once

#include <QByteArray>
#include <QStringList>

/// Names of the graphics cards below a folder such as /sys/class/drm, in the order of their numbers. A
/// card that is no PCI device has the name of its driver.
QStringList displayAdapters(const QString &drmFolder, const QByteArray &pciIds);
