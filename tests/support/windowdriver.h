#pragma once

#include <QMetaType>
#include <QRect>
#include <QString>
#include <QVector>

/// The windows of another process, as the system sees them: for tests of the real program. On Linux needs an X display.
namespace windowdriver {

struct OtherWindow {
    quint64 handle = 0; ///< the system's
    QString title;
    QRect place; ///< on the screen
};

/// Those that are shown and have no owner among the process' windows on the screen's level, in no particular order.
QVector<OtherWindow> windowsOf(qint64 processId);

enum class Key { Return, Escape, Tab, BackTab, Down, Right, Space, CtrlReturn, CtrlA, CtrlO, CtrlS, F5 };
/// A key and its modifiers, pressed and released. On Linux the window gets the keyboard first.
void pressKey(const OtherWindow &window, Key key);

/// Asks the window to close, as the desktop does.
void close(const OtherWindow &window);

} // namespace windowdriver

Q_DECLARE_METATYPE(windowdriver::Key)
