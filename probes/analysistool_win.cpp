#include "probes/analysistool.h"

namespace {

QStringList searchFolders()
{
    return searchPathFolders(qEnvironmentVariable("PATH"), QLatin1Char(';'));
}

} // namespace

QStringList analysisToolsForRun()
{
    return windowsAnalysisToolsForRun(searchFolders());
}

QStringList analysisToolsForCheck()
{
    return windowsAnalysisToolsForCheck(searchFolders());
}

QString analysisRelayName()
{
    return QStringLiteral("pipe_stdout.exe");
}
