#include "widgets/windowdragger.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

#include <utility>

WindowDragger::WindowDragger(QWidget *parent) : QWidget(parent) {}

void WindowDragger::setIsForMe(std::function<bool(const QPoint &)> isForMe)
{
    m_isForMe = std::move(isForMe);
}

void WindowDragger::setStartMove(std::function<bool()> startMove)
{
    m_startMove = std::move(startMove);
}

QWidget *WindowDragger::draggedWindow() const
{
    return parentWidget() ? parentWidget()->parentWidget() : nullptr;
}

bool WindowDragger::event(QEvent *event)
{
    // The release that follows goes elsewhere.
    if (event->type() == QEvent::WindowBlocked || event->type() == QEvent::Hide)
        m_mousePressed = false;
    return QWidget::event(event);
}

void WindowDragger::mousePressEvent(QMouseEvent *event)
{
    const QWidget *const window = draggedWindow();
    if (!window || (m_isForMe && !m_isForMe(event->globalPos()))) {
        event->ignore();
        return;
    }
    m_mousePressed = true;
    m_pressPosition = event->globalPos();
    m_windowPosition = window->pos();
}

void WindowDragger::mouseMoveEvent(QMouseEvent *event)
{
    QWidget *const window = draggedWindow();
    if (!m_mousePressed || !window)
        return;
    // Not at the press already: that may be the first of a double click.
    if (m_startMove && m_startMove()) {
        m_mousePressed = false;
        return;
    }
    const Qt::WindowStates state = window->windowState();
    window->move(m_windowPosition + (event->globalPos() - m_pressPosition));
    if (window->windowState() != state)
        window->overrideWindowState(state); // for Qt, a move takes a window out of the maximised state
}

void WindowDragger::mouseReleaseEvent(QMouseEvent *event)
{
    Q_UNUSED(event)
    m_mousePressed = false;
}

void WindowDragger::mouseDoubleClickEvent(QMouseEvent *event)
{
    Q_UNUSED(event)
    emit doubleClicked();
}

void WindowDragger::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}
