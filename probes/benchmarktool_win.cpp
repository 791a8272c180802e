#include "probes/benchmarktool.h"

QString benchmarkToolName()
{
    return QStringLiteral("NDI Benchmark.exe");
}
