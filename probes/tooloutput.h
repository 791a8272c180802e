#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <functional>

/// A program to run for its output.
struct ToolCommand {
    QString program;
    QStringList arguments;
    std::chrono::milliseconds limit{30000};
    bool hasInput = false; ///< standard input is a pipe that stays open, else it is at its end at once
};

/// What became of it.
struct ToolRun {
    QByteArray output;     ///< all that it wrote, standard output and error together
    bool hasEnded = false; ///< by itself; else it did not start, or was killed
};

/// Runs the program to its end. At the time limit or, within 100 ms, when aborted() becomes true it is
/// killed. Blocks; needs no event loop. aborted is called by this thread.
ToolRun runTool(const ToolCommand &command, const std::function<bool()> &aborted);

/// All that it wrote, also when it was killed; empty when it did not start.
QByteArray toolOutput(const ToolCommand &command, const std::atomic<bool> &abort);
