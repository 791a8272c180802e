#pragma once

#include <vector>

/// Which test a report is of.
enum class ReportTest { none, single, multiple, analysis };

/// Which chart a section of a report holds.
enum class ReportChartKind { fps, ping, latency, dataRate };

/// A point of a chart: x is the test time in ms. Charts of single values use y alone; a latency chart has the
/// average in y.
struct ReportPoint {
    double x = 0.0;
    double y = 0.0;
    double maximum = 0.0;
    double minimum = 0.0;
};

/// What a report keeps of a chart.
struct ReportChart {
    ReportChartKind kind = ReportChartKind::fps;
    double lengthS = 0.0; ///< of the horizontal axis
    double top = 0.0;     ///< of the vertical axis
    std::vector<std::vector<ReportPoint>> graphs;
};
