#include "mainwindow/figures.h"

#include "mainwindow/resulttables.h"
#include "mainwindow/videoformat.h"
#include "ui_ndiwindow.h"

QString sixDigits(double number)
{
    return QString::number(number, 'g', 6);
}

void showFigures(const Ui::NDIWindow &form, int statusRow, const Figures &figures)
{
    const QString rate = sixDigits(figures.fps) + QStringLiteral("fps");
    form.L4->setText(rate);
    form.label_videoFormat->setText(formatName(figures.fourCC));
    form.label_videoFPS->setText(sixDigits(figures.nominalFps));
    form.label_videoHeight->setText(QString::number(figures.height));
    form.label_videoWidth->setText(QString::number(figures.width));
    form.L8->setText(QStringLiteral("%1 ms").arg(figures.intervalMs));
    fillStatusFigures(form.tblStatus, statusRow, rate, QString::number(figures.intervalMs) + QStringLiteral("ms"));
}

void showNoVideo(const Ui::NDIWindow &form, int statusRow)
{
    fillStatusFigures(form.tblStatus, statusRow, QStringLiteral("0fps"), QStringLiteral("0ms"));
}
