#pragma once

#include <atomic>

/// Decides whether a receiver may publish a copy of its next frame. Shared by all controllers of a window and their
/// first receivers. Any thread; every member returns at once.
class FrameCopyBudget final {
public:
    enum class Pace {
        EveryFrame, ///< as long as copies in flight are below the limit
        OnRequest   ///< one copy for each request()
    };
    static constexpr int anySource = -2;
    static constexpr int noSource = -1;

    /// maxInFlight: copies that are published and not yet handed on. With Pace::OnRequest no source is wanted at first.
    FrameCopyBudget(int maxInFlight, Pace pace) noexcept
        : m_maxInFlight(maxInFlight), m_pace(pace), m_source(pace == Pace::EveryFrame ? anySource : noSource)
    {
    }

    /// The source index whose frames are copied, anySource or noSource.
    void setSource(int sourceIndex) noexcept { m_source.store(sourceIndex, std::memory_order_relaxed); }
    /// The listener is ready for the next copy. Does not add up.
    void request() noexcept { m_isRequested.store(true, std::memory_order_relaxed); }
    /// Copies in flight; for tests.
    int inFlight() const noexcept { return m_inFlight.load(std::memory_order_relaxed); }

    /// True: one copy of a frame of this source may be published, and release() must follow when it has been handed on.
    bool tryAcquire(int sourceIndex) noexcept
    {
        const int wanted = m_source.load(std::memory_order_relaxed);
        if (wanted != sourceIndex && wanted != anySource)
            return false;
        if (m_inFlight.fetch_add(1, std::memory_order_relaxed) < m_maxInFlight
            && (m_pace == Pace::EveryFrame || m_isRequested.exchange(false, std::memory_order_relaxed)))
            return true;
        release();
        return false;
    }
    void release() noexcept { m_inFlight.fetch_sub(1, std::memory_order_relaxed); }

private:
    const int m_maxInFlight;
    const Pace m_pace;
    std::atomic<int> m_source;
    std::atomic<bool> m_isRequested{false};
    std::atomic<int> m_inFlight{0};
};
