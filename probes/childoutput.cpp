#include "probes/childoutput.h"

#include "probes/loadabort.h"

#include <QDeadlineTimer>
#include <QProcess>

std::optional<QByteArray> childOutput(const QString &program, const QStringList &arguments,
                                      std::chrono::milliseconds limit, const LoadAbort &abort)
{
    constexpr qint64 sliceMs = 50; // how soon an abort is seen
    const QDeadlineTimer deadline(limit);
    QProcess child;
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(program, arguments, QIODevice::ReadWrite);
    bool hasEnded = false;
    while (!hasEnded && child.state() != QProcess::NotRunning && !deadline.hasExpired() && !abort.isRequested())
        hasEnded = child.waitForFinished(static_cast<int>(qMin(sliceMs, deadline.remainingTime())));
    if (hasEnded)
        return child.readAllStandardOutput();
    if (child.state() != QProcess::NotRunning) {
        // The destructor alone would wait up to 30 s for it.
        child.kill();
        child.waitForFinished(1000);
    }
    return std::nullopt;
}
