#include "tests/support/previewframes.h"

#include "charts/previewscaler.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>

namespace {

std::array<std::atomic<void *>, 256> watched{};

void watch(void *frame)
{
    for (std::atomic<void *> &place : watched) {
        void *nothing = nullptr;
        if (place.compare_exchange_strong(nothing, frame))
            return;
    }
    std::abort();
}

void noticeRelease(void *memory)
{
    for (std::atomic<void *> &place : watched) {
        void *frame = memory;
        if (place.compare_exchange_strong(frame, nullptr))
            return;
    }
}

int toByte(double value)
{
    return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

bool isNearEdge(const BarPicture &picture, const QSize &size, int x, int y)
{
    constexpr int rim = 2; // textures repeat: these mix with the colours of the other side
    // Colours have half the places of the brightness, in the frame and in what is shown.
    const double reach = 6.0 * std::max(1.0, double(size.width()) / picture.width);
    if (x < rim || y < rim || x >= size.width() - rim || y >= size.height() - rim)
        return true;
    const double centreX = (x + 0.5) / size.width();
    const double centreY = (y + 0.5) / size.height();
    const double stripeEdge = double(picture.stripeRows()) / picture.height;
    if (std::abs(centreY - stripeEdge) * size.height() < reach)
        return true;
    const auto bars = double(picture.bars.size());
    const double nearestEdge = std::round(centreX * bars) / bars;
    return centreY > stripeEdge && nearestEdge > 0.0 && nearestEdge < 1.0
           && std::abs(centreX - nearestEdge) * size.width() < reach;
}

} // namespace

// The release of a frame is an ordinary delete[], whoever does it; here it is seen.
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    return std::malloc(size > 0 ? size : 1);
}

void *operator new[](std::size_t size)
{
    if (void *const memory = operator new[](size, std::nothrow))
        return memory;
    throw std::bad_alloc();
}

void operator delete[](void *memory) noexcept
{
    if (memory)
        noticeRelease(memory);
    std::free(memory);
}

void operator delete[](void *memory, std::size_t) noexcept
{
    operator delete[](memory);
}

QColor shownColour(const YuvColour &colour)
{
    const double y = colour.y / 255.0;
    const double u = colour.u / 255.0 - 0.5;
    const double v = colour.v / 255.0 - 0.5;
    return {toByte(y + 1.13983 * v), toByte(y - 0.39465 * u - 0.58060 * v), toByte(y + 2.03211 * u)};
}

YuvColour BarPicture::at(double x, double y) const
{
    if (y * height < stripeRows())
        return stripe;
    const auto bar = static_cast<std::size_t>(x * double(bars.size()));
    return bars.at(std::min(bar, bars.size() - 1));
}

uint8_t *BarPicture::makeFrame() const
{
    const std::size_t rowBytes = std::size_t(width) * 2;
    auto *const frame = new uint8_t[rowBytes * std::size_t(height) + PreviewScaler::frameTailBytes]();
    for (int row = 0; row < height; ++row) {
        uint8_t *const line = frame + rowBytes * std::size_t(row);
        for (int column = 0; column < width; ++column) {
            const YuvColour colour = at((column + 0.5) / width, (row + 0.5) / height);
            uint8_t *const pixel = line + std::size_t(column) * 2;
            pixel[0] = static_cast<uint8_t>(column % 2 == 0 ? colour.u : colour.v);
            pixel[1] = static_cast<uint8_t>(colour.y);
        }
    }
    watch(frame);
    return frame;
}

const std::array<YuvColour, 8> barColours{{{180, 128, 128},
                                           {162, 44, 142},
                                           {131, 156, 44},
                                           {112, 72, 58},
                                           {84, 184, 198},
                                           {65, 100, 212},
                                           {35, 212, 114},
                                           {16, 128, 128}}};

BarPicture colourBars(int width, int height)
{
    return {width, height, {210, 128, 128}, {barColours.begin(), barColours.end()}};
}

BarPicture plainPicture(int width, int height, const YuvColour &colour)
{
    return {width, height, colour, {colour}};
}

int framesAlive()
{
    return static_cast<int>(std::count_if(watched.cbegin(), watched.cend(),
                                          [](const std::atomic<void *> &place) { return place != nullptr; }));
}

QString differenceFrom(const BarPicture &picture, const QImage &image, int tolerance)
{
    int checked = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (isNearEdge(picture, image.size(), x, y))
                continue;
            ++checked;
            const QColor expected = shownColour(picture.at((x + 0.5) / image.width(), (y + 0.5) / image.height()));
            const QColor shown = image.pixelColor(x, y);
            const int worst =
                std::max({std::abs(expected.red() - shown.red()), std::abs(expected.green() - shown.green()),
                          std::abs(expected.blue() - shown.blue())});
            if (worst > tolerance) {
                return QStringLiteral("%1, %2 is %3 instead of %4")
                    .arg(QString::number(x), QString::number(y), shown.name(), expected.name());
            }
        }
    }
    const bool enough = 3 * checked > image.width() * image.height();
    return enough ? QString() : QStringLiteral("only %1 pixels could be compared").arg(checked);
}
