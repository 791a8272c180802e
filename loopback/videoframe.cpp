#include "loopback/videoframe.h"

#include <utility>

namespace loopback {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 30; ///< out with receivers that never free
constexpr std::size_t kMostFrames = 4096;
constexpr std::size_t kMostIdleFrames = 2; ///< one handed over and one drawn ahead; a late receiver needs more

/// Zeroed; big pieces come as untouched pages that cost nothing until they are drawn on.
std::uint8_t *allocate(std::size_t bytes)
{
    return static_cast<std::uint8_t *>(std::calloc(bytes, 1));
}

} // namespace

FramePool::FramePool() : m_state(std::make_shared<State>()) {}

std::shared_ptr<VideoFrame> FramePool::take(const PictureLayout &layout)
{
    std::unique_ptr<VideoFrame> frame;
    {
        const std::lock_guard<std::mutex> lock(m_state->mutex);
        State &state = *m_state;
        if (state.layout != layout) {
            for (const auto &old : state.idle)
                state.bytes -= old->own ? old->layout.sizeBytes : 0;
            state.count -= state.idle.size();
            state.idle.clear();
            state.giant.reset();
            state.layout = layout;
        }
        if (!state.idle.empty()) {
            frame = std::move(state.idle.back());
            state.idle.pop_back();
        } else {
            const bool ownPixels = layout.sizeBytes > 0 && !layout.giant;
            const std::size_t bytes = ownPixels ? layout.sizeBytes : 0;
            if (state.bytes + bytes > kMostBytes || state.count >= kMostFrames)
                return nullptr;
            frame = std::make_unique<VideoFrame>();
            frame->layout = layout;
            if (ownPixels)
                frame->own.reset(allocate(bytes));
            if (layout.giant) {
                frame->giant = state.giant.lock();
                if (!frame->giant) {
                    frame->giant = std::shared_ptr<std::uint8_t>(allocate(layout.sizeBytes), PixelsDeleter());
                    state.giant = frame->giant;
                    if (frame->giant) // drawn here once, as all later frames share it
                        drawFrame(layout, frame->pixels(), 0, false, frame->drawn);
                }
            }
            ++state.count;
            state.bytes += bytes;
        }
    }
    return {frame.release(), [state = m_state](VideoFrame *back) {
                std::unique_ptr<VideoFrame> owned(back);
                const std::lock_guard<std::mutex> lock(state->mutex);
                if (state->layout == owned->layout && state->idle.size() < kMostIdleFrames) {
                    state->idle.push_back(std::move(owned));
                } else {
                    --state->count;
                    state->bytes -= owned->own ? owned->layout.sizeBytes : 0;
                }
            }};
}

std::size_t FramePool::size() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->count;
}

} // namespace loopback
