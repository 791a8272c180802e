#include "charts/columnbins.h"

#include <cmath>
#include <limits>

void ColumnBins::add(QPointF pixel)
{
    constexpr double mostColumns = std::numeric_limits<int>::max();
    if (!std::isfinite(pixel.y()) || !(std::abs(pixel.x()) < mostColumns))
        return;
    const int column = static_cast<int>(pixel.x());
    if (m_finished.empty() && m_count == 0)
        m_firstX = pixel.x();
    m_lastX = pixel.x();
    if (column / columnWidth != m_start / columnWidth && m_count > 0) {
        m_finished.emplace_back(m_start, m_sum / m_count);
        m_start = column;
        m_sum = 0.0;
        m_count = 0;
    }
    m_sum += pixel.y();
    ++m_count;
}

std::vector<QPointF> ColumnBins::knots() const
{
    std::vector<QPointF> all;
    all.reserve(m_finished.size() + 1);
    all = m_finished;
    if (m_count > 0)
        all.emplace_back(m_start, m_sum / m_count);
    return all;
}
