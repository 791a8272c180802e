#include "probes/linkspeed.h"

QString linkSpeedText(int megabitsPerSecond)
{
    const QString number = QString::number(megabitsPerSecond);
    return number + QLatin1Char('/') + number + QStringLiteral("Mbps");
}

QString linkSpeedOfBits(const QString &bitsPerSecond)
{
    return linkSpeedText(bitsPerSecond.toInt() / 1000000);
}

std::optional<int> linkSpeedInSysfs(const QByteArray &content)
{
    bool ok = false;
    const int megabits = content.trimmed().toInt(&ok); // old drivers give 4294967295 for unknown
    return ok && megabits > 0 ? std::make_optional(megabits) : std::nullopt;
}
