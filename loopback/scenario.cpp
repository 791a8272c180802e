#include "loopback/scenario.h"

#include <algorithm>

namespace loopback {

std::int64_t Scenario::appearNs(std::size_t index) const
{
    if (sources[index].appearNs)
        return *sources[index].appearNs;
    const auto count = static_cast<std::int64_t>(sources.size());
    const std::int64_t batch = discoveryBatch > 0 ? discoveryBatch : std::max<std::int64_t>((count + 9) / 10, 1);
    return discoveryNs + static_cast<std::int64_t>(index) / batch * discoveryStepNs;
}

Scenario defaultScenario()
{
    Scenario scenario;
    const auto add = [&scenario](const char *name, std::int32_t width, std::int32_t height, Rate rate) {
        SourceSpec source;
        source.name = name;
        source.url = "127.0.0.1:" + std::to_string(5961 + scenario.sources.size());
        source.format.width = width;
        source.format.height = height;
        source.format.declaredRate = rate;
        source.clockRate = rate;
        scenario.sources.push_back(std::move(source));
    };
    add("LOOPBACK (1080p59.94)", 1920, 1080, {60000, 1001});
    add("LOOPBACK (2160p25)", 3840, 2160, {25, 1});
    add("LOOPBACK (720p50)", 1280, 720, {50, 1});
    add("LOOPBACK (1080p29.97 jittery)", 1920, 1080, {30000, 1001});
    JitterSpec &jitter = scenario.sources.back().jitter;
    jitter.kind = JitterKind::gaussian;
    jitter.sigmaNs = 4 * kNsPerMs;
    jitter.seed = 2997;
    return scenario;
}

} // namespace loopback
