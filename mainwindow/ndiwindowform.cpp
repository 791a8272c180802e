#include "mainwindow/ndiwindowform.h"

#include "mainwindow/customsourcebutton.h"

#include <QPushButton>

#include <initializer_list>

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
