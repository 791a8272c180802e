#include "mainwindow/customheader.h"

#include <QIcon>
#include <QMouseEvent>
#include <QPainter>

CustomHeader::CustomHeader(Qt::Orientation orientation, QWidget *parent) : QHeaderView(orientation, parent)
{
    setFixedHeight(headerHeight);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setToolTip(tr("The box checks or unchecks all sources (Ctrl+A in the table)"));
}

void CustomHeader::setAllChecked(bool checked)
{
    m_allChecked = checked;
    viewport()->update();
}

void CustomHeader::toggle()
{
    setAllChecked(!m_allChecked);
    emit changed(m_allChecked);
}

void CustomHeader::mousePressEvent(QMouseEvent *event)
{
    if (!boxRect.contains(event->pos()))
        return;
    setAllChecked(!m_allChecked);
    QHeaderView::mousePressEvent(event);
    emit changed(m_allChecked);
}

void CustomHeader::paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const
{
    painter->save();
    QHeaderView::paintSection(painter, rect, logicalIndex);
    painter->restore();
    if (logicalIndex != 0)
        return;
    // An icon finds the picture for screens with more pixels, too.
    const QIcon box(m_allChecked ? QStringLiteral(":/images/selected.png") : QStringLiteral(":/images/unselected.png"));
    box.paint(painter, boxRect.translated(rect.topLeft()));
}
