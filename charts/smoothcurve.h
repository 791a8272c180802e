#pragma once

#include "charts/chartgeometry.h"
#include "charts/columnbins.h"
#include "charts/naturalspline.h"
#include "charts/pointseries.h"
#include "charts/xrange.h"

#include <QColor>

#include <limits>
#include <vector>

class QPainter;

/// The smooth drawing of one list of points: its averages over columns, joined by a natural spline and
/// kept as one y for each pixel column of the plot. Each point is looked at once as long as the geometry stays.
class SmoothCurve final {
public:
    /// Takes the points that were appended since the last call and returns where the curve changed.
    /// tolerance: columns that are less than this far (in logical pixels) from where they should be stay as
    /// they are drawn, until a call with a smaller one. With 0 every column is exact.
    XRange update(const PointSeries &points, const ChartGeometry &geometry, double tolerance);

    /// Draws the pieces that touch the range. Only within the plot's height.
    void paint(QPainter &painter, XRange range, const ChartGeometry &geometry, const QColor &color) const;

private:
    ColumnBins m_bins;
    NaturalSpline m_spline;                                     ///< through the bins' knots
    std::size_t m_taken = 0;                                    ///< points in the bins
    std::vector<double> m_columnY;                              ///< as drawn, y at plotLeft, plotLeft + 1, ...
    int m_inexact = 0;                                          ///< all columns left of this one are exact
    double m_firstX = 0.0;                                      ///< where the curve begins
    double m_firstY = std::numeric_limits<double>::quiet_NaN(); ///< as drawn
};
