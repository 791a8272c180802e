#pragma once

#include <QByteArray>

#include <mutex>
#include <optional>

/// Time that all processors together have spent since the system started, in ticks.
struct CpuTicks {
    quint64 total = 0;
    quint64 idle = 0; ///< doing nothing, waiting for disks included
};

/// Reads the first line of /proc/stat; empty when it is something else. Pure.
std::optional<CpuTicks> parseProcStat(const QByteArray &text);

/// Busy share of the time between two readings, 0 to 100 percent, truncated; empty when no time has
/// passed. Pure.
std::optional<int> busyPercent(const CpuTicks &before, const CpuTicks &after);

/// Remembers the last reading, so that the next one tells the load since then. Any thread.
class ProcessorLoad final {
public:
    /// text: /proc/stat of now. Empty on the first reading and when the text cannot be read.
    std::optional<int> add(const QByteArray &text);

private:
    std::mutex m_mutex; // guards m_last
    std::optional<CpuTicks> m_last;
};
