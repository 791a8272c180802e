#pragma once

#include <QPoint>
#include <QWidget>

#include <functional>

/// The title bar of a window without a frame: dragging it moves the window, which is the parent of its parent;
/// other widgets stay where they are. A double click is reported. GUI thread.
class WindowDragger final : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WindowDragger)

public:
    explicit WindowDragger(QWidget *parent = nullptr);

    /// Asked at each press, with its position on the screen: whether it is one for the title bar. Presses that
    /// are not go on to the parent. Without it all are.
    void setIsForMe(std::function<bool(const QPoint &position)> isForMe);
    /// Called when a drag begins; true: the window system moves the window from here on.
    void setStartMove(std::function<bool()> startMove);

signals:
    void doubleClicked();

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QWidget *draggedWindow() const;

    std::function<bool(const QPoint &)> m_isForMe;
    std::function<bool()> m_startMove;
    bool m_mousePressed = false;
    QPoint m_pressPosition;  ///< of the mouse, on the screen
    QPoint m_windowPosition; ///< at the press
};
