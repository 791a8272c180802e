#include "probes/displayinfo.h"

#include "probes/displayadapters_linux.h"
#include "probes/sysfs_linux.h"

#include <QGuiApplication>
#include <QScreen>

void getDisplayInfo(QStringList &adapters, QStringList &modes)
{
    adapters = displayAdapters(QStringLiteral("/sys/class/drm"), readPciIds());
    adapters.removeDuplicates();
    modes.clear();
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        const QSizeF size = QSizeF(screen->size()) * screen->devicePixelRatio();
        modes.append(displayModeText(
            {qRound(size.width()), qRound(size.height()), screen->depth(), qRound(screen->refreshRate())}));
    }
}
