#include "probes/childoutput.h"

#include "probes/loadabort.h"
#include "probes/tooloutput.h"

std::optional<QByteArray> childOutput(const QString &program, const QStringList &arguments,
                                      std::chrono::milliseconds limit, const LoadAbort &abort)
{
    const ToolRun run = runTool({program, arguments, limit, true}, [&abort] { return abort.isRequested(); });
    return run.hasEnded ? std::optional<QByteArray>(run.output) : std::nullopt;
}
