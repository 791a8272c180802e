#pragma once

#include <cstdint>

namespace loopback {

/// Which call came on a dead or foreign handle, as the truth file numbers them.
constexpr std::int64_t kDeadCapture = 1;
constexpr std::int64_t kDeadFreeVideo = 2;
constexpr std::int64_t kDeadFreeAudio = 3;
constexpr std::int64_t kDeadDestroy = 4;
constexpr std::int64_t kDeadPerformance = 5;
constexpr std::int64_t kDeadFinder = 6;

} // namespace loopback
