#pragma once

#include <atomic>

/// Decides whether a receiver may publish a copy of its next frame. Shared by a controller and its
/// first receiver; every member may be called from any thread and returns at once.
class FrameCopyBudget final {
public:
    static constexpr int largestInFlight = 4; ///< copies published and not yet handed on

    void setWanted(bool wanted) noexcept { m_wanted.store(wanted, std::memory_order_relaxed); }
    bool isWanted() const noexcept { return m_wanted.load(std::memory_order_relaxed); }
    /// Copies under way; for tests.
    int inFlight() const noexcept { return m_inFlight.load(std::memory_order_relaxed); }

    /// True: one copy may be published, and release() must follow when it has been handed on.
    bool tryAcquire() noexcept
    {
        if (!isWanted())
            return false;
        if (m_inFlight.fetch_add(1, std::memory_order_relaxed) < largestInFlight)
            return true;
        release();
        return false;
    }
    void release() noexcept { m_inFlight.fetch_sub(1, std::memory_order_relaxed); }

private:
    std::atomic<bool> m_wanted{false};
    std::atomic<int> m_inFlight{0};
};
