#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <atomic>
#include <chrono>

/// A program to run for its output.
struct ToolCommand {
    QString program;
    QStringList arguments;
    std::chrono::milliseconds limit{30000};
};

/// Runs the program and returns all that it wrote until it ended, standard output and error together.
/// At the time limit or, within 100 ms, at the abort the program is killed and what it wrote so far is
/// returned. Empty when it did not start. Blocks; needs no event loop.
QByteArray toolOutput(const ToolCommand &command, const std::atomic<bool> &abort);
