#include "probes/procstat.h"

#include <QList>

std::optional<CpuTicks> parseProcStat(const QByteArray &text)
{
    const QList<QByteArray> fields = text.mid(0, text.indexOf('\n')).simplified().split(' ');
    // user nice system idle iowait irq softirq steal; guest times, behind these, are inside user and nice.
    constexpr int idleField = 4;
    constexpr int diskWaitField = 5;
    constexpr int lastField = 8;
    if (fields.size() <= diskWaitField || fields.first() != "cpu")
        return std::nullopt;
    CpuTicks ticks;
    for (int i = 1; i < fields.size() && i <= lastField; ++i) {
        bool isNumber = false;
        const quint64 value = fields.at(i).toULongLong(&isNumber);
        if (!isNumber)
            return std::nullopt;
        ticks.total += value;
        if (i == idleField || i == diskWaitField)
            ticks.idle += value;
    }
    return ticks;
}

std::optional<int> busyPercent(const CpuTicks &before, const CpuTicks &after)
{
    if (after.total <= before.total)
        return std::nullopt;
    const quint64 total = after.total - before.total;
    // The kernel's disk wait may fall a little.
    const quint64 idle = after.idle > before.idle ? qMin(after.idle - before.idle, total) : 0;
    return static_cast<int>(100 * (total - idle) / total);
}

std::optional<int> ProcessorLoad::add(const QByteArray &text)
{
    const std::optional<CpuTicks> now = parseProcStat(text);
    if (!now)
        return std::nullopt;
    const std::lock_guard<std::mutex> locker(m_mutex);
    const std::optional<int> percent = m_last ? busyPercent(*m_last, *now) : std::nullopt;
    m_last = now;
    return percent;
}
