#pragma once

#include <QPointF>

#include <cstddef>
#include <optional>
#include <vector>

/// Natural cubic spline: the twice continuously differentiable curve through all knots whose second
/// derivative is 0 at both ends. Straight outside of the knots, with the slope that it has there.
/// The second-derivative coefficients come from the usual tridiagonal system, a band matrix solved by LU
/// decomposition without pivoting (it is diagonally dominant).
class NaturalSpline final {
public:
    /// Needs more than two knots with strictly increasing x; nothing otherwise.
    static std::optional<NaturalSpline> through(std::vector<QPointF> knots);

    /// y at x. Cheapest when x grows from call to call.
    double at(double x);

private:
    NaturalSpline() = default;
    /// On piece i: y = ((cubic h + square) h + slope) h + knots[i].y, h = x - knots[i].x.
    struct Piece {
        double cubic = 0.0;
        double square = 0.0;
        double slope = 0.0;
    };
    std::vector<QPointF> m_knots;
    std::vector<Piece> m_pieces; ///< one for each knot; the last one is the straight continuation
    std::size_t m_latest = 0;    ///< piece of the latest evaluation
};
