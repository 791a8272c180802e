#pragma once

#include <QByteArray>
#include <QMap>

#include <optional>

/// What tools and kernel files tell about the load of the graphics adapters, as text. All pure.

/// Truncates towards zero; limited to the range of int, not a number gives 0.
int wholePercent(double percent);

/// The number on the first line, as whole percent; blanks around it do not matter. Empty when there
/// is no line or it is not a number with a decimal point.
std::optional<int> percentOfFirstLine(const QByteArray &output);

/// Adds up the lines that hold a finite number, one per adapter; empty when none does.
std::optional<double> sumOfLines(const QByteArray &output);

/// What one user of a graphics adapter has used of its engines so far, by the engine's name.
struct DrmUsage {
    QByteArray adapter;   ///< bus address
    quint64 clientId = 0; ///< tells the adapter's users apart
    QMap<QByteArray, quint64> busyNs;
    QMap<QByteArray, quint64> busyCycles;
    QMap<QByteArray, quint64> totalCycles; ///< of the engine, whoever used it
};

/// Reads a descriptor's text under /proc/PID/fdinfo. Empty unless it is one of Intel's drivers, i915
/// or xe, which have no file with the load of the whole adapter.
std::optional<DrmUsage> parseDrmUsage(const QByteArray &text);

/// Load between two readings of one user, percent of one engine, summed over its engines.
double drmBusyPercent(const DrmUsage &before, const DrmUsage &after, qint64 elapsedNs);
