#include "probes/benchmarktool.h"

QString benchmarkToolName()
{
    return QStringLiteral("ndi-benchmark");
}
