#include "probes/benchmarktool.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

QString findBenchmarkTool(const QString &folder, const QString &name)
{
    // An empty list of folders would mean the search path.
    if (!folder.isEmpty()) {
        QString own = QStandardPaths::findExecutable(name, {folder});
        if (!own.isEmpty())
            return own;
    }
    return QStandardPaths::findExecutable(name);
}

QString runBenchmarkTool(const QString &path, int timeoutMs)
{
    if (path.isEmpty())
        return {};
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    // QProcess puts a name with blanks into double quotes on the command line.
    tool.start(path, {}, QIODevice::ReadWrite);
    const bool ended = tool.waitForFinished(timeoutMs);
    const QByteArray output = tool.readAllStandardOutput();
    if (!ended && tool.state() != QProcess::NotRunning) {
        constexpr int killTimeoutMs = 1000; // the process object by itself would wait 30 s
        tool.kill();
        tool.waitForFinished(killTimeoutMs);
    }
    return QString::fromLocal8Bit(output);
}
