// What the analysis tool prints, in pieces as they come.
#include "probes/analysisparser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray output(reinterpret_cast<const char *>(data), int(size));
    const QStringList lines = analysisLines(output);
    for (const QString &text : lines) {
        const AnalysisLine line = parseAnalysisLine(text);
        if (text.contains(QLatin1Char('\n')))
            std::abort();
        if (line.dataRate && (!line.dataRate->time.isValid() || !(line.dataRate->megabytesPerSecond > 0)))
            std::abort();
        if (line.receiveTime && !line.receiveTime->time.isValid())
            std::abort();
    }
    return 0;
}
