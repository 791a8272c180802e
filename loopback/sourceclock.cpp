#include "loopback/sourceclock.h"

#include <algorithm>
#include <cmath>

namespace loopback {
namespace {

__extension__ using Int128 = __int128; // GCC on every platform we build for

constexpr double kPi = 3.14159265358979323846;
constexpr double kGaussianCut = 4.0; // sigmas

/// A well mixed number from seed, frame and draw (SplitMix64).
std::uint64_t hash(std::uint64_t seed, std::int64_t frame, std::uint64_t draw) noexcept
{
    std::uint64_t z = seed * 0x9E3779B97F4A7C15U + static_cast<std::uint64_t>(frame) * 2U + draw;
    z += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
}

/// In (0, 1].
double unit(std::uint64_t bits) noexcept
{
    return (static_cast<double>(bits >> 11U) + 1.0) / 9007199254740992.0;
}

} // namespace

std::int64_t SourceClock::frameNs(std::int64_t frame) const noexcept
{
    const Int128 sinceOrigin = Int128{frame - m_originFrame} * 1'000'000'000 * m_rate.d / m_rate.n;
    return m_originNs + static_cast<std::int64_t>(sinceOrigin);
}

void SourceClock::changeRate(std::int64_t frame, Rate rate) noexcept
{
    m_originNs = frameNs(frame);
    m_originFrame = frame;
    m_rate = rate;
}

std::int64_t Jitter::offsetNs(std::int64_t frame, std::int64_t frameNs) noexcept
{
    switch (m_spec.kind) {
    case JitterKind::none:
        return 0;
    case JitterKind::uniform: {
        const double position = 2.0 * unit(hash(m_spec.seed, frame, 0)) - 1.0;
        return std::llround(position * static_cast<double>(m_spec.amplitudeNs));
    }
    case JitterKind::gaussian: {
        const double radius = std::sqrt(-2.0 * std::log(unit(hash(m_spec.seed, frame, 0))));
        const double normal = radius * std::cos(2.0 * kPi * unit(hash(m_spec.seed, frame, 1)));
        return std::llround(std::clamp(normal, -kGaussianCut, kGaussianCut) * static_cast<double>(m_spec.sigmaNs));
    }
    case JitterKind::burst:
        if (frameNs >= m_heldUntilNs
            && hash(m_spec.seed, frame, 0) % static_cast<std::uint64_t>(m_spec.everyFrames) == 0)
            m_heldUntilNs = frameNs + m_spec.amplitudeNs;
        return std::max<std::int64_t>(m_heldUntilNs, frameNs) - frameNs;
    }
    return 0;
}

std::int64_t Jitter::maxEarlyNs() const noexcept
{
    switch (m_spec.kind) {
    case JitterKind::uniform:
        return m_spec.amplitudeNs;
    case JitterKind::gaussian:
        return std::llround(kGaussianCut * static_cast<double>(m_spec.sigmaNs));
    case JitterKind::none:
    case JitterKind::burst:
        break;
    }
    return 0;
}

} // namespace loopback
