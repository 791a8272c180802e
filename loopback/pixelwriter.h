#pragma once

#include "loopback/picture.h"

#include <cstdint>

namespace loopback {

/// A colour in both models, eight bits each.
struct Colour {
    std::uint8_t y, u, v;
    std::uint8_t r, g, b;
};

struct Rectangle {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// Fills a rectangle in any format that layoutOf() calls drawable. It is cut to the picture and to
/// even coordinates, because formats share colour between neighbours.
void fillRectangle(const PictureLayout &layout, std::uint8_t *pixels, Rectangle area, const Colour &colour);

/// Makes a whole picture opaque where the format has an alpha plane.
void fillAlphaPlane(const PictureLayout &layout, std::uint8_t *pixels);

/// Brightness of a pixel, 0 to 255: luma, or green where there is none.
std::uint8_t brightnessAt(const PictureLayout &layout, const std::uint8_t *pixels, std::int32_t x, std::int32_t y);

/// Bytes of one line and of one whole picture with lines of `lineBytes`; 0 lines: unknown format.
struct FormatFacts {
    std::int64_t naturalLineBytes = 0;
    std::int32_t quarterLinesPerLine = 4; ///< all planes together, in quarters of the first plane's lines
    bool known = false;
    bool planar = false;
};
FormatFacts factsOf(std::uint32_t fourCC, std::int64_t width);

} // namespace loopback
