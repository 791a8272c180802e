#include "probes/linkspeed.h"

#include "probes/sysfs_linux.h"
#include "probes/wirelessrate_linux.h"

#include <QFileInfo>

#include <net/if.h>

QString getLinkSpeed(const QString &adapter, const std::atomic<bool> &)
{
    const QString folder = QStringLiteral("/sys/class/net/") + adapter;
    std::optional<int> megabits = linkSpeedInSysfs(readSystemFile(folder + QStringLiteral("/speed")));
    if (!megabits && QFileInfo::exists(folder + QStringLiteral("/phy80211")))
        megabits = wirelessRateMbps(if_nametoindex(adapter.toLocal8Bit().constData()));
    return megabits ? linkSpeedText(*megabits) : QString();
}
