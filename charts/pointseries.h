#pragma once

#include <QPointF>

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

/// The points of one series in arrival order: x is the test time in ms, y the value in the chart's unit.
/// Kept in blocks of equal size, so that an append never moves what is there and the memory is that of
/// the points (16 bytes each) and at most one block more. GUI thread, owned by the chart.
class PointSeries final {
public:
    static constexpr std::size_t blockPoints = 1024;

    void append(QPointF point)
    {
        if (m_size % blockPoints == 0)
            m_blocks.push_back(std::make_unique<Block>());
        (*m_blocks.back())[m_size % blockPoints] = point;
        m_ascending = m_ascending && (m_size == 0 || point.x() >= m_lastX);
        m_lastX = point.x();
        ++m_size;
    }

    std::size_t size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    /// index < size().
    const QPointF &operator[](std::size_t index) const { return (*m_blocks[index / blockPoints])[index % blockPoints]; }
    /// Whether no point lies left of the one before it, so that times can be searched by halving.
    bool isAscending() const { return m_ascending; }
    /// First point whose time is not below the given one; size() without any. Precondition: isAscending().
    std::size_t firstFrom(double timeMs) const
    {
        std::size_t low = 0;
        for (std::size_t high = m_size; low < high;) {
            const std::size_t middle = low + (high - low) / 2;
            if ((*this)[middle].x() < timeMs)
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    }

private:
    using Block = std::array<QPointF, blockPoints>;
    std::vector<std::unique_ptr<Block>> m_blocks;
    std::size_t m_size = 0;
    double m_lastX = 0.0;
    bool m_ascending = true;
};
