#pragma once

#include "loopback/videoframe.h"
#include "ndi/nditypes.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace loopback {

/// What waits for a receiver to take it. Exactly one of the payloads counts, by `type`.
struct QueueItem {
    std::int32_t type = NDIlib_frame_type_none; ///< NDIlib_frame_type_e or an unknown value
    std::shared_ptr<const VideoFrame> video;
    NDIlib_audio_frame_v2_t audio;
    NDIlib_metadata_frame_t metadata;
    std::int64_t number = 0; ///< of the frame or block
};

/// How much a receiver can leave lying, by kind.
struct QueueLimits {
    std::size_t video = 16;
    std::size_t audio = 64;
    std::size_t other = 64; ///< metadata, and apart from it all that carries nothing
};

/// The frames between a source and one receiver, in order. A new one that finds no room pushes the
/// oldest of its kind out, which is counted. Not thread-safe: guarded by its receiver.
class ReceiverQueue final {
public:
    explicit ReceiverQueue(const QueueLimits &limits) : m_limits(limits) {}

    /// Returns the item that was lost for it, if any.
    std::optional<QueueItem> push(QueueItem item);
    /// The oldest item; nullopt when there is none.
    std::optional<QueueItem> pop();
    bool isEmpty() const { return m_items.empty(); }
    void clear();

    /// All frames that reached the receiver, lost ones included.
    const NDIlib_recv_performance_t &total() const { return m_total; }
    const NDIlib_recv_performance_t &dropped() const { return m_dropped; }

private:
    std::size_t limitOf(std::int32_t type) const;
    std::size_t &waitingOf(std::int32_t type);

    QueueLimits m_limits;
    std::deque<QueueItem> m_items;
    std::size_t m_waitingVideo = 0;
    std::size_t m_waitingAudio = 0;
    std::size_t m_waitingMetadata = 0;
    std::size_t m_waitingOther = 0;
    NDIlib_recv_performance_t m_total;
    NDIlib_recv_performance_t m_dropped;
};

} // namespace loopback
