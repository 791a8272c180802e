#include "mainwindow/reportwriter.h"

#include <QLocale>
#include <QTextStream>

#include <cmath>
#include <limits>

namespace {

const char *keyword(ReportTest test)
{
    switch (test) {
    case ReportTest::single:
        return "SINGLETEST";
    case ReportTest::multiple:
        return "MULTITEST";
    case ReportTest::analysis:
        return "ANALYSISTEST";
    case ReportTest::none:
        break;
    }
    return "";
}

const char *keyword(ReportChartKind kind)
{
    switch (kind) {
    case ReportChartKind::fps:
        return "FPSCHART";
    case ReportChartKind::ping:
        return "PINGCHART";
    case ReportChartKind::latency:
        return "LATENCYCHART";
    case ReportChartKind::dataRate:
        break;
    }
    return "DATARATECHART";
}

/// Cut towards zero; what an axis cannot be is 0, what an int cannot hold is the largest one.
int wholeLength(double length)
{
    constexpr int most = std::numeric_limits<int>::max();
    if (!(length > 0.0))
        return 0;
    return length >= most ? most : static_cast<int>(length);
}

void writeChart(QTextStream &stream, const ReportChart &chart)
{
    stream << keyword(chart.kind) << '\n' << wholeLength(chart.lengthS) << ' ' << wholeLength(chart.top) << '\n';
    stream << static_cast<int>(chart.graphs.size()) << '\n';
    for (const std::vector<ReportPoint> &graph : chart.graphs) {
        stream << static_cast<int>(graph.size()) << '\n';
        for (const ReportPoint &point : graph) {
            stream << point.x << ' ' << point.y;
            if (chart.kind == ReportChartKind::latency)
                stream << ' ' << point.maximum << ' ' << point.minimum;
            stream << '\n';
        }
    }
}

} // namespace

void writeReport(QTextStream &stream, ReportTest test, const QVector<ReportChart> &charts)
{
    if (test == ReportTest::none)
        return;
    stream.setCodec("UTF-8");
    stream.setGenerateByteOrderMark(false);
    stream.setLocale(QLocale::c());
    stream.reset();
    stream.setRealNumberNotation(QTextStream::SmartNotation);
    stream.setRealNumberPrecision(6);
    stream << keyword(test) << '\n';
    for (const ReportChart &chart : charts)
        writeChart(stream, chart);
    stream.flush();
}
