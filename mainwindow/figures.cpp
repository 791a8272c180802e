#include "mainwindow/figures.h"

#include "mainwindow/resulttables.h"
#include "mainwindow/videoformat.h"
#include "ui_ndiwindow.h"

namespace {

constexpr int statusRateColumn = 2;
constexpr int statusIntervalColumn = 3;

} // namespace

QString shown(double number)
{
    return QString::number(number, 'g', 6);
}

void showFigures(const Ui::NDIWindow &form, int statusRow, const Figures &figures)
{
    const QString rate = shown(figures.fps) + QStringLiteral("fps");
    form.L4->setText(rate);
    form.label_videoFormat->setText(formatName(figures.fourCC));
    form.label_videoFPS->setText(shown(figures.nominalFps));
    form.label_videoHeight->setText(QString::number(figures.height));
    form.label_videoWidth->setText(QString::number(figures.width));
    form.L8->setText(QStringLiteral("%1 ms").arg(figures.intervalMs));
    setCellText(form.tblStatus, statusRow, statusRateColumn, rate);
    setCellText(form.tblStatus, statusRow, statusIntervalColumn,
                QString::number(figures.intervalMs) + QStringLiteral("ms"));
}

void showNoVideo(const Ui::NDIWindow &form, int statusRow)
{
    setCellText(form.tblStatus, statusRow, statusRateColumn, QStringLiteral("0fps"));
    setCellText(form.tblStatus, statusRow, statusIntervalColumn, QStringLiteral("0ms"));
}
