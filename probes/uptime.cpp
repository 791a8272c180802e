#include "probes/uptime.h"

QString uptimeText(quint64 uptimeMs)
{
    const quint64 minutes = uptimeMs / 60000;
    const int hours = static_cast<int>(minutes / 60);
    const int days = hours / 24;
    return QStringLiteral("%1 : %2 : %3 : %4")
        .arg(days)
        .arg(hours - days * 24)
        .arg(static_cast<int>(minutes % 60))
        .arg(static_cast<int>(uptimeMs / 1000 % 60));
}
