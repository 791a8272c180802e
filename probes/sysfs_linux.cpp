#include "probes/sysfs_linux.h"

#include <QFile>

QByteArray readSystemFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

QByteArray readPciIds()
{
    const QByteArray names = readSystemFile(QStringLiteral("/usr/share/misc/pci.ids"));
    return names.isEmpty() ? readSystemFile(QStringLiteral("/usr/share/hwdata/pci.ids")) : names;
}
