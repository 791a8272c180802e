#pragma once

#include "loopback/receiverqueue.h"
#include "loopback/truthlog.h"
#include "ndi/nditypes.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace loopback {

/// Makes frames one by one at the moment they are asked for. Used under its receiver's lock.
class Feed {
public:
    Feed() = default;
    virtual ~Feed() = default;
    Feed(const Feed &) = delete;
    Feed &operator=(const Feed &) = delete;
    /// The next item; nullopt when there is none or no memory for it just now: asking again does no harm.
    virtual std::optional<QueueItem> next() = 0;
};

/// The receiving end of one program-side receiver: queue, waiting and the account of what the
/// program holds and has given back. Any thread.
class Receiver final {
public:
    struct Settings {
        int ordinal = 0;         ///< order of creation in the process
        std::int64_t joinNs = 0; ///< steady clock; nothing reaches it before
        bool wantsVideo = true;
        bool wantsAudio = true;
        QueueLimits limits;
    };

    /// `truth` must outlive it. With a feed nothing is ever delivered: captures pull instead.
    Receiver(const Settings &settings, TruthLog &truth, std::unique_ptr<Feed> feed);

    int ordinal() const { return m_settings.ordinal; }

    /// From the source; nowNs is the steady clock's time of the delivery.
    void deliver(const QueueItem &item, std::int64_t nowNs);

    std::int32_t capture(NDIlib_video_frame_v2_t *video, NDIlib_audio_frame_v2_t *audio,
                         NDIlib_metadata_frame_t *metadata, std::uint32_t timeoutMs);
    void freeVideo(const NDIlib_video_frame_v2_t *frame);
    void freeAudio(const NDIlib_audio_frame_v2_t *frame);
    void performance(NDIlib_recv_performance_t *total, NDIlib_recv_performance_t *dropped);

    /// Ends waiting captures and lets go of everything; returns the video frames never freed.
    std::int64_t close();

private:
    /// Something that the program has captured and not freed yet.
    struct Held {
        const void *data = nullptr;
        std::int64_t timecode = 0;
        std::int64_t number = 0;
        std::shared_ptr<const VideoFrame> video; ///< null: audio
    };

    bool isSubscribed(std::int32_t type) const;
    std::optional<QueueItem> takeNext(std::unique_lock<std::mutex> &lock, bool video, bool audio, bool metadata,
                                      std::int64_t deadlineNs);
    std::optional<Held> letGo(const void *data, std::int64_t timecode, bool video);
    void writeCapture(const QueueItem &item) noexcept;

    const Settings m_settings;
    TruthLog &m_truth;
    std::atomic<bool> m_asked{false}; ///< a capture was begun
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    // all below guarded by m_mutex
    std::unique_ptr<Feed> m_feed;
    ReceiverQueue m_queue;
    std::vector<Held> m_held;
    bool m_closed = false;
};

} // namespace loopback
