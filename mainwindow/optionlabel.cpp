#include "mainwindow/optionlabel.h"

#include <QAbstractButton>
#include <QEvent>
#include <QMouseEvent>
#include <QStyle>

OptionLabel::OptionLabel(QWidget *parent) : QLabel(parent) {}

QAbstractButton *OptionLabel::option() const
{
    return qobject_cast<QAbstractButton *>(buddy());
}

bool OptionLabel::event(QEvent *event)
{
    // The buddy is set after the label was made.
    if (event->type() == QEvent::Polish && !m_follows && option()) {
        m_follows = true;
        connect(option(), &QAbstractButton::toggled, this, &OptionLabel::followOption);
        option()->installEventFilter(this);
        followOption();
    }
    return QLabel::event(event);
}

bool OptionLabel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::EnabledChange && watched == option())
        followOption();
    return QLabel::eventFilter(watched, event);
}

void OptionLabel::followOption()
{
    setEnabled(option()->isEnabled());
    m_checked = option()->isChecked();
    style()->unpolish(this);
    style()->polish(this);
}

void OptionLabel::mousePressEvent(QMouseEvent *event)
{
    event->accept(); // for the release
}

void OptionLabel::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()) && option())
        option()->click();
}
