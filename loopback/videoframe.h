#pragma once

#include "loopback/picture.h"
#include "ndi/nditypes.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

namespace loopback {

struct PixelsDeleter {
    void operator()(std::uint8_t *memory) const noexcept { std::free(memory); }
};

/// A frame with its pixels, shared by all receivers of its source without a copy. Not changed once
/// it was handed to a receiver.
struct VideoFrame {
    NDIlib_video_frame_v2_t header;
    std::int64_t number = 0;
    PictureLayout layout;
    std::unique_ptr<std::uint8_t, PixelsDeleter> own; ///< null with giant pictures and without data
    std::shared_ptr<std::uint8_t> giant;              ///< one for all frames of a giant picture
    DrawnState drawn;

    /// The picture's first line; null without data.
    std::uint8_t *pixels() const
    {
        std::uint8_t *memory = own ? own.get() : giant.get();
        return memory == nullptr ? nullptr : memory + layout.originBytes;
    }
};

/// The frames of one source. A frame comes back by itself when the last holder lets go of it and is
/// used again with what is already drawn in it. Any thread; may die before its frames.
class FramePool final {
public:
    FramePool();

    /// A frame of this layout; null when too much memory is out with receivers already.
    std::shared_ptr<VideoFrame> take(const PictureLayout &layout);

    /// Frames that exist, in use or not.
    std::size_t size() const;

private:
    struct State {
        mutable std::mutex mutex;
        std::vector<std::unique_ptr<VideoFrame>> idle; ///< last come, first out: still in the cache
        PictureLayout layout;                          ///< of all idle frames
        std::weak_ptr<std::uint8_t> giant;
        std::size_t count = 0;
        std::size_t bytes = 0; ///< of pixels in all frames
    };
    std::shared_ptr<State> m_state;
};

} // namespace loopback
