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

/// The file with all its rows, on the disk.
void writeRecord(benchmark::State &state)
{
    QStringList rows;
    for (int i = 0; i < rowsOfFiveMinutes; ++i)
        rows.append(makeRow(i));
    for (auto _ : state) {
        if (!createRecordFile(QStringLiteral("bench")) || !appendRecordText(recordHeader()) || !appendRecordRows(rows))
            state.SkipWithError("the record could not be written");
    }
    state.SetItemsProcessed(state.iterations() * rowsOfFiveMinutes);
}
BENCHMARK(writeRecord)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The same, with the rows made on the way: all the work that a record of five minutes is.
void buildAndWriteRecord(benchmark::State &state)
{
    for (auto _ : state) {
        QStringList rows;
        for (int i = 0; i < rowsOfFiveMinutes; ++i)
            rows.append(makeRow(i));
        if (!createRecordFile(QStringLiteral("bench")) || !appendRecordText(recordHeader()) || !appendRecordRows(rows))
            state.SkipWithError("the record could not be written");
    }
    state.SetItemsProcessed(state.iterations() * rowsOfFiveMinutes);
}
BENCHMARK(buildAndWriteRecord)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
