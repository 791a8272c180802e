#pragma once

#include <QFile>

/// Memory of this process' own in MB, without the pages of files; 0 when the system does not tell.
inline double ownMemoryMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0.0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("RssAnon:"))
            return line.mid(8).simplified().split(' ').constFirst().toDouble() / 1024.0;
    }
    return 0.0;
}
