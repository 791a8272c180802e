#pragma once

#include "resources/vexaresources.h"
#include "tests/support/testbase.h"
#include "widgets/framelesswindow.h"

#include <QCursor>
#include <QMouseEvent>
#include <QPointer>
#include <QWindow>
#include <QtTest>

/// A window system that moves and resizes nothing by itself.
inline WindowSystem systemOnScreen(const QRect &screen = QRect(0, 0, 1280, 1024),
                                   const QSize &desktop = QSize(4000, 3000))
{
    WindowSystem system;
    system.pointerScreen = [screen] { return screen; };
    system.desktop = [desktop] { return desktop; };
    return system;
}

/// A frame of 600 x 400 pixels on a window system that tests choose, and a mouse for it: its events take the way
/// of real ones, from the window to the widget under the pointer.
class FrameCase {
public:
    static constexpr QRect place{100, 100, 600, 400};

    explicit FrameCase(WindowSystem system = systemOnScreen(), QWidget *content = nullptr)
    {
        initVexaResources();
        TestBase::expectWarning(QStringLiteral("EnableNonClientDpiScaling() failed"));
        QCursor::setPos(1270, 1010); // the real one stays out of the way
        window = new FramelessWindow(std::move(system));
        if (content)
            window->setContent(content);
        window->setMinimumSize(300, 200);
        window->setGeometry(place);
        window->show();
        isThere =
            QTest::qWaitForWindowExposed(window) && QTest::qWaitFor([this] { return window->geometry() == place; });
        QCoreApplication::processEvents();
    }
    ~FrameCase() { delete window; }
    Q_DISABLE_COPY_MOVE(FrameCase)

    template <class Part = QWidget>
    Part *part(const char *name) const
    {
        return window->findChild<Part *>(QLatin1String(name));
    }

    void press(const QPoint &position) { send(QEvent::MouseButtonPress, position, Qt::LeftButton, Qt::LeftButton); }
    void drag(const QPoint &position) { send(QEvent::MouseMove, position, Qt::NoButton, Qt::LeftButton); }
    void hover(const QPoint &position) { send(QEvent::MouseMove, position, Qt::NoButton, Qt::NoButton); }
    void release(const QPoint &position) { send(QEvent::MouseButtonRelease, position, Qt::LeftButton, Qt::NoButton); }

    Qt::CursorShape cursor() const { return window->cursor().shape(); }

    QPointer<FramelessWindow> window;
    bool isThere = false;

private:
    void send(QEvent::Type type, const QPoint &position, Qt::MouseButton button, Qt::MouseButtons held)
    {
        m_ms += 1000; // no double clicks
        qt_handleMouseEvent(window->windowHandle(), position - window->pos(), position, held, button, type,
                            Qt::NoModifier, m_ms);
        QCoreApplication::processEvents();
    }

    int m_ms = 1000;
};

/// Sends a mouse event straight to a widget.
inline void sendMouse(QObject *receiver, QEvent::Type type, const QPoint &position)
{
    const auto *const widget = qobject_cast<QWidget *>(receiver);
    const QPoint inside = widget ? widget->mapFromGlobal(position) : position;
    const bool isMove = type == QEvent::MouseMove;
    QMouseEvent event(type, inside, position, isMove ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(receiver, &event);
}
