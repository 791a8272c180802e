#include "mainwindow/chartreport.h"

#include "charts/customplot.h"

#include <algorithm>

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

void ChartFiller::fill(const std::map<ReportChartKind, CustomPlot *> &charts) const
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
