#pragma once

#include "mainwindow/reportdata.h"
#include "mainwindow/reportreader.h"

#include <map>
#include <vector>

class CustomPlot;

/// What a chart shows, as a report keeps it. GUI thread.
ReportChart contentsOf(const CustomPlot &chart, ReportChartKind kind);

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
    void fill(const std::map<ReportChartKind, CustomPlot *> &charts) const;

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
