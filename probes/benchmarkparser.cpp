#include "probes/benchmarkparser.h"

#include <QStringList>

#include <cmath>
#include <limits>

namespace {

constexpr int mediumFrom = 26; // streams
constexpr int highFrom = 51;

} // namespace

int BenchmarkReport::wholeStreams() const
{
    if (std::isnan(streams))
        return 0;
    // The float next to the largest int is already one too many.
    constexpr double most = std::numeric_limits<int>::max();
    constexpr double least = std::numeric_limits<int>::min();
    return int(qBound(least, double(streams), most));
}

BenchmarkReport parseBenchmarkOutput(const QString &output)
{
    const QString coresMark = QStringLiteral("Preparing : ");
    const QString resultsMark = QStringLiteral("Results : ");
    BenchmarkReport report;
    const QStringList lines = output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &whole : lines) {
        QString line = whole.trimmed();
        if (line.startsWith(coresMark)) {
            line.remove(coresMark);
            line.remove(QStringLiteral(" CPU cores detected."));
            report.cores = line.toInt();
        } else if (line.indexOf(resultsMark) > 0) {
            line.remove(QStringLiteral("**** Results : "));
            line.remove(QStringLiteral(" Streams of 1080p ****"));
            report.streams = line.toFloat();
        }
    }
    return report;
}

BenchmarkRating rateStreams(int streams)
{
    if (streams >= highFrom)
        return BenchmarkRating::High;
    return streams < mediumFrom ? BenchmarkRating::Low : BenchmarkRating::Medium;
}
