#include "probes/tooloutput.h"

#include <QDeadlineTimer>
#include <QProcess>

QByteArray toolOutput(const ToolCommand &command, const std::atomic<bool> &abort)
{
    constexpr qint64 sliceMs = 50; // how soon an abort is seen
    const QDeadlineTimer deadline(command.limit);
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.setStandardInputFile(QProcess::nullDevice());
    tool.start(command.program, command.arguments, QIODevice::ReadOnly);
    while (tool.state() != QProcess::NotRunning && !deadline.hasExpired() && !abort)
        tool.waitForFinished(static_cast<int>(qMin(sliceMs, deadline.remainingTime())));
    if (tool.state() != QProcess::NotRunning) {
        // The destructor alone would wait up to 30 s for it.
        tool.kill();
        tool.waitForFinished(1000);
    }
    return tool.readAllStandardOutput();
}
