// Measures what the charts cost, beside the chart libraries that were there at build time, each 900 x 300
// pixels in a shown window. Prints each figure, then a table with the ratios to ours and one with the goals.
#include "bench/chartpeers.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QStringList>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

/// Processor time of this thread, which does all the painting: on a quiet machine the time that passes,
/// on a busy one not that of others.
std::chrono::nanoseconds threadTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

constexpr QSize chartSize(900, 300);
constexpr const char *newSamplesTitle = "paint after new samples";
constexpr const char *manyPointsTitle = "the same, ten times the points";
constexpr const char *fullRedrawTitle = "full redraw";
constexpr const char *hoverTitle = "hover move";
constexpr int pointsOfATest = 18000; // five minutes at 60 frames a second
constexpr int leftToAppend = 600;

/// Name and clock speed of the first processor, for the absolute times.
std::string processor()
{
    std::ifstream file("/proc/cpuinfo");
    std::string name = "unknown processor";
    std::string mhz = "unknown";
    for (std::string line; std::getline(file, line) && !line.empty();) {
        const std::string value = line.substr(std::min(line.size(), line.find(':') + 2));
        if (line.rfind("model name", 0) == 0)
            name = value;
        else if (line.rfind("cpu MHz", 0) == 0)
            mhz = value;
    }
    return name + ", " + mhz + " MHz";
}

class PaintedChart {
public:
    PaintedChart(const ChartPeerFactory &factory, int points) : m_data(points), m_peer(factory.make())
    {
        m_window.resize(chartSize);
        m_peer->widget()->setParent(&m_window);
        m_peer->widget()->resize(chartSize);
        m_next = points - leftToAppend;
        for (int index = 0; index < m_next; ++index)
            appendAt(index);
        m_window.show();
        QCoreApplication::processEvents();
        appendNext();
        m_peer->paint();
    }
    ~PaintedChart() { m_peer->widget()->setParent(nullptr); }
    Q_DISABLE_COPY_MOVE(PaintedChart)

    /// One sample for each series; nothing when the five minutes are over, see isFull().
    void appendNext()
    {
        if (m_next < m_data.pointsPerSeries)
            appendAt(m_next++);
    }
    ChartPeer &peer() { return *m_peer; }
    bool isFull() const { return m_next >= m_data.pointsPerSeries; }

private:
    void appendAt(int index)
    {
        for (int series = 0; series < ChartData::series; ++series)
            m_peer->append(series, m_data.timeMs(index), m_data.value(series, index));
    }

    ChartData m_data;
    QWidget m_window;
    std::unique_ptr<ChartPeer> m_peer;
    int m_next = 0;
};

double medianMs(std::vector<double> seconds)
{
    if (seconds.empty())
        return 0.0;
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    return *middle * 1000.0;
}

/// Times each call of action by itself; the report's time is their median.
template <typename Prepare, typename Action>
void measure(benchmark::State &state, Prepare prepare, Action action)
{
    std::vector<double> seconds;
    for (auto _ : state) {
        prepare();
        const auto start = threadTime();
        action();
        seconds.push_back(std::chrono::duration<double>(threadTime() - start).count());
        state.SetIterationTime(seconds.back());
    }
    state.counters["median_ms"] = medianMs(seconds);
}

void newSamples(benchmark::State &state, const ChartPeerFactory &factory, int points)
{
    PaintedChart chart(factory, points);
    measure(
        state, [&] { chart.appendNext(); }, [&] { chart.peer().paint(); });
    if (chart.isFull())
        state.SkipWithError("ran out of samples");
}

void fullRedraw(benchmark::State &state, const ChartPeerFactory &factory)
{
    PaintedChart chart(factory, pointsOfATest);
    bool wide = true;
    // A new size alone makes every chart draw itself anew, once.
    measure(
        state, [&] { wide = !wide; },
        [&] {
            chart.peer().widget()->resize(chartSize.width() - (wide ? 0 : 1), chartSize.height());
            QCoreApplication::processEvents();
        });
}

void hoverMove(benchmark::State &state, const ChartPeerFactory &factory)
{
    PaintedChart chart(factory, pointsOfATest);
    int x = 100;
    measure(
        state, [] {},
        [&] {
            x = x > 800 ? 100 : x + 7;
            chart.peer().hover(x);
            chart.peer().paint();
        });
}

void appendOnly(benchmark::State &state, const ChartPeerFactory &factory)
{
    const ChartData data(pointsOfATest);
    qint64 appended = 0;
    double bytesPerPoint = 0.0;
    for (auto _ : state) {
        std::unique_ptr<ChartPeer> peer = factory.make();
        peer->widget()->show(); // only a shown chart asks for repaints
        const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        const auto start = threadTime();
        for (int index = 0; index < data.pointsPerSeries; ++index) {
            for (int series = 0; series < ChartData::series; ++series)
                peer->append(series, index * 16, 60.0);
        }
        state.SetIterationTime(std::chrono::duration<double>(threadTime() - start).count());
        const int points = data.pointsPerSeries * ChartData::series;
        appended += points;
        bytesPerPoint = static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd - before) / points;
    }
    state.counters["ns_per_append"] = benchmark::Counter(static_cast<double>(appended) * 1e-9,
                                                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["bytes_per_point"] = bytesPerPoint;
}

