#include "mainwindow/ndiwindowform.h"

#include "mainwindow/customsourcebutton.h"

#include <QCoreApplication>
#include <QPushButton>

#include <array>
#include <initializer_list>
#include <utility>

namespace {

const QColor panelColour(0x20, 0x20, 0x20);
const QColor chartColour(0x15, 0x15, 0x15);
constexpr int roundCorner = 5; ///< px

} // namespace

void dressForm(const Ui::NDIWindow &form)
{
    QPalette palette = form.progress_viewer->palette(); // its own but for the shadow
    palette.setColor(QPalette::Shadow, palette.color(QPalette::Base));
    form.progress_viewer->setPalette(palette);
    form.progress_viewer->setRange(0.0, 100.0);
    form.progress_viewer->setValue(0.0);
    form.progress_viewer->setFormat(QStringLiteral("%p"));
    form.dataflow->hide();
    form.waiting_spinner->setColor(palette.color(QPalette::Highlight));
    form.waiting_spinner->hide();

    // What changes many times a second is filled with the colour of its panel, or else each of its paints would draw
    // the panel and all that lies below it, too. The colours are those of the style sheets.
    for (QWidget *figure : {static_cast<QWidget *>(form.L4), static_cast<QWidget *>(form.L8),
                            static_cast<QWidget *>(form.progress_viewer)}) {
        QPalette filled = figure->palette();
        filled.setColor(QPalette::Window, panelColour);
        figure->setPalette(filled);
        figure->setAutoFillBackground(true);
    }
    const std::array<std::pair<CustomPlot *, const char *>, 5> charts{{{form.fpsPlot, "FPS"},
                                                                       {form.dataPlot, "DATA RATE"},
                                                                       {form.pingPlot, "LATENCY"},
                                                                       {form.analysis_latency_plot, "LATENCY"},
                                                                       {form.analysis_data_plot, "DATA RATE"}}};
    for (const auto &[chart, title] : charts) {
        chart->setGround(chartColour, roundCorner);
        chart->setTitle(QCoreApplication::translate("NDIWindow", title));
        chart->setupLayout();
    }
}

void orderFocus(const Ui::NDIWindow &form)
{
    QWidget *last = form.btn_refresh;
    const auto add = [&last](QWidget *next) {
        QWidget::setTabOrder(last, next);
        last = next;
    };
    const auto addAll = [&add](std::initializer_list<QWidget *> widgets) {
        for (QWidget *widget : widgets)
            add(widget);
    };
    // A chart's toggles are older than its legend, but stand to the right of it.
    const auto addChart = [&add](const CustomPlot *chart) {
        for (CustomSourceButton *button : chart->legendButtons())
            add(button);
        if (chart->smoothToggle())
            add(chart->smoothToggle());
        if (chart->rawToggle())
            add(chart->rawToggle());
    };
    addAll({form.singleOption, form.multiOption, form.analysisOption, form.benchmarkOption, form.sourceList,
            form.threadCount, form.btn_collapsing, form.btn_expanding, form.sourceTable,
            form.sourceTable->cornerButton(), form.sourceList_2, form.btn_benchmark, form.timeList, form.btn_test,
            form.btn_import1, form.btn_export1, form.toolButton, form.tblStatus});
    for (const CustomPlot *chart : {form.fpsPlot, form.dataPlot, form.pingPlot})
        addChart(chart);
    addAll({form.detailTable, form.detailTable->cornerButton(), form.btn_import, form.btn_export});
    for (const CustomPlot *chart : {form.analysis_latency_plot, form.analysis_data_plot})
        addChart(chart);
    addAll({form.btn_dev, form.btn_system, form.btn_network, form.cmbNetworkAdapters, form.cmbPreviewSources});
}
