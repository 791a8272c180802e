#include "probes/linkspeed.h"

#include "probes/management_win.h"

QString getLinkSpeed(const QString &adapter, const std::atomic<bool> &abort)
{
    const QString query = QStringLiteral("SELECT * FROM Win32_NetworkAdapter where NetEnabled ='TRUE' and Name = '")
                          + adapter + QLatin1Char('\'');
    const std::optional<QString> speed = managementText(query, L"Speed", abort);
    return speed ? linkSpeedOfBits(*speed) : QString();
}
