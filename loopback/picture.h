#pragma once

#include "loopback/scenario.h"

#include <cstddef>
#include <cstdint>
#include <optional>

/// The moving test picture: colour bars, a block that wanders, the frame's number in digits and,
/// in the top lines, the same number as black and white cells that a test can read back.
namespace loopback {

/// Where the pixels of a format lie. Made by layoutOf().
struct PictureLayout {
    std::int32_t width = 0; ///< pixels; 0 when there is nothing to draw
    std::int32_t height = 0;
    std::uint32_t fourCC = 0;
    std::int64_t strideBytes = 0; ///< as frames declare it; negative: lines go upwards in memory
    std::size_t sizeBytes = 0;    ///< of the allocation; 0: no data
    std::size_t originBytes = 0;  ///< of the first line in the allocation
    bool drawable = false;        ///< the format is known and the lines fit one after another
    bool giant = false;           ///< too big for a buffer per frame
};

/// Never fails: what is too big or empty has no data, what cannot be drawn stays blank.
PictureLayout layoutOf(const VideoFormat &format);

bool operator==(const PictureLayout &left, const PictureLayout &right);
inline bool operator!=(const PictureLayout &left, const PictureLayout &right)
{
    return !(left == right);
}

/// What of a picture is already in a buffer, so that a frame costs only what changed.
struct DrawnState {
    bool background = false;
    std::int64_t frame = -1; ///< number whose digits and block are there; -1: none
};

/// Draws frame number `frame` into `pixels` (first line of the picture). With `moving` false only
/// the number is drawn, not the block.
void drawFrame(const PictureLayout &layout, std::uint8_t *pixels, std::int64_t frame, bool moving, DrawnState &drawn);

/// The frame number in the cells of the top lines; nullopt when there is none to be read.
std::optional<std::int64_t> readFrameNumber(const PictureLayout &layout, const std::uint8_t *pixels);

} // namespace loopback
