#include "charts/smoothcurve.h"

#include "charts/naturalspline.h"

#include <QLineF>
#include <QPainter>

#include <cmath>

XRange SmoothCurve::update(const PointSeries &points, const ChartGeometry &geometry)
{
    if (m_taken == points.size())
        return {};
    for (; m_taken < points.size(); ++m_taken)
        m_bins.add(geometry.map(points[m_taken]));

    // The whole curve follows from at most one knot for five pixels. A new point moves all of it, but the
    // effect fades to a quarter from knot to knot, so that some 200 pixels back it is below what a double
    // tells apart and the columns are the same, bit by bit.
    std::optional<NaturalSpline> spline;
    if (points.size() >= 3)
        spline = NaturalSpline::through(m_bins.knots());
    XRange changed;
    const auto drawnColumns = static_cast<int>(m_columnY.size());
    if (!spline) {
        if (drawnColumns > 0)
            changed = {static_cast<double>(geometry.plotLeft), static_cast<double>(geometry.plotLeft + drawnColumns)};
        m_columnY.clear();
        return changed;
    }

    const double end = std::min(std::trunc(m_bins.lastX() + 1.0), geometry.plotRight() + 1.0);
    const int columns = std::max(0, static_cast<int>(end) - geometry.plotLeft);
    m_firstX = m_bins.firstX();
    m_firstY = spline->at(m_firstX);
    m_columnY.resize(static_cast<std::size_t>(columns), std::nan(""));
    for (int column = 0; column < columns; ++column) {
        const double y = spline->at(geometry.plotLeft + column);
        double &drawn = m_columnY[static_cast<std::size_t>(column)];
        if (column < drawnColumns && y == drawn)
            continue;
        drawn = y;
        const double x = geometry.plotLeft + column;
        changed.unite({x - 1.0, x + 1.0});
    }
    for (int column = columns; column < drawnColumns; ++column)
        changed.unite({geometry.plotLeft + column - 1.0, geometry.plotLeft + column + 1.0});
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
    painter.setPen(QPen(color, 2.0));
    painter.drawLines(lines.data(), static_cast<int>(lines.size()));
}