/// Prints as the console does and keeps the medians for the table at the end.
class TableReporter final : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            const auto median = run.counters.find("median_ms");
            const auto perAppend = run.counters.find("ns_per_append");
            const auto bytes = run.counters.find("bytes_per_point");
            const std::string name = run.run_name.function_name;
            const std::size_t cut = name.find('/');
            const std::string what = name.substr(0, cut);
            const std::string who = name.substr(cut + 1);
            if (median != run.counters.end())
                keep(who, what + " [ms]", median->second);
            if (perAppend != run.counters.end())
                keep(who, what + " [ns]", perAppend->second);
            if (bytes != run.counters.end())
                keep(who, "memory a point [bytes]", bytes->second);
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override
    {
        std::printf("\n| chart |");
        for (const std::string &column : m_columns)
            std::printf(" %s |", column.c_str());
        std::printf("\n|---|");
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            std::printf("---:|");
        const std::string &ours = m_rows.empty() ? std::string() : m_rows.front();
        for (const std::string &row : m_rows) {
            std::printf("\n| %s |", row.c_str());
            for (const std::string &column : m_columns) {
                const auto cell = m_cells.find({row, column});
                const auto base = m_cells.find({ours, column});
                if (cell == m_cells.end())
                    std::printf(" |");
                else if (row == ours || base == m_cells.end())
                    std::printf(" %.3g |", cell->second);
                else
                    std::printf(" %.3g (x %.2g) |", cell->second, cell->second / base->second);
            }
        }
        std::printf("\n");
        printGoals();
        ConsoleReporter::Finalize();
    }

private:
    /// Ratios within this run: of ours to the peer of the goals. A hover move shall cost half of what a paint after
    /// new samples cost when whole images were composed: 0.47 of the peer's.
    void printGoals() const
    {
        struct Goal {
            const char *ours;
            const char *peers;
            double most;
        };
        const Goal goals[] = {{newSamplesTitle, newSamplesTitle, 0.1},
                              {manyPointsTitle, manyPointsTitle, 0.1},
                              {fullRedrawTitle, fullRedrawTitle, 5.0},
                              {hoverTitle, newSamplesTitle, 0.23}};
        std::printf("\n%s\n\n| %s : %s | goal, at most | measured |\n|---|---:|---:|\n", processor().c_str(),
                    chartOfTheGoals, chartPeerOfTheGoals);
        for (const Goal &goal : goals) {
            const auto ours = m_cells.find({chartOfTheGoals, std::string(goal.ours) + " [ms]"});
            const auto peers = m_cells.find({chartPeerOfTheGoals, std::string(goal.peers) + " [ms]"});
            if (ours != m_cells.end() && peers != m_cells.end())
                std::printf("| %s : %s | %g | %.2g |\n", goal.ours, goal.peers, goal.most,
                            ours->second / peers->second);
        }
    }

    void keep(const std::string &row, const std::string &column, double value)
    {
        if (std::find(m_rows.begin(), m_rows.end(), row) == m_rows.end())
            m_rows.push_back(row);
        if (std::find(m_columns.begin(), m_columns.end(), column) == m_columns.end())
            m_columns.push_back(column);
        m_cells[{row, column}] = value;
    }

    std::vector<std::string> m_rows;
    std::vector<std::string> m_columns;
    std::map<std::pair<std::string, std::string>, double> m_cells;
};

benchmark::internal::Benchmark *add(const char *what, const ChartPeerFactory &factory,
                                    const std::function<void(benchmark::State &)> &function, int iterations)
{
    const std::string name = std::string(what) + "/" + factory.name.toStdString();
    return benchmark::RegisterBenchmark(name.c_str(), function)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(iterations);
}

} // namespace

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The legend's style sheet does not parse; that says so once for each button.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);

    // Charts that are compared run one right after the other, so the load of the machine is about the same.
    const std::vector<ChartPeerFactory> peers = chartPeers();
    const auto forAll = [&peers](const char *what, int ofOurs, int ofOthers, const auto &function) {
        for (const ChartPeerFactory &factory : peers) {
            const bool ours = factory.name.startsWith(QStringLiteral("ours"));
            const bool often = ofOthers > 0 && factory.name == QLatin1String(chartPeerOfTheGoals);
            const int iterations = ours || often ? ofOurs : ofOthers; // a filled peer paints for seconds
            if (iterations > 0)
                add(
                    what, factory, [factory, function](benchmark::State &s) { function(s, factory); }, iterations);
        }
    };
    forAll(hoverTitle, 100, 0, hoverMove);
    forAll(newSamplesTitle, 100, 12,
           [](benchmark::State &s, const ChartPeerFactory &factory) { newSamples(s, factory, pointsOfATest); });
    forAll(manyPointsTitle, 100, 3,
           [](benchmark::State &s, const ChartPeerFactory &factory) { newSamples(s, factory, 10 * pointsOfATest); });
    forAll(fullRedrawTitle, 40, 12, fullRedraw);
    forAll("append", 5, 5, appendOnly);
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
