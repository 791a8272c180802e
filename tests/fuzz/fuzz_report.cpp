#include "mainwindow/reportreader.h"

#include <QBuffer>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

/// Counts what a file makes of itself: it may never be more than its bytes can tell.
class Counter final : public ReportVisitor {
public:
    void startChart(ReportChartKind, int, int, int graphs) override
    {
        if (graphs < 0 || graphs > ReportReader::mostGraphs)
            std::abort();
        m_graphs = graphs;
    }
    void addPoint(ReportChartKind, int graph, int, double) override { count(graph); }
    void addBand(ReportChartKind, int graph, int, double, double, double) override { count(graph); }
    std::size_t points = 0;

private:
    void count(int graph)
    {
        if (graph < 0 || graph >= m_graphs)
            std::abort();
        ++points;
    }
    int m_graphs = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray file(reinterpret_cast<const char *>(data), static_cast<int>(size));
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    ReportReader reader(&buffer);
    reader.readTest();
    Counter counter;
    reader.readCharts(counter);
    if (counter.points > size)
        std::abort();
    return 0;
}
