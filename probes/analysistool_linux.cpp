#include "probes/analysistool.h"

#include <QCoreApplication>

QStringList analysisToolsForRun()
{
    return linuxAnalysisTools(QCoreApplication::applicationDirPath(),
                              searchPathFolders(qEnvironmentVariable("PATH"), QLatin1Char(':')));
}

QStringList analysisToolsForCheck()
{
    return analysisToolsForRun();
}

QString analysisRelayName()
{
    return QStringLiteral("pipe_stdout");
}
