#include "probes/tooloutput.h"

#include <QDeadlineTimer>
#include <QProcess>

ToolRun runTool(const ToolCommand &command, const std::function<bool()> &aborted)
{
    constexpr qint64 sliceMs = 50; // how soon an abort is seen
    const QDeadlineTimer deadline(command.limit);
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    if (!command.hasInput)
        tool.setStandardInputFile(QProcess::nullDevice());
    tool.start(command.program, command.arguments, command.hasInput ? QIODevice::ReadWrite : QIODevice::ReadOnly);
    ToolRun run;
    while (!run.hasEnded && tool.state() != QProcess::NotRunning && !deadline.hasExpired() && !aborted())
        run.hasEnded = tool.waitForFinished(static_cast<int>(qMin(sliceMs, deadline.remainingTime())));
    if (tool.state() != QProcess::NotRunning) {
        // The destructor alone would wait up to 30 s for it.
        tool.kill();
        tool.waitForFinished(1000);
    }
    run.output = tool.readAllStandardOutput();
    return run;
}

QByteArray toolOutput(const ToolCommand &command, const std::atomic<bool> &abort)
{
    return runTool(command, [&abort] { return abort.load(); }).output;
}
