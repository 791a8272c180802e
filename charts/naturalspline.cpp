#include "charts/naturalspline.h"

#include <algorithm>

std::optional<NaturalSpline> NaturalSpline::through(const std::vector<QPointF> &knots)
{
    NaturalSpline spline;
    spline.update(knots, 0);
    return spline.isValid() ? std::optional(std::move(spline)) : std::nullopt;
}

std::size_t NaturalSpline::update(const std::vector<QPointF> &knots, std::size_t kept)
{
    const std::size_t solved = isValid() ? kept : 0; // rows from before
    const std::size_t count = knots.size();
    m_growing = kept == 0 || m_growing;
    for (std::size_t i = std::max<std::size_t>(kept, 1); i < count; ++i)
        m_growing = m_growing && knots[i].x() > knots[i - 1].x();
    m_knots.resize(kept);
    m_knots.insert(m_knots.end(), knots.begin() + static_cast<std::ptrdiff_t>(kept), knots.end());
    m_pieces.resize(count);
    m_latest = 0;
    if (!isValid())
        return 0;
    const std::vector<QPointF> &knot = m_knots;
    std::vector<Piece> &piece = m_pieces;

    // Row i: h[i-1]/3 b[i-1] + (h[i-1] + h[i]) 2/3 b[i] + h[i]/3 b[i+1] = slope right - slope left,
    // with b half the second derivative; the first and last row say b = 0. Each row looks one knot ahead.
    const std::size_t firstRow = solved > 2 ? solved - 1 : 1;
    for (std::size_t i = firstRow; i + 1 < count; ++i) {
        const double before = knot[i].x() - knot[i - 1].x();
        const double after = knot[i + 1].x() - knot[i].x();
        const double pivot = (before + after) * 2.0 / 3.0 - before / 3.0 * piece[i - 1].upper;
        const double bend = (knot[i + 1].y() - knot[i].y()) / after - (knot[i].y() - knot[i - 1].y()) / before;
        piece[i].upper = after / 3.0 / pivot;
        piece[i].right = (bend - before / 3.0 * piece[i - 1].right) / pivot;
    }
    piece[count - 1].square = 0.0;
    std::size_t changed = count - 1;
    while (changed > 0) {
        --changed;
        const double square =
            changed > 0 ? piece[changed].right - piece[changed].upper * piece[changed + 1].square : 0.0;
        if (changed < firstRow && square == piece[changed].square)
            break;
        piece[changed].square = square;
    }

    for (std::size_t i = changed; i + 1 < count; ++i) {
        const double step = knot[i + 1].x() - knot[i].x();
        piece[i].cubic = (piece[i + 1].square - piece[i].square) / 3.0 / step;
        piece[i].slope =
            (knot[i + 1].y() - knot[i].y()) / step - (2.0 * piece[i].square + piece[i + 1].square) * step / 3.0;
    }
    const double step = knot[count - 1].x() - knot[count - 2].x();
    const Piece &last = piece[count - 2];
    piece[count - 1].cubic = 0.0;
    piece[count - 1].slope = (3.0 * last.cubic * step + 2.0 * last.square) * step + last.slope;
    m_latest = changed;
    return changed;
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
