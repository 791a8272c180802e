#include "charts/smoothcurve.h"

#include "charts/segments.h"

#include <QLineF>
#include <QPainter>

#include <cmath>
#include <utility>

XRange SmoothCurve::update(const PointSeries &points, const ChartGeometry &geometry, double tolerance)
{
    const auto drawnColumns = static_cast<int>(m_columnY.size());
    if (m_taken == points.size() && (tolerance > 0.0 || m_inexact >= drawnColumns))
        return {};
    const std::size_t keptKnots = m_bins.knots().empty() ? 0 : m_bins.knots().size() - 1;
    for (; m_taken < points.size(); ++m_taken)
        m_bins.add(geometry.map(points[m_taken]));
    const std::size_t piece = m_spline.update(m_bins.knots(), keptKnots);

    const double left = geometry.plotLeft;
    int columns = 0;
    if (m_spline.isValid() && points.size() >= 3)
        columns = std::max(
            0, static_cast<int>(std::min(std::trunc(m_bins.lastX() + 1.0), geometry.plotRight() + 1.0) - left));
    XRange changed;
    if (columns < drawnColumns)
        changed = {left + columns - 1.0, left + drawnColumns};
    m_columnY.resize(static_cast<std::size_t>(columns), std::nan(""));
    if (columns == 0) {
        m_inexact = 0;
        return changed;
    }

    // New points move the curve from one piece on; columns left of its knot need no look.
    int from = piece > 0 ? static_cast<int>(std::floor(m_spline.knotX(piece) - left)) : 0;
    from = std::clamp(from, 0, drawnColumns);
    m_inexact = std::min(m_inexact, from);
    if (tolerance <= 0.0)
        from = std::exchange(m_inexact, columns);
    const auto moves = [&](double &drawn, double y) {
        if (std::abs(y - drawn) <= tolerance) // never of a new column, which is not a number
            return false;
        drawn = y;
        return true;
    };
    m_firstX = m_bins.firstX();
    if (from <= m_firstX - left && moves(m_firstY, m_spline.at(m_firstX)))
        changed.unite({m_firstX, m_firstX + 2.0});
    for (int column = from; column < columns; ++column) {
        if (moves(m_columnY[static_cast<std::size_t>(column)], m_spline.at(left + column)))
            changed.unite({left + column - 1.0, left + column + 1.0});
    }
    return changed;
}

void SmoothCurve::paint(QPainter &painter, XRange range, const ChartGeometry &geometry, const QColor &color) const
{
    if (m_columnY.empty() || range.isEmpty())
        return;
    constexpr double margin = 3.0; // half the pen, its cap, and the piece's own column
    const auto columns = static_cast<int>(m_columnY.size());
    const int firstPiece = std::max(0, static_cast<int>(std::floor(m_firstX)) + 2 - geometry.plotLeft);
    const double limit = columns;
    const int from = static_cast<int>(std::clamp(range.left - margin - geometry.plotLeft, 0.0, limit));
    const int to = static_cast<int>(std::clamp(range.right + margin - geometry.plotLeft, -1.0, limit - 1.0));
    const auto inPlot = [&](double y) { return y >= ChartGeometry::plotTop && y <= geometry.plotBottom(); };

    std::vector<QLineF> lines;
    for (int column = std::max(from, firstPiece); column <= to; ++column) {
        const double x = geometry.plotLeft + column;
        const QPointF end(x, m_columnY[static_cast<std::size_t>(column)]);
        const QPointF start = column == firstPiece ? QPointF(m_firstX, m_firstY)
                                                   : QPointF(x - 1.0, m_columnY[static_cast<std::size_t>(column - 1)]);
        if (inPlot(start.y()) && inPlot(end.y()))
            lines.emplace_back(start, end);
    }
    drawOpaqueLines(painter, QPen(color, 2.0), lines);
}
