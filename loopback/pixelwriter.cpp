#include "loopback/pixelwriter.h"

#include "ndi/nditypes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace loopback {
namespace {

std::uint8_t *lineAt(const PictureLayout &layout, std::uint8_t *plane, std::int64_t line)
{
    return plane + layout.strideBytes * line;
}

/// Fills `count` groups of N bytes.
template <std::size_t N>
void fillGroups(std::uint8_t *to, std::int64_t count, const std::array<std::uint8_t, N> &group)
{
    for (std::int64_t i = 0; i < count; ++i)
        std::memcpy(to + i * static_cast<std::int64_t>(N), group.data(), N);
}

/// The same groups on several lines: drawn once, then copied.
template <std::size_t N>
void fillLines(std::uint8_t *first, std::int64_t stride, std::int64_t lines, std::int64_t count,
               const std::array<std::uint8_t, N> &group)
{
    if (lines <= 0 || count <= 0)
        return;
    fillGroups(first, count, group);
    for (std::int64_t line = 1; line < lines; ++line)
        std::memcpy(first + stride * line, first, static_cast<std::size_t>(count) * N);
}

/// Halves rounded up, for planes of colour at half size.
std::int64_t half(std::int64_t value)
{
    return (value + 1) / 2;
}

std::uint8_t *planeAfterLuma(const PictureLayout &layout, std::uint8_t *pixels)
{
    return lineAt(layout, pixels, layout.height);
}

void fillNv12(const PictureLayout &layout, std::uint8_t *pixels, const Rectangle &area, const Colour &c)
{
    fillLines<1>(lineAt(layout, pixels, area.y) + area.x, layout.strideBytes, area.height, area.width, {c.y});
    std::uint8_t *chroma = planeAfterLuma(layout, pixels);
    fillLines<2>(lineAt(layout, chroma, area.y / 2) + area.x, layout.strideBytes, half(area.height), area.width / 2,
                 {c.u, c.v});
}

void fillThreePlanes(const PictureLayout &layout, std::uint8_t *pixels, const Rectangle &area, const Colour &c)
{
    fillLines<1>(lineAt(layout, pixels, area.y) + area.x, layout.strideBytes, area.height, area.width, {c.y});
    const std::int64_t stride = layout.strideBytes / 2;
    const bool vFirst = layout.fourCC == static_cast<std::uint32_t>(NDIlib_FourCC_video_type_YV12);
    std::uint8_t *first = planeAfterLuma(layout, pixels);
    std::uint8_t *second = first + stride * half(layout.height);
    const std::int64_t offset = stride * (area.y / 2) + area.x / 2;
    fillLines<1>(first + offset, stride, half(area.height), area.width / 2, {vFirst ? c.v : c.u});
    fillLines<1>(second + offset, stride, half(area.height), area.width / 2, {vFirst ? c.u : c.v});
}

void fillP216(const PictureLayout &layout, std::uint8_t *pixels, const Rectangle &area, const Colour &c)
{
    fillLines<2>(lineAt(layout, pixels, area.y) + std::int64_t{area.x} * 2, layout.strideBytes, area.height, area.width,
                 {0, c.y});
    std::uint8_t *chroma = planeAfterLuma(layout, pixels);
    fillLines<4>(lineAt(layout, chroma, area.y) + std::int64_t{area.x} * 2, layout.strideBytes, area.height,
                 area.width / 2, {0, c.u, 0, c.v});
}

} // namespace

FormatFacts factsOf(std::uint32_t fourCC, std::int64_t width)
{
    switch (static_cast<NDIlib_FourCC_video_type_e>(fourCC)) {
    case NDIlib_FourCC_video_type_UYVY:
        return {half(width) * 4, 4, true, false};
    case NDIlib_FourCC_video_type_UYVA:
        return {half(width) * 4, 6, true, true};
    case NDIlib_FourCC_video_type_BGRA:
    case NDIlib_FourCC_video_type_BGRX:
    case NDIlib_FourCC_video_type_RGBA:
    case NDIlib_FourCC_video_type_RGBX:
        return {width * 4, 4, true, false};
    case NDIlib_FourCC_video_type_NV12:
    case NDIlib_FourCC_video_type_I420:
    case NDIlib_FourCC_video_type_YV12:
        return {half(width) * 2, 6, true, true};
    case NDIlib_FourCC_video_type_P216:
        return {half(width) * 4, 8, true, true};
    case NDIlib_FourCC_video_type_PA16:
        return {half(width) * 4, 12, true, true};
    }
    return {width * 4, 8, false, false}; // room for whatever a reader may take it for
}

