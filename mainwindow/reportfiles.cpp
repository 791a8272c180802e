#include "mainwindow/reportfiles.h"

#include "mainwindow/chartreport.h"
#include "mainwindow/modeswitch.h"
#include "mainwindow/ndiwindowform.h"
#include "mainwindow/reportreader.h"
#include "mainwindow/reportwriter.h"
#include "ui_ndiwindow.h"
#include "widgets/custommessagebox.h"

#include <QFile>
#include <QFileDialog>
#include <QPointer>
#include <QStyle>
#include <QTextStream>

namespace {

const QString fileFilter = QStringLiteral("Tessaly NDI VEXA Data Files (*.vdf)");

/// The file that the user chooses, empty when none.
QString chosenFile(QWidget *parent, const QString &title, QFileDialog::AcceptMode mode)
{
    QFileDialog dialog(parent, title, QString(), fileFilter);
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(mode);
    if (mode == QFileDialog::AcceptSave)
        dialog.setDefaultSuffix(QStringLiteral("vdf"));
    else
        dialog.setFileMode(QFileDialog::ExistingFile);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles().value(0);
}

/// Asks whether to look at a report, and at which; empty when at none.
QString chosenReport(QWidget *window)
{
    const QPointer<QWidget> alive(window);
    CustomMessageBox box(window);
    box.setTitle(QStringLiteral("REVISION MODE"));
    box.setMessage(QStringLiteral("YOU HAVE ACTIVATED THE REVISION MODE"), QString(), QString(),
                   QStringLiteral("Select a Vexa Report to visualize the graphs in Vexa."));
    box.setButtonText(QStringLiteral("LOAD FILE"));
    if (box.exec() != QDialog::Accepted || !alive)
        return {};
    return chosenFile(window, QStringLiteral("Import Data"), QFileDialog::AcceptOpen);
}

void readReport(QIODevice &file, const Ui::NDIWindow &form, ModeSwitch &modes,
                const std::function<bool()> &analysisToolThere)
{
    ReportReader reader(&file);
    switch (reader.readTest()) {
    case ReportTest::single:
        modes.choose(form.singleOption);
        break;
    case ReportTest::multiple:
        modes.choose(form.multiOption);
        break;
    case ReportTest::analysis:
        if (!form.analysisOption->isEnabled() || !analysisToolThere())
            return;
        modes.choose(form.analysisOption);
        break;
    case ReportTest::none:
        break;
    }
    ChartFiller filler;
    reader.readCharts(filler);
    filler.fill({{ReportChartKind::fps, form.fpsPlot},
                 {ReportChartKind::ping, form.pingPlot},
                 {ReportChartKind::latency, form.analysis_latency_plot},
                 {ReportChartKind::dataRate, form.analysis_data_plot}});
    orderFocus(form); // the legends have new buttons
}

} // namespace

void exportCharts(QWidget *window, const Ui::NDIWindow &form)
{
    const QPointer<QWidget> alive(window);
    const QString path = chosenFile(window, QStringLiteral("Export Data"), QFileDialog::AcceptSave);
    if (!alive || path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    QTextStream stream(&file);
    if (form.singleOption->isChecked() || form.multiOption->isChecked())
        writeReport(
            stream, form.singleOption->isChecked() ? ReportTest::single : ReportTest::multiple,
            {contentsOf(*form.fpsPlot, ReportChartKind::fps), contentsOf(*form.pingPlot, ReportChartKind::ping)});
    else if (form.analysisOption->isChecked())
        writeReport(stream, ReportTest::analysis,
                    {contentsOf(*form.analysis_latency_plot, ReportChartKind::latency),
                     contentsOf(*form.analysis_data_plot, ReportChartKind::dataRate)});
}

void importCharts(QWidget *window, const Ui::NDIWindow &form, ModeSwitch &modes,
                  const std::function<bool()> &analysisToolThere, const std::function<void()> &beforeFilling)
{
    const QPointer<QWidget> alive(window);
    const QString path = chosenReport(window);
    if (!alive || path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    beforeFilling();
    markRevision(form, true);
    readReport(file, form, modes, analysisToolThere);
}

void markRevision(const Ui::NDIWindow &form, bool on)
{
    for (QToolButton *button : {form.btn_import, form.btn_import1}) {
        button->setProperty("selected", on);
        button->style()->unpolish(button);
        button->style()->polish(button);
    }
}
