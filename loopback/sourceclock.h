#pragma once

#include "loopback/scenario.h"

#include <cstdint>

namespace loopback {

/// When the frames of a source are due, in ns since its clock started. Every deadline is computed
/// from the frame number in 128 bits, so that no error adds up however long the source runs.
/// Not thread-safe: one per timeline.
class SourceClock final {
public:
    explicit SourceClock(Rate rate) : m_rate(rate) {}

    /// `frame` must not be before the last rate change.
    std::int64_t frameNs(std::int64_t frame) const noexcept;

    /// From `frame` on the rate is `rate`; `frame` itself keeps its time.
    void changeRate(std::int64_t frame, Rate rate) noexcept;

private:
    Rate m_rate;
    std::int64_t m_originFrame = 0; ///< first frame at this rate
    std::int64_t m_originNs = 0;
};

/// How much later (or earlier) than its deadline each frame comes. The offset of a frame follows
/// from seed and frame number alone (for bursts: and the frames before), so it never adds up.
class Jitter final {
public:
    explicit Jitter(const JitterSpec &spec) : m_spec(spec) {}

    /// Offset in ns of a frame due at `frameNs`; frames are asked for in order.
    std::int64_t offsetNs(std::int64_t frame, std::int64_t frameNs) noexcept;

    /// The most a frame can come before its deadline, in ns.
    std::int64_t maxEarlyNs() const noexcept;

private:
    JitterSpec m_spec;
    std::int64_t m_heldUntilNs = INT64_MIN; ///< burst under way
};

} // namespace loopback
