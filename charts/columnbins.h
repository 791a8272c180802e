#pragma once

#include <QPointF>

#include <vector>

/// Averages a mapped series over columns of five pixels, point by point: the knots of the smooth curve.
/// The first knot stands at x = 0, whatever the first point's column is: the first bin holds exactly the
/// first point unless that lies in the first five pixels of the widget.
class ColumnBins final {
public:
    static constexpr int columnWidth = 5;

    /// Takes the next point of the series, in pixels. Moves the last knot up or down or appends one; skips
    /// points that are not finite.
    void add(QPointF pixel);
    /// One knot for each bin; empty before the first point. x in the order in which the bins began.
    const std::vector<QPointF> &knots() const { return m_knots; }

    double firstX() const { return m_firstX; } ///< pixel x of the first point taken
    double lastX() const { return m_lastX; }   ///< pixel x of the last point taken

private:
    std::vector<QPointF> m_knots;
    int m_start = 0; ///< pixel column in which the last bin began
    double m_sum = 0.0;
    int m_count = 0;
    double m_firstX = 0.0;
    double m_lastX = 0.0;
};
