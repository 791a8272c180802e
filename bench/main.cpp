#include "tests/support/testhome.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

int main(int argc, char *argv[])
{
    const TestHome home; // the record goes here
    home.use();
    qputenv("VEXA_LOOPBACK_UNPACED", "1");
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
