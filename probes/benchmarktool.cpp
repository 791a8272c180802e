#include "probes/benchmarktool.h"

#include "probes/tooloutput.h"

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
    const ToolCommand command{path, {}, std::chrono::milliseconds(timeoutMs), true};
    return QString::fromLocal8Bit(runTool(command, [] { return false; }).output);
}
