// Export and import of the charts: the dialogs and which charts take part.
#include "mainwindow/chartreport.h"
#include "mainwindow/modeswitch.h"
#include "mainwindow/ndiwindow.h"
#include "mainwindow/ndiwindowform.h"
#include "mainwindow/reportreader.h"
#include "mainwindow/reportwriter.h"
#include "ui_ndiwindow.h"
#include "widgets/custommessagebox.h"

#include <QFile>
#include <QFileDialog>
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

} // namespace

void NDIWindow::exportData()
{
    if (m_isInDialog)
        return;
    m_isInDialog = true;
    const QPointer<NDIWindow> self(this);
    const QString path = chosenFile(this, QStringLiteral("Export Data"), QFileDialog::AcceptSave);
    if (!self)
        return;
    m_isInDialog = false;
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    QTextStream stream(&file);
    if (ui->singleOption->isChecked() || ui->multiOption->isChecked())
        writeReport(stream, ui->singleOption->isChecked() ? ReportTest::single : ReportTest::multiple,
                    {contentsOf(*ui->fpsPlot, ReportChartKind::fps), contentsOf(*ui->pingPlot, ReportChartKind::ping)});
    else if (ui->analysisOption->isChecked())
        writeReport(stream, ReportTest::analysis,
                    {contentsOf(*ui->analysis_latency_plot, ReportChartKind::latency),
                     contentsOf(*ui->analysis_data_plot, ReportChartKind::dataRate)});
}

void NDIWindow::importData()
{
    if (m_isInDialog)
        return;
    m_isInDialog = true;
    const QPointer<NDIWindow> self(this);
    const QString path = chosenReport();
    if (!self)
        return;
    m_isInDialog = false;
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    markRevision(true);
    readReport(file);
}

/// Asks whether to look at a report, and at which; empty when at none.
QString NDIWindow::chosenReport()
{
    const QPointer<NDIWindow> self(this);
    CustomMessageBox box(this);
    box.setTitle(QStringLiteral("REVISION MODE"));
    box.setMessage(QStringLiteral("YOU HAVE ACTIVATED THE REVISION MODE"), QString(), QString(),
                   QStringLiteral("Select a Vexa Report to visualize the graphs in Vexa."));
    box.setButtonText(QStringLiteral("LOAD FILE"));
    if (box.exec() != QDialog::Accepted || !self)
        return {};
    return chosenFile(this, QStringLiteral("Import Data"), QFileDialog::AcceptOpen);
}

void NDIWindow::readReport(QIODevice &file)
{
    ReportReader reader(&file);
    switch (reader.readTest()) {
    case ReportTest::single:
        m_modes->choose(ui->singleOption);
        break;
    case ReportTest::multiple:
        m_modes->choose(ui->multiOption);
        break;
    case ReportTest::analysis:
        if (!ui->analysisOption->isEnabled() || !m_parts.analysisToolThere())
            return;
        m_modes->choose(ui->analysisOption);
        break;
    case ReportTest::none:
        break;
    }
    ChartFiller filler;
    reader.readCharts(filler);
    filler.fill({{ReportChartKind::fps, ui->fpsPlot},
                 {ReportChartKind::ping, ui->pingPlot},
                 {ReportChartKind::latency, ui->analysis_latency_plot},
                 {ReportChartKind::dataRate, ui->analysis_data_plot}});
    orderFocus(*ui); // the legends have new buttons
}
