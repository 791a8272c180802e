#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <utility>
#include <vector>

/// How late a beat every 5 ms in this thread is, while the object lives. Needs an event loop.
class Heartbeat final : public QObject {
public:
    static constexpr double beatMs = 5.0;

    Heartbeat()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, &Heartbeat::beat);
        m_clock.start();
        m_dueMs = beatMs;
        m_timer.start(static_cast<int>(beatMs));
    }
    /// Those since the last call, in ms, in order of their lateness; one at least: this call counts as a beat.
    std::vector<double> takeSorted()
    {
        beat();
        std::sort(m_lateMs.begin(), m_lateMs.end());
        return std::exchange(m_lateMs, {});
    }

private:
    void beat()
    {
        const double nowMs = static_cast<double>(m_clock.nsecsElapsed()) * 1e-6;
        m_lateMs.push_back(std::max(0.0, nowMs - m_dueMs));
        m_dueMs = nowMs + beatMs;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_dueMs = 0.0;
    std::vector<double> m_lateMs;
};

/// The lateness that `share` of the beats (0 to 1) keep; late is sorted and not empty.
inline double lateAt(const std::vector<double> &late, double share)
{
    const auto index = static_cast<std::size_t>(static_cast<double>(late.size()) * share);
    return late[std::min(index, late.size() - 1)];
}
