#include "charts/segments.h"

#include "charts/chartstyle.h"

#include <QPainter>
#include <QPolygonF>

#include <cmath>
#include <vector>

namespace {

bool isFinite(const QLineF &line)
{
    return std::isfinite(line.x1()) && std::isfinite(line.y1()) && std::isfinite(line.x2()) && std::isfinite(line.y2());
}

/// Whether an area between these two x can hold the middle of a pixel. The painter rounds coordinates to
/// 1/64 of a pixel, so a little more counts than strictly lies between them.
bool coversPixelMiddle(double x1, double x2, double pixelRatio)
{
    constexpr double slack = 1.0 / 16.0;
    const double left = std::min(x1, x2) * pixelRatio;
    const double right = std::max(x1, x2) * pixelRatio;
    return std::floor(left - 0.5 - slack) != std::floor(right - 0.5 + slack);
}

/// Collects neighbouring areas below one line while they run in one direction, and fills them as one.
class AreaRun {
public:
    AreaRun(QPainter &painter, const QColor &fill, double bottom) : m_painter(painter), m_fill(fill), m_bottom(bottom)
    {
    }

    void add(const QLineF &top)
    {
        const double direction = top.dx() < 0.0 ? -1.0 : 1.0;
        if (!m_outline.isEmpty() && (direction != m_direction || (top.x1() - m_outline.last().x()) * direction < 0.0))
            fill();
        if (m_outline.isEmpty()) {
            m_direction = direction;
            m_outline.append(QPointF(top.x1(), m_bottom));
        }
        m_outline.append(top.p1());
        m_outline.append(top.p2());
    }

    void fill()
    {
        if (m_outline.isEmpty())
            return;
        m_outline.append(QPointF(m_outline.last().x(), m_bottom));
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(m_fill);
        m_painter.drawPolygon(m_outline);
        m_outline.clear();
    }

private:
    QPainter &m_painter;
    QColor m_fill;
    double m_bottom;
    double m_direction = 1.0;
    QPolygonF m_outline;
};

} // namespace

std::optional<QLineF> cutAtAxisEnd(QPointF first, QPointF second, double axisMs)
{
    if (first.x() > axisMs && second.x() > axisMs)
        return std::nullopt;
    if (first.x() < axisMs && second.x() > axisMs)
        second.setX(axisMs);
    else if (second.x() < axisMs && first.x() > axisMs)
        first.setX(axisMs);
    return QLineF(first, second);
}

void paintPlainSegments(QPainter &painter, const PointSeries &points, std::size_t first, std::size_t end,
                        const ChartGeometry &geometry, const QColor &color, double pixelRatio)
{
    // A segment covers its pixels wholly and has the areas' colour, so all areas can go before all
    // segments: neither hides anything of the other.
    constexpr std::size_t linesAtOnce = 512;
    std::vector<QLineF> lines;
    lines.reserve(std::min(end - first, linesAtOnce));
    AreaRun areas(painter, ChartStyle::fillOf(color), geometry.plotBottom());
    const double axisMs = geometry.lengthMs();

    for (std::size_t block = first; block < end; block += linesAtOnce) {
        lines.clear();
        for (std::size_t k = block; k < std::min(end, block + linesAtOnce); ++k) {
            const std::optional<QLineF> pair = cutAtAxisEnd(points[k], points[k + 1], axisMs);
            if (!pair)
                continue;
            const QLineF line(geometry.map(pair->p1()), geometry.map(pair->p2()));
            if (!isFinite(line))
                continue;
            lines.push_back(line);
            if (coversPixelMiddle(line.x1(), line.x2(), pixelRatio))
                areas.add(line);
        }
        areas.fill();
        painter.setPen(color);
        painter.drawLines(lines.data(), static_cast<int>(lines.size()));
    }
}

void paintBandSegments(QPainter &painter, const BandPoints &band, std::size_t first, std::size_t end,
                       const ChartGeometry &geometry, const QColor &color, double pixelRatio)
{
    const QPen averagePen(color, 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    const QColor fill = ChartStyle::fillOf(color);
    const double axisMs = geometry.lengthMs();
    for (std::size_t k = first; k < end; ++k) {
        const auto average = cutAtAxisEnd(band.average[k], band.average[k + 1], axisMs);
        const auto maximum = cutAtAxisEnd(band.maximum[k], band.maximum[k + 1], axisMs);
        const auto minimum = cutAtAxisEnd(band.minimum[k], band.minimum[k + 1], axisMs);
        if (!average || !maximum || !minimum)
            continue;
        const QLineF middle(geometry.map(average->p1()), geometry.map(average->p2()));
        const QLineF top(geometry.map(maximum->p1()), geometry.map(maximum->p2()));
        const QLineF bottom(geometry.map(minimum->p1()), geometry.map(minimum->p2()));
        if (!isFinite(middle) || !isFinite(top) || !isFinite(bottom))
            continue;
        if (coversPixelMiddle(middle.x1(), middle.x2(), pixelRatio)) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(fill);
            painter.drawPolygon(QPolygonF({middle.p1(), middle.p2(), top.p2(), top.p1()}));
            painter.drawPolygon(QPolygonF({middle.p1(), middle.p2(), bottom.p2(), bottom.p1()}));
        }
        painter.setPen(averagePen);
        painter.drawLine(middle);
        painter.setPen(Qt::red);
        painter.drawLine(top);
        painter.setPen(Qt::blue);
        painter.drawLine(bottom);
    }
}
