#include "mainwindow/elidedcombobox.h"

#include "mainwindow/wholetexttip.h"

#include <QEvent>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStylePainter>

ElidedComboBox::ElidedComboBox(QWidget *parent) : QComboBox(parent) {}

QString ElidedComboBox::shownText() const
{
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    return fontMetrics().elidedText(currentText(), Qt::ElideRight, field.width());
}

bool ElidedComboBox::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip || shownText() == currentText())
        return QComboBox::event(event);
    showWholeText(event, currentText(), this);
    return true;
}

void ElidedComboBox::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    option.currentText = shownText();
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}
