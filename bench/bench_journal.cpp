#include "app/journal.h"
#include "app/journalqueue.h"
#include "bench/measuredruntime.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

const Measurement someRow{59.94, 59.0, 16, 1920, 1080, 16, 0, 0};

double sinceUs(Clock::time_point begin)
{
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

/// One thread as fast as it can, with the ring never full.
void journalRow(benchmark::State &state)
{
    constexpr int batch = 8192;
    JournalQueue queue(2 * batch);
    QVector<Measurement> rows;
    for (auto _ : state) {
        const Clock::time_point begin = Clock::now();
        for (int i = 0; i < batch; ++i)
            queue.add(someRow);
        state.SetIterationTime(sinceUs(begin) / 1e6);
        rows.resize(0);
        queue.take(batch, &rows);
    }
    if (queue.lostRows() > 0)
        state.SkipWithError("rows were lost");
    state.SetItemsProcessed(state.iterations() * batch);
}
BENCHMARK(journalRow)->UseManualTime();

/// As in a test: receivers on threads of their own that sleep between two frames, and the thread that writes.
/// What each call took, with the two readings of the clock around it.
void journalRowInATest(benchmark::State &state)
{
    constexpr std::chrono::microseconds interval(4167); // 240 frames a second
    constexpr int frames = 720;
    const auto receivers = std::size_t(state.range(0));
    std::vector<double> timesUs;
    for (auto _ : state) {
        const QTemporaryDir folder;
        Journal journal(folder.filePath(QStringLiteral("journal")), {}, QDateTime::currentDateTime());
        std::vector<std::vector<double>> ofReceivers(receivers);
        std::vector<std::thread> threads;
        for (std::vector<double> &own : ofReceivers) {
            own.reserve(frames);
            threads.emplace_back([&own, &journal, interval] {
                const std::shared_ptr<MeasurementSink> sink = journal.sink();
                Clock::time_point next = Clock::now();
                for (int i = 0; i < frames; ++i) {
                    next += interval;
                    std::this_thread::sleep_until(next);
                    benchmark::DoNotOptimize(Clock::now()); // a receiver has just read it too
                    const Clock::time_point begin = Clock::now();
                    sink->add(someRow);
                    own.push_back(sinceUs(begin));
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        if (journal.isIncomplete())
            state.SkipWithError("rows were lost");
        journal.end(Journal::End::Remove);
        for (const std::vector<double> &own : ofReceivers)
            timesUs.insert(timesUs.end(), own.begin(), own.end());
    }
    std::sort(timesUs.begin(), timesUs.end());
    state.counters["median_us"] = quantile(timesUs, 0.5);
    state.counters["p99_us"] = quantile(timesUs, 0.99);
    state.counters["max_us"] = timesUs.empty() ? 0.0 : timesUs.back();
}
BENCHMARK(journalRowInATest)->Arg(1)->Arg(8)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
