#pragma once

#include <QString>

/// How long the benchmark tool may run.
constexpr int benchmarkTimeoutMs = 30000;

/// File name of the benchmark tool on this system.
QString benchmarkToolName();

/// Path of an executable file of this name: in folder when it is there, else on the search path.
/// Empty when it is in neither. The working folder is not looked in.
QString findBenchmarkTool(const QString &folder, const QString &name);

/// Runs the tool without arguments, waits at most timeoutMs for its end, and returns what it has
/// printed by then, standard error included. A tool that still runs is ended. Empty when it does not
/// start. Blocks the calling thread, without an event loop.
QString runBenchmarkTool(const QString &path, int timeoutMs);
