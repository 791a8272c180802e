#pragma once

#include "loopback/scenario.h"
#include "loopback/source.h"
#include "ndi/nditypes.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace loopback {

/// The discovery list as one finder sees it: sources come in batches, come and go. Any thread.
class Finder final {
public:
    /// Both must outlive it. `createdNs`: steady clock.
    Finder(const Scenario &scenario, const std::vector<std::unique_ptr<Source>> &sources, std::int64_t createdNs);

    /// True when the list differs from the one at the last true answer; true at once the first
    /// time, as with the real runtime. Ends a list handed out before.
    bool wait(std::uint32_t timeoutMs);

    /// The list now; valid until the next call on this finder.
    const NDIlib_source_t *current(std::uint32_t *count);

    /// Ends a wait under way; every later wait fails at once.
    void close();

    using Visible = std::vector<std::size_t>; ///< indexes of the sources in the list

    /// The list at a time of the steady clock. `changeNs` becomes the earliest time at which it may
    /// differ, if that is before it.
    Visible visibleAt(std::int64_t nowNs, std::int64_t &changeNs) const;

private:
    bool isListed(std::size_t index, std::int64_t sinceNs, std::int64_t &changeNs) const;
    void dropList();

    const Scenario &m_scenario;
    const std::vector<std::unique_ptr<Source>> &m_sources;
    const std::int64_t m_createdNs;
    bool m_anyVanish = false; ///< constant
    std::mutex m_mutex;
    std::condition_variable m_closing;
    // all below guarded by m_mutex
    bool m_first = true;
    bool m_closed = false;
    Visible m_reported;
    std::vector<std::unique_ptr<char[]>> m_texts; ///< of the list handed out
    std::unique_ptr<NDIlib_source_t[]> m_list;
};

} // namespace loopback
