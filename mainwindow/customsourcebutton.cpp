#include "mainwindow/customsourcebutton.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

CustomSourceButton::CustomSourceButton(QWidget *parent, int index, const QColor &seriesColor)
    : QToolButton(parent), color(seriesColor)
{
    setObjectName(QStringLiteral("con%1").arg(index));
    setStyleSheet(QStringLiteral("#con%1{background-color:transparent;border:none;}"
                                 "#con%1:hover{background-color:##4a504a5c;}"
                                 "#con%1:pressed{background-color:#4f5e4f5c;}")
                      .arg(index));
    setFixedWidth(35);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding); // as high as the header lets it
    setLabel(QString::number(index + 1));
}

void CustomSourceButton::setLabel(const QString &text)
{
    label = text;
    setText(text);
    setAccessibleName(tr("Graph %1").arg(text));
    setToolTip(tr("Shows or hides graph %1").arg(text));
    update();
}

void CustomSourceButton::toggle()
{
    state = !state;
    emit stateChanged(state);
    update();
}

void CustomSourceButton::mousePressEvent(QMouseEvent *event)
{
    pressed = true;
    update();
    event->accept();
}

void CustomSourceButton::mouseReleaseEvent(QMouseEvent *event)
{
    pressed = false;
    event->accept();
    toggle();
}

void CustomSourceButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        toggle();
    else
        QToolButton::keyPressEvent(event);
}

void CustomSourceButton::paintEvent(QPaintEvent *)
{
    constexpr int top = 4;
    const int diameter = qMin(width(), height()) - 2 * top;
    if (diameter <= 0)
        return;
    const QColor outline = state ? color : QColor(120, 120, 120);
    QColor fill = outline;
    if (state)
        fill.setAlpha(pressed ? 170 : 120);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outline, 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setBrush(fill);
    painter.drawEllipse(QRectF((width() - diameter) / 2.0, top, diameter, diameter));
    if (hasFocus()) {
        painter.setPen(QPen(Qt::white, 1.0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(QRectF((width() - diameter) / 2.0 - 3, top - 3, diameter + 6, diameter + 6));
    }
    painter.setPen(QColor(255, 255, 255));
    painter.setFont(QFont(QStringLiteral("Kumbh Sans"), 8));
    painter.drawText(rect(), Qt::AlignCenter, label);
}
