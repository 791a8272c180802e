// Export and import of the charts: the dialogs and which charts take part.
#include "charts/customplot.h"
#include "mainwindow/ndiwindow.h"
#include "mainwindow/ndiwindowform.h"
#include "mainwindow/reportreader.h"
#include "mainwindow/reportwriter.h"
#include "ui_ndiwindow.h"
#include "widgets/custommessagebox.h"

#include <QFile>
#include <QFileDialog>
#include <QTextStream>

#include <algorithm>
#include <map>
#include <vector>

namespace {

const QString fileFilter = QStringLiteral("Tessaly NDI VEXA Data Files (*.vdf)");

ReportChart contentsOf(const CustomPlot &chart, ReportChartKind kind)
{
    ReportChart contents;
    contents.kind = kind;
    contents.lengthS = chart.axisLengthS();
    contents.top = chart.axisTop();
    contents.graphs.resize(static_cast<std::size_t>(chart.seriesCount()));
    for (int i = 0; i < chart.seriesCount(); ++i) {
        std::vector<ReportPoint> &graph = contents.graphs[static_cast<std::size_t>(i)];
        if (kind == ReportChartKind::latency) {
            const PointSeries &average = chart.averagePoints(i);
            const PointSeries &maximum = chart.maximumPoints(i);
            const PointSeries &minimum = chart.minimumPoints(i);
            graph.resize(std::min({average.size(), maximum.size(), minimum.size()}));
            for (std::size_t k = 0; k < graph.size(); ++k)
                graph[k] = {average[k].x(), average[k].y(), maximum[k].y(), minimum[k].y()};
        } else {
            const PointSeries &points = chart.plainPoints(i);
            graph.resize(points.size());
            for (std::size_t k = 0; k < graph.size(); ++k)
                graph[k] = {points[k].x(), points[k].y(), 0.0, 0.0};
        }
    }
    return contents;
}

/// Keeps what a report holds of each chart. A later section replaces an earlier one of its chart, so only the last
/// is ever shown: a file of nothing but sections must not have the legends built anew for each.
class ChartFiller final : public ReportVisitor {
public:
    void startChart(ReportChartKind kind, int lengthS, int top, int graphs) override
    {
        m_sections[kind] = {lengthS, top, graphs, {}};
    }
    void addPoint(ReportChartKind kind, int graph, int timeMs, double value) override
    {
        m_sections[kind].points.push_back({graph, timeMs, value, 0.0, 0.0});
    }
    void addBand(ReportChartKind kind, int graph, int timeMs, double minimum, double maximum, double average) override
    {
        m_sections[kind].points.push_back({graph, timeMs, average, minimum, maximum});
    }
    /// Charts without a section keep what they hold.
    void fill(const std::map<ReportChartKind, CustomPlot *> &charts) const
    {
        for (const auto &[kind, section] : m_sections) {
            CustomPlot *chart = charts.at(kind);
            chart->setMetaInfo(section.lengthS, section.top, section.graphs);
            for (const Point &point : section.points) {
                if (kind == ReportChartKind::latency)
                    chart->appendNewMultiData(point.graph, point.timeMs, point.minimum, point.maximum, point.value);
                else
                    chart->appendNewData(point.graph, point.timeMs, point.value);
            }
        }
    }

private:
    struct Point {
        int graph;
        int timeMs;
        double value; ///< the average of a band
        double minimum;
        double maximum;
    };
    struct Section {
        int lengthS = 0;
        int top = 0;
        int graphs = 0;
        std::vector<Point> points;
    };
    std::map<ReportChartKind, Section> m_sections;
};

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
        chooseMode(ui->singleOption);
        break;
    case ReportTest::multiple:
        chooseMode(ui->multiOption);
        break;
    case ReportTest::analysis:
        if (!ui->analysisOption->isEnabled() || !m_parts.analysisToolThere())
            return;
        chooseMode(ui->analysisOption);
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
