#include "loopback/receiverqueue.h"

#include <algorithm>
#include <utility>

namespace loopback {
namespace {

/// Items of one class share a limit: all that carry nothing count as one class.
bool sameClass(std::int32_t left, std::int32_t right)
{
    const auto classOf = [](std::int32_t type) {
        return type >= NDIlib_frame_type_video && type <= NDIlib_frame_type_metadata ? type : 0;
    };
    return classOf(left) == classOf(right);
}

void count(NDIlib_recv_performance_t &performance, std::int32_t type)
{
    if (type == NDIlib_frame_type_video)
        ++performance.video_frames;
    else if (type == NDIlib_frame_type_audio)
        ++performance.audio_frames;
    else if (type == NDIlib_frame_type_metadata)
        ++performance.metadata_frames;
}

} // namespace

std::optional<QueueItem> ReceiverQueue::push(QueueItem item)
{
    std::optional<QueueItem> lost;
    std::size_t &waiting = waitingOf(item.type);
    if (waiting >= limitOf(item.type)) {
        const auto oldest = std::find_if(m_items.begin(), m_items.end(), [&item](const QueueItem &candidate) {
            return sameClass(candidate.type, item.type);
        });
        lost = std::move(*oldest);
        m_items.erase(oldest);
        --waiting;
        count(m_dropped, lost->type);
    }
    count(m_total, item.type);
    ++waiting;
    m_items.push_back(std::move(item));
    return lost;
}

std::optional<QueueItem> ReceiverQueue::pop()
{
    if (m_items.empty())
        return std::nullopt;
    std::optional<QueueItem> item(std::move(m_items.front()));
    m_items.pop_front();
    --waitingOf(item->type);
    return item;
}

void ReceiverQueue::clear()
{
    m_items.clear();
    m_waitingVideo = m_waitingAudio = m_waitingMetadata = m_waitingOther = 0;
}

std::size_t ReceiverQueue::limitOf(std::int32_t type) const
{
    if (type == NDIlib_frame_type_video)
        return m_limits.video;
    return type == NDIlib_frame_type_audio ? m_limits.audio : m_limits.other;
}

std::size_t &ReceiverQueue::waitingOf(std::int32_t type)
{
    if (type == NDIlib_frame_type_video)
        return m_waitingVideo;
    if (type == NDIlib_frame_type_audio)
        return m_waitingAudio;
    return type == NDIlib_frame_type_metadata ? m_waitingMetadata : m_waitingOther;
}

} // namespace loopback
