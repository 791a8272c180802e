#include "probes/linkspeed.h"

#include "probes/management_win.h"

QString getLinkSpeed(const QString &adapter, const std::atomic<bool> &abort)
{
    QString name = adapter;
    name.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
    const QString query =
        QStringLiteral("SELECT * FROM Win32_NetworkAdapter where NetEnabled ='TRUE' and Name = '%1'").arg(name);
    const std::optional<QString> speed = managementText(query, L"Speed", abort);
    return speed ? linkSpeedOfBits(*speed) : QString();
}
