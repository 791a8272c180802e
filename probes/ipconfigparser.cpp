#include "probes/ipconfigparser.h"

#include <QStringList>

namespace {

QString enabledText(const QString &value)
{
    return value == QLatin1String("Yes") ? QStringLiteral("Enabled") : QStringLiteral("Disabled");
}

/// Whether the key is one that is shown; then the record has its value.
bool takeValue(NetworkAdapterInfo &adapter, const QString &key, const QString &value)
{
    if (key == QLatin1String("Description"))
        adapter.description = value;
    else if (key == QLatin1String("Autoconfiguration Enabled"))
        adapter.autoConfiguration = enabledText(value);
    else if (key == QLatin1String("DHCP Enabled"))
        adapter.dhcp = enabledText(value);
    else if (key == QLatin1String("IPv4 Address"))
        adapter.ipv4Address = value;
    else if (key == QLatin1String("Subnet Mask"))
        adapter.subnetMask = value;
    else if (key == QLatin1String("Default Gateway"))
        adapter.defaultGateway = value;
    else
        return false;
    return true;
}

void removePrefix(QString &text, const QString &prefix)
{
    if (text.startsWith(prefix))
        text = text.mid(prefix.size()).trimmed();
}

/// The adapter's name in the header line of its section.
QString nameInHeader(QString header)
{
    header.remove(QLatin1Char(':'));
    removePrefix(header, QStringLiteral("Ethernet adapter"));
    removePrefix(header, QStringLiteral("Wireless LAN adapter"));
    return header;
}

} // namespace

NetworkAdapters parseIpconfig(const QString &output)
{
    NetworkAdapters adapters;
    int keysInSection = 0;
    for (QString line : output.split(QLatin1Char('\n'))) {
        while (line.endsWith(QLatin1Char('\r'))) // lines of a redirected ipconfig may end in two of them
            line.chop(1);
        if (line.isEmpty())
            continue;
        if (line.startsWith(QLatin1Char(' '))) {
            const int colon = line.indexOf(QLatin1Char(':'));
            if (colon < 0 || adapters.isEmpty())
                continue;
            const QString key = line.left(colon).remove(QLatin1Char('.')).trimmed();
            if (takeValue(adapters.last(), key, line.mid(colon + 1).trimmed()))
                ++keysInSection;
            continue;
        }
        NetworkAdapterInfo adapter;
        adapter.name = nameInHeader(line);
        if (adapter.name.isEmpty())
            continue;
        if (keysInSection == 0 && !adapters.isEmpty())
            adapters.removeLast();
        adapters.append(adapter);
        keysInSection = 0;
    }
    return adapters;
}
