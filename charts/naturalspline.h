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
    static std::optional<NaturalSpline> through(const std::vector<QPointF> &knots);

    /// Replaces the knots. Precondition: the first `kept` of them are those of the last call. Returns the
    /// first piece that changed: left of its knot at() is the same as before, bit by bit. A change of the last
    /// knots fades by half or more from knot to knot, by 2 - sqrt(3) = 0.27 where they are equally far apart,
    /// so it is lost in the last bit of a double after 53 knots at most and usually after some 28.
    std::size_t update(const std::vector<QPointF> &knots, std::size_t kept);
    /// True with more than two knots with strictly increasing x. at() needs it.
    bool isValid() const { return m_growing && m_knots.size() > 2; }
    /// y at x. Cheapest when x grows from call to call.
    double at(double x);
    double knotX(std::size_t index) const { return m_knots[index].x(); }

private:
    /// On piece i: y = ((cubic h + square) h + slope) h + knots[i].y, h = x - knots[i].x.
    /// upper and right: row i of the matrix after elimination, square[i] + upper square[i+1] = right.
    struct Piece {
        double cubic = 0.0;
        double square = 0.0;
        double slope = 0.0;
        double upper = 0.0;
        double right = 0.0;
    };
    std::vector<QPointF> m_knots;
    std::vector<Piece> m_pieces; ///< one for each knot; the last one is the straight continuation
    bool m_growing = true;       ///< x increases strictly
    std::size_t m_latest = 0;    ///< piece of the latest evaluation
};
