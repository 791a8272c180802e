#pragma once

#include "mainwindow/reportdata.h"

#include <QString>
#include <QTextStream>

class QIODevice;

/// Takes what a report holds, in the order of the file.
class ReportVisitor {
public:
    virtual ~ReportVisitor() = default;
    /// A new section: the chart begins anew. graphs: 0 to 1000; the axes may be 0 or below.
    virtual void startChart(ReportChartKind kind, int lengthS, int top, int graphs) = 0;
    virtual void addPoint(ReportChartKind kind, int graph, int timeMs, double value) = 0;
    /// Of a latency chart.
    virtual void addBand(ReportChartKind kind, int graph, int timeMs, double minimum, double maximum,
                         double average) = 0;
};

/// Reads a report in two steps, so that its kind can be looked at before its charts are taken. Anybody may have
/// written the file: numbers that are none read as 0, counts are never trusted with memory, and nothing is read
/// beyond what the file holds.
class ReportReader final {
public:
    /// A count of graphs above this ends the reading.
    static constexpr int mostGraphs = 1000;

    /// device: open for reading, has to live as long.
    explicit ReportReader(QIODevice *device);

    /// The kind of test, from the first word; none for any other word, which is then taken away. A section
    /// keyword in its place takes its whole section away.
    ReportTest readTest();
    /// Reads sections until something else comes, or the end.
    void readCharts(ReportVisitor &visitor);

private:
    QString readWord();
    void skipRestOfWord();
    int readInt();
    double readReal();
    bool atEnd();
    /// False when the rest of the file cannot be read.
    bool readSection(ReportChartKind kind, ReportVisitor *visitor);
    bool readPoint(ReportChartKind kind, int graph, ReportVisitor *visitor);

    QTextStream m_stream;
    int m_failed = 0;      ///< numbers in a row that were none
    bool m_isOver = false; ///< the rest of the file is not read
};
