#include "loopback/picture.h"

#include "loopback/pixelwriter.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace loopback {
namespace {

constexpr Colour kBlack{16, 128, 128, 0, 0, 0};
constexpr Colour kWhite{235, 128, 128, 255, 255, 255};
constexpr std::array<Colour, 8> kBars{{{180, 128, 128, 191, 191, 191},
                                       {162, 44, 142, 191, 191, 0},
                                       {131, 156, 44, 0, 191, 191},
                                       {112, 72, 58, 0, 191, 0},
                                       {84, 184, 198, 191, 0, 191},
                                       {65, 100, 212, 191, 0, 0},
                                       {35, 212, 114, 0, 0, 191},
                                       {16, 128, 128, 0, 0, 0}}};

constexpr std::int64_t kGiantBytes = 64LL << 20; ///< above: one buffer for all frames
constexpr std::int64_t kMostBytes = 2LL << 30;   ///< above: no data
constexpr std::int64_t kSlackBytes = 64;         ///< for readers that take whole vectors

// the strip: marker, frame number, check; highest bit first
constexpr int kMarkerBits = 8;
constexpr int kNumberBits = 40;
constexpr int kCheckBits = 8;
constexpr int kCells = kMarkerBits + kNumberBits + kCheckBits;
constexpr std::uint64_t kMarker = 0xA5;
constexpr int kStripLines = 8;

// the digits: 5 x 7 dots in cells of 6 x 8
constexpr int kDigits = 8;
constexpr std::int32_t kLeastBlockHeight = 64; ///< in smaller pictures block and digits would meet
constexpr int kDotColumns = 5;
constexpr int kDotLines = 7;
constexpr std::array<std::array<std::uint8_t, kDotLines>, 10> kFont{{{0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E},
                                                                     {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
                                                                     {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F},
                                                                     {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
                                                                     {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02},
                                                                     {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
                                                                     {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E},
                                                                     {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
                                                                     {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E},
                                                                     {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}}};

std::int32_t cellWidth(const PictureLayout &layout)
{
    return std::min(layout.width / kCells & ~1, 16);
}

std::int32_t stripLines(const PictureLayout &layout)
{
    return std::min<std::int32_t>(layout.height, kStripLines);
}

std::uint64_t checkOf(std::uint64_t number)
{
    std::uint64_t check = 0x5A;
    for (int shift = 0; shift < kNumberBits; shift += 8)
        check ^= number >> static_cast<unsigned>(shift);
    return check & 0xFFU;
}

std::uint64_t stripOf(std::int64_t frame)
{
    const std::uint64_t number = static_cast<std::uint64_t>(frame) & ((std::uint64_t{1} << kNumberBits) - 1);
    return (kMarker << (kNumberBits + kCheckBits)) | (number << kCheckBits) | checkOf(number);
}

bool cellOf(std::uint64_t strip, int cell)
{
    return ((strip >> static_cast<unsigned>(kCells - 1 - cell)) & 1U) != 0;
}

/// Only the cells that differ from what is there.
void drawStrip(const PictureLayout &layout, std::uint8_t *pixels, std::int64_t frame, std::int64_t drawnFrame)
{
    const std::int32_t width = cellWidth(layout);
    const std::uint64_t strip = stripOf(frame);
    const std::uint64_t there = stripOf(drawnFrame);
    for (int cell = 0; cell < kCells && width > 0; ++cell) {
        if (drawnFrame >= 0 && cellOf(strip, cell) == cellOf(there, cell))
            continue;
        fillRectangle(layout, pixels, {cell * width, 0, width, stripLines(layout)},
                      cellOf(strip, cell) ? kWhite : kBlack);
    }
}

/// Size of a dot of the digits; 0 when the picture has no room for them.
std::int32_t dotSize(const PictureLayout &layout)
{
    const std::int32_t byHeight = layout.height / 180;
    const std::int32_t byWidth = layout.width / (kDigits * (kDotColumns + 1) * 2);
    const std::int32_t dot = std::max(std::min(byHeight, byWidth) & ~1, 2);
    const bool fits =
        layout.width >= kDigits * (kDotColumns + 1) * dot && layout.height >= 2 * kStripLines + (kDotLines + 1) * dot;
    return fits ? dot : 0;
}

Rectangle digitArea(const PictureLayout &layout, std::int32_t dot, int digit)
{
    const std::int32_t width = (kDotColumns + 1) * dot;
    const std::int32_t height = (kDotLines + 1) * dot;
    const std::int32_t left = (layout.width - kDigits * width) / 2 & ~1;
    const std::int32_t top = std::max((layout.height - height) / 2, 2 * kStripLines) & ~1;
    return {left + digit * width, top, width, height};
}

void drawDigits(const PictureLayout &layout, std::uint8_t *pixels, std::int64_t frame, std::int64_t drawnFrame)
{
    const std::int32_t dot = dotSize(layout);
    const std::int32_t margin = dot / 4 * 2;
    const bool fresh = drawnFrame < 0;
    for (int digit = kDigits - 1; digit >= 0 && dot > 0; --digit, frame /= 10, drawnFrame /= 10) {
        if (!fresh && frame % 10 == drawnFrame % 10)
            continue;
        const Rectangle area = digitArea(layout, dot, digit);
        fillRectangle(layout, pixels, area, kBlack);
        const auto &dots = kFont[static_cast<std::size_t>(frame % 10)];
        for (int line = 0; line < kDotLines; ++line) {
            for (int column = 0; column < kDotColumns; ++column) {
                const unsigned mask = 1U << static_cast<unsigned>(kDotColumns - 1 - column);
                if ((dots[static_cast<std::size_t>(line)] & mask) == 0)
                    continue;
                const std::int32_t x = area.x + margin + column * dot;
                const std::int32_t y = area.y + margin + line * dot;
                fillRectangle(layout, pixels, {x, y, dot, dot}, kWhite);
            }
        }
    }
}

std::int32_t barEdge(const PictureLayout &layout, std::size_t bar)
{
    return static_cast<std::int32_t>(std::int64_t{layout.width} * static_cast<std::int64_t>(bar)
                                     / static_cast<std::int64_t>(kBars.size()))
           & ~1;
}

/// The colour bars as they are under `area`.
void drawBars(const PictureLayout &layout, std::uint8_t *pixels, const Rectangle &area)
{
    for (std::size_t bar = 0; bar < kBars.size(); ++bar) {
        const std::int32_t left = std::max(area.x, barEdge(layout, bar));
        const std::int32_t barRight = bar + 1 == kBars.size() ? layout.width : barEdge(layout, bar + 1);
        const std::int32_t right = std::min(area.x + area.width, barRight);
        if (left < right)
            fillRectangle(layout, pixels, {left, area.y, right - left, area.height}, kBars[bar]);
    }
}

/// Where the wandering block is; it keeps clear of strip and digits.
Rectangle blockArea(const PictureLayout &layout, std::int64_t frame)
{
    const std::int32_t size = layout.height / 16 & ~1;
    const std::int32_t room = layout.width - size;
    if (layout.height < kLeastBlockHeight || room < 2)
        return {};
    const std::int32_t pace = std::max(layout.width / 240 & ~1, 2);
    const auto x = static_cast<std::int32_t>(frame % (room / pace)) * pace;
    return {x, layout.height / 4 * 3 & ~1, size, size};
}

} // namespace

PictureLayout layoutOf(const VideoFormat &format)
{
    PictureLayout layout;
    layout.fourCC = format.fourCC;
    const FormatFacts facts = factsOf(format.fourCC, std::max(format.width, 0));
    layout.strideBytes = format.stride != 0 ? format.stride : facts.naturalLineBytes;
    if (format.noData || format.width <= 0 || format.height <= 0)
        return layout;
    layout.width = format.width;
    layout.height = format.height;
    // room for a reader who takes the declared stride and for one who takes the natural line
    const std::int64_t line = std::max(std::abs(layout.strideBytes), facts.naturalLineBytes);
    const std::int64_t lines = (std::int64_t{format.height} + 1) * facts.quarterLinesPerLine / 4 + 1;
    if (line > kMostBytes / lines)
        return layout;
    const bool upwards = layout.strideBytes < 0;
    layout.sizeBytes = static_cast<std::size_t>(line * lines * (upwards ? 2 : 1) + kSlackBytes);
    layout.originBytes = upwards ? static_cast<std::size_t>(line * lines) : 0;
    layout.drawable =
        facts.known && std::abs(layout.strideBytes) >= facts.naturalLineBytes && !(upwards && facts.planar);
    layout.giant = static_cast<std::int64_t>(layout.sizeBytes) > kGiantBytes;
    return layout;
}

bool operator==(const PictureLayout &left, const PictureLayout &right)
{
    return left.width == right.width && left.height == right.height && left.fourCC == right.fourCC
           && left.strideBytes == right.strideBytes && left.sizeBytes == right.sizeBytes
           && left.originBytes == right.originBytes;
}

void drawFrame(const PictureLayout &layout, std::uint8_t *pixels, std::int64_t frame, bool moving, DrawnState &drawn)
{
    if (!layout.drawable)
        return;
    if (!drawn.background) {
        if (!layout.giant) { // a giant picture stays untouched memory but for what is drawn below
            drawBars(layout, pixels, {0, 0, layout.width, layout.height});
            fillAlphaPlane(layout, pixels);
        }
        drawn.background = true;
    } else if (moving && drawn.frame >= 0) {
        drawBars(layout, pixels, blockArea(layout, drawn.frame));
    }
    drawStrip(layout, pixels, frame, drawn.frame);
    drawDigits(layout, pixels, frame, drawn.frame);
    if (moving)
        fillRectangle(layout, pixels, blockArea(layout, frame), kWhite);
    drawn.frame = frame;
}

std::optional<std::int64_t> readFrameNumber(const PictureLayout &layout, const std::uint8_t *pixels)
{
    const std::int32_t width = cellWidth(layout);
    if (!layout.drawable || width <= 0 || pixels == nullptr)
        return std::nullopt;
    std::uint64_t strip = 0;
    for (int cell = 0; cell < kCells; ++cell) {
        const bool set = brightnessAt(layout, pixels, cell * width + width / 2, stripLines(layout) / 2) > 125;
        strip = (strip << 1U) | (set ? 1U : 0U);
    }
    const std::uint64_t number = (strip >> kCheckBits) & ((std::uint64_t{1} << kNumberBits) - 1);
    if (strip >> (kNumberBits + kCheckBits) != kMarker || (strip & 0xFFU) != checkOf(number))
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

} // namespace loopback
