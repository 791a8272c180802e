#pragma once

#include "widgets/windowsystem.h"

#include <QRect>
#include <QWidget>

#include <memory>

class FrameShadow;
namespace Ui {
class FramelessWindow;
}

/// The program's top-level window: a title bar and borders of its own around a content, without the system's
/// frame. It can be dragged by the title bar and resized by each border; maximised it is at most 1920 x 1080.
///
/// It lives on the heap and deletes itself, with its content, after it was closed. Closing hides it and says so
/// by requestClose(); what ends the program is up to the receiver. The last window being closed must not
/// (QGuiApplication::setQuitOnLastWindowClosed(false)): the content may still be at work then. Whoever made the
/// window holds it in a QPointer, and deletes it after the event loop if it is still there. GUI thread.
class FramelessWindow final : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FramelessWindow)

public:
    explicit FramelessWindow(QWidget *parent = nullptr);
    /// For tests, on a window system of their own.
    explicit FramelessWindow(WindowSystem system, QWidget *parent = nullptr);
    ~FramelessWindow() override;

    /// Fills the window with a widget, which then belongs to it, and makes it as large as the widget wants to be.
    void setContent(QWidget *content);
    /// What the maximise button does.
    void maximizeOrCenter();

signals:
    /// The user or the session wants the program to end; once, after the window was hidden. The receiver may
    /// take its time, also in an event loop of its own: the window and its content stay until it returns.
    void requestClose();

public slots:
    void setWindowTitle(const QString &text);
    void on_maximizeButton_clicked();
    void on_applicationStateChanged(Qt::ApplicationState state);
    void onTitle_clicked();
    void on_minimizeButton_clicked();
    void on_restoreButton_clicked();
    void on_closeButton_clicked();
    void on_windowTitlebar_doubleClicked();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void makeShadows();
    void placeShadows();
    void updateLook();
    bool fillsScreen() const;
    void applyMaximumGeometry();
    void restore();
    void followState(Qt::WindowStates before);
    void pressAt(const QPoint &position);
    void moveTo(const QPoint &position);
    void endDrag();
    void setDragged(Qt::Edges edges);
    Qt::Edges dragged() const;
    void showCursor(Qt::CursorShape shape);
    void announceClose();

    std::unique_ptr<Ui::FramelessWindow> ui;
    QRect m_startGeometry;     ///< of the window when the mouse button went down
    quint8 m_borderWidth = 15; ///< px
    bool m_mousePressed = false;
    bool m_dragTop = false;
    bool m_dragLeft = false;
    bool m_dragRight = false;
    bool m_dragBottom = false;

    const WindowSystem m_system;
    FrameShadow *m_activeShadow = nullptr;
    FrameShadow *m_inactiveShadow = nullptr;
    QRect m_normalGeometry;      ///< to go back to; null unless maximised
    bool m_isWithSystem = false; ///< the window system resizes the window
    bool m_isMaximizing = false; ///< the maximum geometry is being applied
    bool m_isCentred = false;    ///< maximised for us, not for the window system
    bool m_wasMaximized = false; ///< when it was minimised
    bool m_isCloseRequested = false;
};