void fillRectangle(const PictureLayout &layout, std::uint8_t *pixels, Rectangle area, const Colour &colour)
{
    const std::int32_t right = std::min(area.x + area.width, layout.width) & ~1;
    const std::int32_t bottom = std::min(area.y + area.height, layout.height);
    area.x = std::max(area.x, 0) & ~1;
    area.y = std::max(area.y, 0) & ~1;
    area.width = right - area.x;
    area.height = bottom - area.y;
    if (!layout.drawable || area.width <= 0 || area.height <= 0)
        return;
    switch (static_cast<NDIlib_FourCC_video_type_e>(layout.fourCC)) {
    case NDIlib_FourCC_video_type_UYVY:
    case NDIlib_FourCC_video_type_UYVA:
        fillLines<4>(lineAt(layout, pixels, area.y) + std::int64_t{area.x} * 2, layout.strideBytes, area.height,
                     area.width / 2, {colour.u, colour.y, colour.v, colour.y});
        break;
    case NDIlib_FourCC_video_type_BGRA:
    case NDIlib_FourCC_video_type_BGRX:
        fillLines<4>(lineAt(layout, pixels, area.y) + std::int64_t{area.x} * 4, layout.strideBytes, area.height,
                     area.width, {colour.b, colour.g, colour.r, 255});
        break;
    case NDIlib_FourCC_video_type_RGBA:
    case NDIlib_FourCC_video_type_RGBX:
        fillLines<4>(lineAt(layout, pixels, area.y) + std::int64_t{area.x} * 4, layout.strideBytes, area.height,
                     area.width, {colour.r, colour.g, colour.b, 255});
        break;
    case NDIlib_FourCC_video_type_NV12:
        fillNv12(layout, pixels, area, colour);
        break;
    case NDIlib_FourCC_video_type_I420:
    case NDIlib_FourCC_video_type_YV12:
        fillThreePlanes(layout, pixels, area, colour);
        break;
    case NDIlib_FourCC_video_type_P216:
    case NDIlib_FourCC_video_type_PA16:
        fillP216(layout, pixels, area, colour);
        break;
    }
}

void fillAlphaPlane(const PictureLayout &layout, std::uint8_t *pixels)
{
    const std::int64_t lines = layout.height;
    if (layout.fourCC == static_cast<std::uint32_t>(NDIlib_FourCC_video_type_UYVA))
        std::memset(lineAt(layout, pixels, lines), 255, static_cast<std::size_t>(layout.strideBytes / 2 * lines));
    else if (layout.fourCC == static_cast<std::uint32_t>(NDIlib_FourCC_video_type_PA16))
        std::memset(lineAt(layout, pixels, 2 * lines), 255, static_cast<std::size_t>(layout.strideBytes * lines));
}

std::uint8_t brightnessAt(const PictureLayout &layout, const std::uint8_t *pixels, std::int32_t x, std::int32_t y)
{
    const std::uint8_t *line = pixels + layout.strideBytes * y;
    switch (static_cast<NDIlib_FourCC_video_type_e>(layout.fourCC)) {
    case NDIlib_FourCC_video_type_UYVY:
    case NDIlib_FourCC_video_type_UYVA:
    case NDIlib_FourCC_video_type_P216:
    case NDIlib_FourCC_video_type_PA16:
        return line[std::int64_t{x} * 2 + 1];
    case NDIlib_FourCC_video_type_BGRA:
    case NDIlib_FourCC_video_type_BGRX:
    case NDIlib_FourCC_video_type_RGBA:
    case NDIlib_FourCC_video_type_RGBX:
        return line[std::int64_t{x} * 4 + 1];
    case NDIlib_FourCC_video_type_NV12:
    case NDIlib_FourCC_video_type_I420:
    case NDIlib_FourCC_video_type_YV12:
        return line[x];
    }
    return 0;
}

} // namespace loopback
