#pragma once

#include "charts/chartgeometry.h"
#include "charts/pointseries.h"

#include <QColor>
#include <QLineF>
#include <QPen>

#include <optional>
#include <vector>

class QPainter;

/// Draws lines in an opaque colour on an image, in the normal composition mode.
void drawOpaqueLines(QPainter &painter, QPen pen, const std::vector<QLineF> &lines);

/// A pair of neighbouring samples after the cut at the end of the axis: times beyond it become the end.
/// Empty when both lie beyond it.
std::optional<QLineF> cutAtAxisEnd(QPointF first, QPointF second, double axisMs);

/// The three lists of a band series, of equal sizes while it is drawn.
struct BandPoints {
    const PointSeries &minimum;
    const PointSeries &average;
    const PointSeries &maximum;
};

/// Draws the pairs first .. end - 1 of a plain series (pair k joins points k and k + 1): below each segment
/// a translucent area down to the plot's bottom, on it the segment. The picture is that of drawing pair after
/// pair; areas that reach no pixel's middle are left out, the others are filled in as few polygons as
/// possible, and segments within one column of pixels are joined. first < end. pixelRatio: device pixels per logical
/// pixel of the painter, which is not antialiased.
void paintPlainSegments(QPainter &painter, const PointSeries &points, std::size_t first, std::size_t end,
                        const ChartGeometry &geometry, const QColor &color, double pixelRatio);

/// The same for a band series: areas between average and maximum and between average and minimum,
/// the average two pixels wide in the series' colour, maximum red, minimum blue.
void paintBandSegments(QPainter &painter, const BandPoints &band, std::size_t first, std::size_t end,
                       const ChartGeometry &geometry, const QColor &color, double pixelRatio);
