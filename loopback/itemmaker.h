#pragma once

#include "loopback/receiverqueue.h"
#include "loopback/scenario.h"
#include "loopback/timeline.h"
#include "loopback/videoframe.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace loopback {

/// Turns the steps of a source's timeline into what receivers get: draws pictures, keeps the tone
/// that audio blocks point into. Any thread; may die before what it made, except audio and metadata,
/// whose memory stays its own.
class ItemMaker final {
public:
    explicit ItemMaker(const SourceSpec &spec) : m_spec(spec) {}
    ItemMaker(const ItemMaker &) = delete;
    ItemMaker &operator=(const ItemMaker &) = delete;

    /// `moving`: the picture's block moves as well. `wall100ns`: when the source sent it. nullopt for a skip, and for a
    /// video frame when receivers that do not free hold too much memory.
    std::optional<QueueItem> make(const Step &step, bool moving, std::int64_t wall100ns);

    const FramePool &pool() const { return m_pool; }

private:
    std::shared_ptr<VideoFrame> makeVideo(const Step &step, bool moving, std::int64_t wall100ns);
    NDIlib_audio_frame_v2_t makeAudio(const Step &step, std::int64_t wall100ns);
    std::int64_t timestamp(std::int64_t wall100ns) const { return m_spec.timestamps ? wall100ns : INT64_MAX; }

    const SourceSpec &m_spec;
    FramePool m_pool;
    std::mutex m_toneMutex;
    std::vector<std::unique_ptr<float[]>> m_tones; ///< newest last; guarded by m_toneMutex
    std::int64_t m_toneSamples = 0;                ///< per channel in the newest; guarded by m_toneMutex
};

} // namespace loopback
