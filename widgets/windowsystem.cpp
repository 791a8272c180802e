#include "widgets/windowsystem.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QString>
#include <QWindow>

namespace {

QRect pointerScreenGeometry()
{
    const QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry() : QRect();
}

QSize desktopSize()
{
    QScreen *const primary = QGuiApplication::primaryScreen();
    if (!primary)
        return {};
    return primary->virtualSiblings().contains(primary) ? primary->virtualSize() : primary->availableSize();
}

} // namespace

WindowSystem WindowSystem::of(const QString &platformName)
{
    WindowSystem system;
    system.pointerScreen = pointerScreenGeometry;
    system.desktop = desktopSize;
    if (platformName.startsWith(QLatin1String("wayland"))) {
        system.startMove = [](QWindow &window) { return window.startSystemMove(); };
        system.startResize = [](QWindow &window, Qt::Edges edges) { return window.startSystemResize(edges); };
        system.placesOwnWindows = false;
    }
    return system;
}
