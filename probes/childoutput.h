#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

class LoadAbort;

/// Runs a program to its end and returns all that it wrote, standard output and error together.
/// Empty when it did not start, or when it was killed at the time limit or, within 100 ms, because
/// of the abort. Blocks; needs no event loop.
std::optional<QByteArray> childOutput(const QString &program, const QStringList &arguments,
                                      std::chrono::milliseconds limit, const LoadAbort &abort);
