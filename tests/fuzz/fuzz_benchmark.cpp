#include "probes/benchmarkparser.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t mostBytes = 1 << 20;
    if (size > mostBytes)
        return 0;
    const QString output = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    const BenchmarkReport report = parseBenchmarkOutput(output);
    const int streams = report.wholeStreams(); // must not overflow

    // A number comes from its own kind of line only.
    if (report.cores != 0 && !output.contains(QStringLiteral("Preparing : ")))
        std::abort();
    if (streams != 0 && !output.contains(QStringLiteral("Results : ")))
        std::abort();
    const BenchmarkRating expected = streams > 50   ? BenchmarkRating::High
                                     : streams > 25 ? BenchmarkRating::Medium
                                                    : BenchmarkRating::Low;
    if (rateStreams(streams) != expected)
        std::abort();
    // A line of another kind changes nothing.
    const BenchmarkReport again = parseBenchmarkOutput(output + QStringLiteral("\nDone.\n"));
    if (again.cores != report.cores || again.wholeStreams() != streams)
        std::abort();
    return 0;
}
