#pragma once

#include "charts/chartgeometry.h"
#include "charts/columnbins.h"
#include "charts/pointseries.h"
#include "charts/xrange.h"

#include <QColor>

#include <vector>

class QPainter;

/// The smooth drawing of one list of points: its averages over columns, joined by a natural spline and
/// kept as one y for each pixel column of the plot. Each point is looked at once as long as the geometry stays.
class SmoothCurve final {
public:
    /// Forgets everything; the next update() begins with the first point.
    void restart() { *this = SmoothCurve(); }

    /// Takes the points that were appended since the last call and returns where the curve changed.
    XRange update(const PointSeries &points, const ChartGeometry &geometry);

    /// Draws the pieces that touch the range. Only within the plot's height.
    void paint(QPainter &painter, XRange range, const ChartGeometry &geometry, const QColor &color) const;

private:
    ColumnBins m_bins;
    std::size_t m_taken = 0;       ///< points in the bins
    std::vector<double> m_columnY; ///< y at plotLeft, plotLeft + 1, ...
    double m_firstX = 0.0;         ///< where the curve begins
    double m_firstY = 0.0;
};
