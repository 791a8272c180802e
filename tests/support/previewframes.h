#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

/// One colour as a frame carries it.
struct YuvColour {
    int y = 16;
    int u = 128;
    int v = 128;
};

/// What the preview must show for it, computed here from its formula and nothing else.
QColor shownColour(const YuvColour &colour);

/// A picture of one stripe across the top quarter and upright bars of equal width below.
struct BarPicture {
    int width = 0;
    int height = 0;
    YuvColour stripe;
    std::vector<YuvColour> bars;

    int stripeRows() const { return height / 4; }
    /// Colour of a place, 0 to 1 in both directions.
    YuvColour at(double x, double y) const;
    /// Its frame, from new[], as a receiver would send it. The test program counts its release.
    uint8_t *makeFrame() const;
};

/// The eight bars of test generators, left to right; the loopback's picture has them, too.
extern const std::array<YuvColour, 8> barColours;

/// Eight bars as test generators make them, under a light stripe.
BarPicture colourBars(int width, int height);
/// A picture in one colour.
BarPicture plainPicture(int width, int height, const YuvColour &colour);

/// Frames made by makeFrame() that nobody has released yet.
int framesAlive();

/// Empty when `image` shows the picture, scaled to the whole of it: every pixel is within `tolerance`
/// of 255 in each channel, but for those within six pixels of an edge in the picture (more where it is
/// enlarged) and two of its rim. Else what is wrong first.
QString differenceFrom(const BarPicture &picture, const QImage &image, int tolerance);
