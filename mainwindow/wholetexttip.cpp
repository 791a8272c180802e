#include "mainwindow/wholetexttip.h"

#include <QHelpEvent>
#include <QToolTip>
#include <QWidget>

void showWholeText(QEvent *event, const QString &text, QWidget *widget)
{
    QString tip = text.toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br>"));
    if (!widget->toolTip().isEmpty())
        tip += QLatin1String("<br><br>") + widget->toolTip().toHtmlEscaped();
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), QLatin1String("<qt>") + tip, widget);
}
