#include "charts/cursorpick.h"

#include "charts/segments.h"

#include <cmath>

namespace {

constexpr int pickWindowMs = 100;

class Pick {
public:
    explicit Pick(int cursorMs) : m_cursorMs(cursorMs), m_window(cursorMs / pickWindowMs) {}

    void offer(double timeMs, double value)
    {
        // The comparison in doubles is the one of the integer parts: the cursor's window begins at 0 or later.
        if (std::trunc(timeMs / pickWindowMs) != m_window || !std::isfinite(value))
            return;
        const double distance = std::abs(timeMs - m_cursorMs);
        if (distance < m_nearest) {
            m_nearest = distance;
            m_value = value;
        }
    }
    std::optional<double> value() const { return m_value; }

private:
    int m_cursorMs;
    int m_window; ///< which tenth of a second
    double m_nearest = 100000000.0;
    std::optional<double> m_value;
};

} // namespace

std::optional<double> pickValue(const PointSeries &points, int cursorMs, double axisMs)
{
    if (points.size() < 2 || cursorMs < 0)
        return std::nullopt;

    const std::size_t lastPair = points.size() - 2;
    std::size_t from = 0;
    std::size_t to = lastPair;
    if (points.isAscending()) {
        // One point more on each side: a cut time can bring a neighbour into the window.
        const double windowMs = cursorMs - cursorMs % pickWindowMs;
        const double leftMs = windowMs > 0.0 ? windowMs : -pickWindowMs;
        const std::size_t first = points.firstFrom(leftMs);
        from = first > 0 ? first - 1 : 0;
        to = std::min(lastPair, points.firstFrom(windowMs + pickWindowMs));
    }

    Pick pick(cursorMs);
    for (std::size_t k = from; k <= to; ++k) {
        const std::optional<QLineF> segment = cutAtAxisEnd(points[k], points[k + 1], axisMs); // as it is drawn
        if (!segment)
            continue;
        pick.offer(segment->x1(), segment->y1());
        if (k == lastPair)
            pick.offer(segment->x2(), segment->y2());
    }
    return pick.value();
}
