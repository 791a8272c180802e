#pragma once

#include <QRect>
#include <QSize>
#include <Qt>

#include <functional>

class QString;
class QWindow;

/// What a window without a frame needs of the window system; tests put their own in. GUI thread.
struct WindowSystem {
    /// Hands the move or the resize of a pressed window over to the window system, which then follows the mouse
    /// by itself. False when it cannot. Empty where the program moves and resizes its windows itself.
    std::function<bool(QWindow &window)> startMove;
    std::function<bool(QWindow &window, Qt::Edges edges)> startResize;
    bool placesOwnWindows = true;         ///< the program may choose where its windows are and how large
    std::function<QRect()> pointerScreen; ///< the screen under the mouse pointer, the primary one when there is none
    std::function<QSize()> desktop;       ///< the room that windows have

    /// platformName: as QGuiApplication tells it. On Wayland a program knows no position of its windows, and the
    /// compositor moves and resizes them.
    static WindowSystem of(const QString &platformName);
};
