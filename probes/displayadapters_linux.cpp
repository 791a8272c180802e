#include "probes/displayadapters_linux.h"

#include "probes/sysfsdevice_linux.h"

#include <QDir>
#include <QMap>

QStringList displayAdapters(const QString &drmFolder, const QByteArray &pciIds)
{
    QMap<int, QString> names; // by card number: card10 comes after card2
    const QStringList entries = QDir(drmFolder).entryList({QStringLiteral("card*")}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool isCard = false; // its outputs are beside it: card0-HDMI-A-1
        const int number = entry.midRef(4).toInt(&isCard);
        if (!isCard)
            continue;
        const QString name = sysfsDeviceName(drmFolder + QLatin1Char('/') + entry + QStringLiteral("/device"), pciIds);
        if (!name.isEmpty())
            names.insert(number, name);
    }
    return names.values();
}
