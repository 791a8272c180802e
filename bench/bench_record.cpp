#include "app/recordfile.h"

#include <benchmark/benchmark.h>

namespace {

constexpr int rowsOfFiveMinutes = 144000; // eight receivers at 60 frames a second

QString makeRow(int number)
{
    return recordRow(QStringLiteral("LOOPBACK (1080p59.94)"), 1920, 1080, 59.0, number * 2, number % 8,
                     59.0 + double(number % 1000) / 1000.0, 16 + number % 2);
}

void buildRow(benchmark::State &state)
{
    int number = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(makeRow(number++));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(buildRow);

/// The file with all its rows, made on the way, on the disk.
void writeRecord(benchmark::State &state)
{
    for (auto _ : state) {
        int next = 0;
        const auto nextRow = [&next](QString *row) {
            if (next < rowsOfFiveMinutes)
                *row = makeRow(next);
            return next++ < rowsOfFiveMinutes;
        };
        if (!createRecordFile(QStringLiteral("bench")) || !appendRecordText(recordHeader())
            || !appendRecordRows(nextRow))
            state.SkipWithError("the record could not be written");
    }
    state.SetItemsProcessed(state.iterations() * rowsOfFiveMinutes);
}
BENCHMARK(writeRecord)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
