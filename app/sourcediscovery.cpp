#include "app/sourcediscovery.h"

#include "ndi/ndilib.h"

#include <QElapsedTimer>

namespace {

constexpr qint64 longestSearchMs = 60000;
constexpr std::uint32_t quietIntervalMs = 2000;

} // namespace

DiscoveredSources discoverSources()
{
    DiscoveredSources found;
    found.finder = NDIlib_find_create_v2();
    if (!found.finder)
        return found;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < longestSearchMs) {
        if (!NDIlib_find_wait_for_sources(found.finder, quietIntervalMs)) {
            found.endedQuiet = true;
            break;
        }
        std::uint32_t count = 0;
        const NDIlib_source_t *const sources = NDIlib_find_get_current_sources(found.finder, &count);
        found.sources = SourceList(sources, count);
    }
    return found;
}
