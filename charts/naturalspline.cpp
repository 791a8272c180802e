#include "charts/naturalspline.h"

#include <algorithm>
#include <utility>

std::optional<NaturalSpline> NaturalSpline::through(std::vector<QPointF> knots)
{
    const std::size_t count = knots.size();
    if (count <= 2)
        return std::nullopt;
    for (std::size_t i = 1; i < count; ++i) {
        if (!(knots[i].x() > knots[i - 1].x()))
            return std::nullopt;
    }

    NaturalSpline spline;
    spline.m_knots = std::move(knots);
    spline.m_pieces.resize(count);
    const std::vector<QPointF> &knot = spline.m_knots;
    std::vector<Piece> &piece = spline.m_pieces;

    // Row i: h[i-1]/3 b[i-1] + (h[i-1] + h[i]) 2/3 b[i] + h[i]/3 b[i+1] = slope right - slope left,
    // with b half the second derivative; the first and last row say b = 0.
    std::vector<double> upper(count, 0.0);
    std::vector<double> right(count, 0.0);
    for (std::size_t i = 1; i + 1 < count; ++i) {
        const double before = knot[i].x() - knot[i - 1].x();
        const double after = knot[i + 1].x() - knot[i].x();
        const double pivot = (before + after) * 2.0 / 3.0 - before / 3.0 * upper[i - 1];
        const double bend = (knot[i + 1].y() - knot[i].y()) / after - (knot[i].y() - knot[i - 1].y()) / before;
        upper[i] = after / 3.0 / pivot;
        right[i] = (bend - before / 3.0 * right[i - 1]) / pivot;
    }
    for (std::size_t i = count - 2; i > 0; --i)
        piece[i].square = right[i] - upper[i] * piece[i + 1].square;

    for (std::size_t i = 0; i + 1 < count; ++i) {
        const double step = knot[i + 1].x() - knot[i].x();
        piece[i].cubic = (piece[i + 1].square - piece[i].square) / 3.0 / step;
        piece[i].slope =
            (knot[i + 1].y() - knot[i].y()) / step - (2.0 * piece[i].square + piece[i + 1].square) * step / 3.0;
    }
    const double step = knot[count - 1].x() - knot[count - 2].x();
    const Piece &last = piece[count - 2];
    piece[count - 1].slope = (3.0 * last.cubic * step + 2.0 * last.square) * step + last.slope;
    return spline;
}

double NaturalSpline::at(double x)
{
    const std::size_t last = m_knots.size() - 1;
    if (x < m_knots[m_latest].x()) {
        const auto after = std::upper_bound(m_knots.begin(), m_knots.end(), x,
                                            [](double value, const QPointF &knot) { return value < knot.x(); });
        m_latest = after == m_knots.begin() ? 0 : static_cast<std::size_t>(after - m_knots.begin()) - 1;
    }
    while (m_latest < last && x >= m_knots[m_latest + 1].x())
        ++m_latest;

    const QPointF &knot = m_knots[m_latest];
    const Piece &piece = m_pieces[m_latest];
    const double h = x - knot.x();
    if (h < 0.0) // left of the first knot
        return (piece.square * h + piece.slope) * h + knot.y();
    return ((piece.cubic * h + piece.square) * h + piece.slope) * h + knot.y();
}
