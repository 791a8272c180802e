#include "loopback/receiver.h"

#include "loopback/deadcall.h"
#include "loopback/platform.h"

#include <algorithm>
#include <utility>

namespace loopback {

Receiver::Receiver(const Settings &settings, TruthLog &truth, std::unique_ptr<Feed> feed)
    : m_settings(settings), m_truth(truth), m_feed(std::move(feed)), m_queue(settings.limits)
{
}

void Receiver::deliver(const QueueItem &item, std::int64_t nowNs)
{
    if (nowNs < m_settings.joinNs || !isSubscribed(item.type))
        return;
    std::optional<QueueItem> lost;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_closed)
            return;
        lost = m_queue.push(item);
    }
    m_arrived.notify_one();
    if (lost && lost->type == NDIlib_frame_type_video)
        m_truth.write("drop", ordinal(), lost->number, "");
}

/// By the bandwidth that the receiver was made with.
bool Receiver::isSubscribed(std::int32_t type) const
{
    return (type != NDIlib_frame_type_video || m_settings.wantsVideo)
           && (type != NDIlib_frame_type_audio || m_settings.wantsAudio);
}

std::int32_t Receiver::capture(NDIlib_video_frame_v2_t *video, NDIlib_audio_frame_v2_t *audio,
                               NDIlib_metadata_frame_t *metadata, std::uint32_t timeoutMs)
{
    if (!m_asked.exchange(true, std::memory_order_relaxed))
        m_truth.write("ask", ordinal(), 0, "");
    const std::int64_t deadlineNs = steadyNowNs() + std::int64_t{timeoutMs} * 1'000'000;
    std::optional<QueueItem> item;
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        item = takeNext(lock, video != nullptr, audio != nullptr, metadata != nullptr, deadlineNs);
        if (!item) {
            if (m_closed) // destroyed while this call was waiting
                m_truth.write("dead", ordinal(), kDeadCapture, "capture");
            return NDIlib_frame_type_none;
        }
        if (item->type == NDIlib_frame_type_video) {
            *video = item->video->header;
            m_held.push_back({video->p_data, video->timecode, item->number, item->video});
        } else if (item->type == NDIlib_frame_type_audio) {
            *audio = item->audio;
            m_held.push_back({audio->p_data, audio->timecode, item->number, nullptr});
        } else if (item->type == NDIlib_frame_type_metadata) {
            *metadata = item->metadata;
        }
    }
    writeCapture(*item); // the last thing, so that its time is the time of the hand-over
    return item->type;
}

/// The next item the caller can take. Kinds that it does not ask for are thrown away, as the
/// runtime does.
std::optional<QueueItem> Receiver::takeNext(std::unique_lock<std::mutex> &lock, bool video, bool audio, bool metadata,
                                            std::int64_t deadlineNs)
{
    const auto wanted = [video, audio, metadata](const QueueItem &item) {
        return (video || item.type != NDIlib_frame_type_video) && (audio || item.type != NDIlib_frame_type_audio)
               && (metadata || item.type != NDIlib_frame_type_metadata);
    };
    while (!m_closed) {
        if (m_feed) {
            std::optional<QueueItem> made = m_feed->next();
            if (made && isSubscribed(made->type))
                m_queue.push(std::move(*made));
        }
        while (std::optional<QueueItem> item = m_queue.pop()) {
            if (wanted(*item))
                return item;
        }
        const std::int64_t nowNs = steadyNowNs();
        if (nowNs >= deadlineNs)
            return std::nullopt;
        // a feed has no one to wake this call, and may have been out of memory for a moment only
        waitUntilNs(m_arrived, lock, m_feed ? std::min(deadlineNs, nowNs + 1'000'000) : deadlineNs);
    }
    return std::nullopt;
}

void Receiver::writeCapture(const QueueItem &item) noexcept
{
    switch (item.type) {
    case NDIlib_frame_type_video:
        m_truth.writeSize("video", ordinal(), item.number, item.video->header.xres, item.video->header.yres);
        break;
    case NDIlib_frame_type_audio:
        m_truth.write("audio", ordinal(), item.number, item.audio.no_samples);
        break;
    case NDIlib_frame_type_metadata:
        m_truth.write("metadata", ordinal(), item.metadata.length, "");
        break;
    case NDIlib_frame_type_error:
        m_truth.write("error", ordinal(), 0, "");
        break;
    case NDIlib_frame_type_status_change:
        m_truth.write("status", ordinal(), 0, "");
        break;
    default:
        m_truth.write("unknown", ordinal(), item.type, "");
        break;
    }
}

void Receiver::freeVideo(const NDIlib_video_frame_v2_t *frame)
{
    const std::optional<Held> held = frame == nullptr ? std::nullopt : letGo(frame->p_data, frame->timecode, true);
    m_truth.write(held ? "free" : "refree", ordinal(), held ? held->number : -1, held ? "" : "video");
}

void Receiver::freeAudio(const NDIlib_audio_frame_v2_t *frame)
{
    const std::optional<Held> held = frame == nullptr ? std::nullopt : letGo(frame->p_data, frame->timecode, false);
    m_truth.write(held ? "afree" : "refree", ordinal(), held ? held->number : -1, held ? "" : "audio");
}

/// The pixels of a frame freed too early may belong to a newer one, so the timecode must fit too,
/// unless the caller gives a structure that was never filled.
std::optional<Receiver::Held> Receiver::letGo(const void *data, std::int64_t timecode, bool video)
{
    const bool anyTime = timecode == NDIlib_send_timecode_synthesize;
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto found = std::find_if(m_held.begin(), m_held.end(), [=](const Held &held) {
        return (held.video != nullptr) == video && held.data == data && held.timecode == timecode;
    });
    if (found == m_held.end() && anyTime)
        found = std::find_if(m_held.begin(), m_held.end(),
                             [=](const Held &held) { return (held.video != nullptr) == video && held.data == data; });
    if (found == m_held.end())
        return std::nullopt;
    std::optional<Held> held(std::move(*found));
    m_held.erase(found);
    return held;
}

void Receiver::performance(NDIlib_recv_performance_t *total, NDIlib_recv_performance_t *dropped)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (total != nullptr)
        *total = m_queue.total();
    if (dropped != nullptr)
        *dropped = m_queue.dropped();
}

std::int64_t Receiver::close()
{
    std::int64_t unfreed = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
        unfreed = std::count_if(m_held.begin(), m_held.end(), [](const Held &held) { return held.video != nullptr; });
        m_held.clear();
        m_queue.clear();
    }
    m_arrived.notify_all();
    return unfreed;
}

} // namespace loopback
