#pragma once

#include "loopback/crash.h"
#include "loopback/finder.h"
#include "loopback/receiver.h"
#include "loopback/scenario.h"
#include "loopback/source.h"
#include "loopback/truthlog.h"
#include "ndi/nditypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace loopback {

/// Everything behind the exported functions, one member per function. Handles are numbers that are
/// never used twice, so a call on a dead or foreign one is recognised, counted and harmless. The
/// members may be called from any thread; those of one handle also at the same time.
class Runtime final {
public:
    /// Without a scenario (it could not be read) nothing can be made. `truth` must outlive it.
    Runtime(std::unique_ptr<const Scenario> scenario, TruthLog &truth);
    ~Runtime();
    Runtime(const Runtime &) = delete;
    Runtime &operator=(const Runtime &) = delete;

    bool initialize();
    /// No frames reach any receiver after it; what was handed out stays valid.
    void shutDown();

    NDIlib_find_instance_t createFinder();
    bool waitForSources(NDIlib_find_instance_t handle, std::uint32_t timeoutMs);
    const NDIlib_source_t *currentSources(NDIlib_find_instance_t handle, std::uint32_t *count);
    void destroyFinder(NDIlib_find_instance_t handle);

    NDIlib_recv_instance_t createReceiver(const NDIlib_recv_create_v3_t *settings);
    NDIlib_frame_type_e capture(NDIlib_recv_instance_t handle, NDIlib_video_frame_v2_t *video,
                                NDIlib_audio_frame_v2_t *audio, NDIlib_metadata_frame_t *metadata,
                                std::uint32_t timeoutMs);
    void freeVideo(NDIlib_recv_instance_t handle, const NDIlib_video_frame_v2_t *frame);
    void freeAudio(NDIlib_recv_instance_t handle, const NDIlib_audio_frame_v2_t *frame);
    void performance(NDIlib_recv_instance_t handle, NDIlib_recv_performance_t *total,
                     NDIlib_recv_performance_t *dropped);
    void destroyReceiver(NDIlib_recv_instance_t handle);

    /// The source a receiver would get; null for none. Name and address first, then either.
    Source *findSource(const char *name, const char *url) const;

private:
    struct Connection {
        std::shared_ptr<Receiver> receiver;
        Source *source = nullptr; ///< null: it waits for a source that is not there
    };

    std::shared_ptr<Receiver> receiverOf(NDIlib_recv_instance_t handle) const;
    std::shared_ptr<Finder> finderOf(NDIlib_find_instance_t handle) const;
    void countDead(NDIlib_recv_instance_t handle, std::int64_t call, const char *name);

    const std::unique_ptr<const Scenario> m_scenario; ///< null: it could not be read
    TruthLog &m_truth;
    CrashPoint m_crash;
    std::vector<std::unique_ptr<Source>> m_sources; ///< in the scenario's order; constant
    std::unordered_multimap<std::string, std::size_t> m_byName;
    std::unordered_multimap<std::string, std::size_t> m_byUrl;

    mutable std::shared_mutex m_handlesMutex;
    // all below guarded by m_handlesMutex
    std::unordered_map<std::uintptr_t, Connection> m_receivers;
    std::unordered_map<std::uintptr_t, std::shared_ptr<Finder>> m_finders;
    std::uintptr_t m_receiversMade = 0;
    std::uintptr_t m_findersMade = 0;
};

} // namespace loopback
