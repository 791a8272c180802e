#include "probes/networkadapters.h"

#include "probes/interfacerecords.h"
#include "probes/sysfs_linux.h"
#include "probes/sysfsdevice_linux.h"

#include <QNetworkInterface>

namespace {

std::optional<bool> isAutoConfigurable(const QString &interface)
{
    const QByteArray value = readSystemFile(QStringLiteral("/proc/sys/net/ipv6/conf/%1/autoconf").arg(interface));
    return value.isEmpty() ? std::nullopt : std::make_optional(value != "0");
}

InterfaceFacts factsOf(const QNetworkInterface &interface, const QByteArray &pciIds)
{
    InterfaceFacts facts;
    facts.name = interface.name();
    facts.deviceName = sysfsDeviceName(QStringLiteral("/sys/class/net/%1/device").arg(facts.name), pciIds);
    facts.isLoopback = interface.flags().testFlag(QNetworkInterface::IsLoopBack);
    facts.isAutoConfigurable = isAutoConfigurable(facts.name);
    const QList<QNetworkAddressEntry> entries = interface.addressEntries();
    for (const QNetworkAddressEntry &entry : entries) {
        if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol)
            continue;
        facts.ipv4Address = entry.ip().toString();
        facts.subnetMask = entry.netmask().toString();
        facts.isPermanent = entry.isPermanent();
        break;
    }
    return facts;
}

} // namespace

NetworkAdapters readNetworkAdapters(const std::atomic<bool> &)
{
    const QByteArray pciIds = readPciIds();
    QVector<InterfaceFacts> interfaces;
    const QList<QNetworkInterface> all = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &interface : all)
        interfaces.append(factsOf(interface, pciIds));
    return interfaceRecords(interfaces, defaultRoutes(readSystemFile(QStringLiteral("/proc/net/route"))));
}

QString linkSpeedKey(const NetworkAdapterInfo &adapter)
{
    return adapter.name;
}
