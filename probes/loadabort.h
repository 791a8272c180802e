#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Cuts the waits of the load sampler short when its owner goes away. Once requested it stays so.
/// Every member may be called from any thread.
class LoadAbort final {
public:
    void request()
    {
        {
            const std::lock_guard<std::mutex> locker(m_mutex);
            m_requested = true;
        }
        m_changed.notify_all();
    }

    bool isRequested() const
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        return m_requested;
    }

    /// Sleeps; false at once when the abort was or is requested.
    bool sleepFor(std::chrono::milliseconds time) const
    {
        std::unique_lock<std::mutex> locker(m_mutex);
        return !m_changed.wait_for(locker, time, [this] { return m_requested; });
    }

private:
    mutable std::mutex m_mutex; // guards m_requested
    mutable std::condition_variable m_changed;
    bool m_requested = false;
};
