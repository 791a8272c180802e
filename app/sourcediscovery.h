#pragma once

#include "ndi/sourcelist.h"

/// What a search of the network brought.
struct DiscoveredSources {
    NDIlib_find_instance_t finder = nullptr; ///< null: the runtime made none; never destroyed
    SourceList sources;
    bool endedQuiet = false; ///< the list had settled when the search ended
};

/// Searches until the list of sources has not changed for two seconds, for about a minute at most.
/// The finder is left in the caller's hands. Blocks the calling thread, which may be any.
DiscoveredSources discoverSources();
