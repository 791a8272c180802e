#include "probes/analysistool.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

QString ndi4Tool()
{
    return QStringLiteral("c:\\Program Files\\NewTek\\NDI 4 Analysis BETA\\x64\\NDIAnalysis.exe");
}

QString ndi5Tool()
{
    return QStringLiteral("c:\\Program Files\\NDI\\NDI 5 Analysis BETA\\x64\\NDIAnalysis.exe");
}

QString ndi6Tool()
{
    return QStringLiteral("c:\\Program Files\\NDI\\NDI 6 Tools\\Analysis\\NDIAnalysis.exe");
}

QStringList inFolders(const QStringList &folders, QChar separator, const QString &name)
{
    QStringList paths;
    for (const QString &folder : folders)
        paths.append(folder.endsWith(separator) ? folder + name : folder + separator + name);
    return paths;
}

QStringList windowsToolsOnSearchPath(const QStringList &searchFolders)
{
    // With its ending: without, Windows would take a script of that name as well.
    return inFolders(searchFolders, QLatin1Char('\\'), QStringLiteral("NDIAnalysis.exe"));
}

} // namespace

QStringList windowsAnalysisToolsForRun(const QStringList &searchFolders)
{
    return QStringList{ndi5Tool(), ndi4Tool(), ndi6Tool()} + windowsToolsOnSearchPath(searchFolders);
}

QStringList windowsAnalysisToolsForCheck(const QStringList &searchFolders)
{
    return QStringList{ndi4Tool(), ndi5Tool(), ndi6Tool()} + windowsToolsOnSearchPath(searchFolders);
}

QStringList linuxAnalysisTools(const QString &programFolder, const QStringList &searchFolders)
{
    return inFolders(QStringList{programFolder} + searchFolders, QLatin1Char('/'), QStringLiteral("NDIAnalysis"));
}

QString firstProgramOf(const QStringList &paths)
{
    for (const QString &path : paths) {
        const QFileInfo file(path);
        if (file.isFile() && file.isExecutable())
            return path;
    }
    return QString();
}

QString installedAnalysisTool()
{
    return firstProgramOf(analysisToolsForRun());
}

bool isAnalysisToolInstalled()
{
    return !firstProgramOf(analysisToolsForCheck()).isEmpty();
}

QStringList analysisRelays(const QString &programFolder, const QStringList &searchFolders)
{
    return inFolders(QStringList{programFolder} + searchFolders, QLatin1Char('/'), analysisRelayName());
}

QString analysisRelay()
{
    return firstProgramOf(analysisRelays(QCoreApplication::applicationDirPath(),
                                         searchPathFolders(qEnvironmentVariable("PATH"), QDir::listSeparator())));
}
