#include "probes/startoffile_linux.h"

#include <QFile>

QByteArray readStartOfFile(const QString &path, qint64 mostBytes)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? file.read(mostBytes) : QByteArray();
}
