#include "probes/sysfsdevice_linux.h"

#include "probes/pciids.h"
#include "probes/sysfs_linux.h"

#include <QFileInfo>

#include <optional>

namespace {

/// "0x10de"
std::optional<quint16> idIn(const QString &path)
{
    bool ok = false;
    const quint16 id = readSystemFile(path).toUShort(&ok, 16);
    return ok ? std::make_optional(id) : std::nullopt;
}

QString pciName(const QString &folder, const QByteArray &pciIds)
{
    if (QFileInfo(folder + QStringLiteral("/subsystem")).symLinkTarget().section(QLatin1Char('/'), -1)
        != QLatin1String("pci"))
        return {};
    const std::optional<quint16> vendor = idIn(folder + QStringLiteral("/vendor"));
    const std::optional<quint16> device = idIn(folder + QStringLiteral("/device"));
    return vendor && device ? pciDeviceName(pciIds, *vendor, *device) : QString();
}

QString usbName(const QString &folder)
{
    const QString product = QString::fromUtf8(readSystemFile(folder + QStringLiteral("/product")));
    const QString maker = QString::fromUtf8(readSystemFile(folder + QStringLiteral("/manufacturer")));
    return product.isEmpty() || maker.isEmpty() || product.startsWith(maker) ? product
                                                                             : maker + QLatin1Char(' ') + product;
}

} // namespace

QString sysfsDeviceName(const QString &deviceFolder, const QByteArray &pciIds)
{
    const QString folder = QFileInfo(deviceFolder).canonicalFilePath();
    if (folder.isEmpty())
        return {};
    // An interface of a USB device, and a virtual device on a PCI card, lie one level below what has a name.
    for (const QString &place : {folder, QFileInfo(folder).path()}) {
        QString name = pciName(place, pciIds);
        if (name.isEmpty())
            name = usbName(place);
        if (!name.isEmpty())
            return name;
    }
    return QFileInfo(folder + QStringLiteral("/driver")).symLinkTarget().section(QLatin1Char('/'), -1);
}
