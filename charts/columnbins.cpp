#include "charts/columnbins.h"

#include <cmath>
#include <limits>

void ColumnBins::add(QPointF pixel)
{
    constexpr double mostColumns = std::numeric_limits<int>::max();
    if (!std::isfinite(pixel.y()) || !(std::abs(pixel.x()) < mostColumns))
        return;
    const int column = static_cast<int>(pixel.x());
    if (m_knots.empty()) {
        m_firstX = pixel.x();
        m_knots.emplace_back(m_start, 0.0);
    }
    m_lastX = pixel.x();
    if (column / columnWidth != m_start / columnWidth && m_count > 0) {
        m_start = column;
        m_sum = 0.0;
        m_count = 0;
        m_knots.emplace_back(m_start, 0.0);
    }
    m_sum += pixel.y();
    ++m_count;
    m_knots.back().setY(m_sum / m_count);
}
