#pragma once

#include <QByteArray>
#include <QString>

/// The name of a PCI device, "vendor device", from the text of a pci.ids file. What the text does not
/// name stays as its four hexadecimal digits: "NVIDIA Corporation 2684"; "10de:2684" without the vendor.
QString pciDeviceName(const QByteArray &pciIds, quint16 vendor, quint16 device);
