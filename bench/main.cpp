#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

int main(int argc, char *argv[])
{
    const QTemporaryDir home; // the record goes here
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    qputenv("VEXA_LOOPBACK_UNPACED", "1");
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
