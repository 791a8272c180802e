#include "charts/segments.h"

#include "charts/chartstyle.h"

#include <QPainter>
#include <QPolygonF>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace {

bool isFinite(const QLineF &line)
{
    return std::isfinite(line.x1()) && std::isfinite(line.y1()) && std::isfinite(line.x2()) && std::isfinite(line.y2());
}

/// The integer part downwards. x is far from the limits of the type: times are milliseconds in an int.
qint64 floorOf(double x)
{
    const auto whole = static_cast<qint64>(x);
    return x < static_cast<double>(whole) ? whole - 1 : whole;
}

/// Whether an area between these two x can hold the middle of a pixel. The painter rounds coordinates to
/// 1/64 of a pixel, so a little more counts than strictly lies between them.
bool coversPixelMiddle(double x1, double x2, double pixelRatio)
{
    constexpr double slack = 1.0 / 16.0;
    const double left = std::min(x1, x2) * pixelRatio;
    const double right = std::max(x1, x2) * pixelRatio;
    return floorOf(left - 0.5 - slack) != floorOf(right - 0.5 + slack);
}

/// Collects areas below one line and fills neighbouring ones together while they run in one direction: what is
/// lower than all of them as one rectangle, the rest as polygons of few edges, which the painter sorts in each row.
class AreaRun {
public:
    AreaRun(QPainter &painter, const QColor &fill, double bottom, double pixelRatio)
        : m_painter(painter), m_fill(fill), m_bottom(bottom), m_pixelRatio(pixelRatio)
    {
    }

    /// top: upper edge of an area that covers the middle of a pixel.
    void add(const QLineF &top)
    {
        if (!m_tops.empty()) {
            const double direction = m_tops.front().dx() < 0.0 ? -1.0 : 1.0;
            const double end = m_tops.back().x2();
            const bool hasGap =
                floorOf(end * m_pixelRatio - 0.5) != floorOf(top.x1() * m_pixelRatio - 0.5); // the middle of a pixel
            if (top.dx() * direction < 0.0 || (top.x1() - end) * direction < 0.0 || hasGap)
                fill();
        }
        m_tops.push_back(top);
    }

    void fill()
    {
        if (m_tops.empty())
            return;
        double lowest = m_tops.front().y1();
        for (const QLineF &top : m_tops)
            lowest = std::max({lowest, top.y1(), top.y2()});
        const double foot = std::min(m_bottom, std::ceil(lowest * m_pixelRatio) / m_pixelRatio);

        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(m_fill);
        constexpr std::size_t edgesAtOnce = 32;
        for (std::size_t first = 0; first < m_tops.size(); first += edgesAtOnce) {
            const std::size_t end = std::min(m_tops.size(), first + edgesAtOnce);
            QPolygonF outline;
            outline << QPointF(m_tops[first].x1(), foot);
            for (std::size_t k = first; k < end; ++k)
                outline << m_tops[k].p1() << m_tops[k].p2();
            outline << QPointF(m_tops[end - 1].x2(), foot);
            m_painter.drawPolygon(outline);
        }
        const double left = m_tops.front().x1();
        const double right = m_tops.back().x2();
        if (foot < m_bottom) // in five points, for the painter rounds a rectangle of four in another way
            m_painter.drawPolygon(QPolygonF(
                {{left, foot}, {right, foot}, {right, m_bottom}, {(left + right) / 2.0, m_bottom}, {left, m_bottom}}));
        m_tops.clear();
    }

private:
    QPainter &m_painter;
    QColor m_fill;
    double m_bottom;
    double m_pixelRatio;
    std::vector<QLineF> m_tops;
};

/// Collects segments of one colour and draws the same pixels with fewer lines. With a pen of one device pixel the
/// painter gives a steep segment one pixel in each row that it touches, wherever in a column of pixels it runs,
/// and a level one its row. So segments within one column that overlap in height are one upright line, and a
/// segment is left out when such lines cover all that it could touch. The painter rounds coordinates to 1/64 of
/// a pixel and continues a segment by half a pixel at both ends.
class SegmentRun {
public:
    /// columns: of the picture; 0 to draw each segment by itself.
    SegmentRun(QPainter &painter, const QColor &color, int columns)
        : m_painter(painter), m_color(color), m_columns(static_cast<std::size_t>(columns))
    {
        m_lines.reserve(8 * m_columns.size());
    }

    void add(const QLineF &line)
    {
        const Reach reach = reachOf(line);
        if (reach.isWithinOne && isColumn(reach.first)) {
            Reach::Rows &column = m_columns[static_cast<std::size_t>(reach.first)];
            if (column.isEmpty() || (reach.rows.top <= column.bottom && column.top <= reach.rows.bottom)) {
                column = {std::min(column.top, reach.rows.top), std::max(column.bottom, reach.rows.bottom)};
                return;
            }
        }
        m_lines.push_back(line);
    }

    /// The same upper edge of an area, made level where upright lines will cover the difference: an area with a
    /// long level edge is filled faster.
    QLineF levelled(const QLineF &top)
    {
        const qint64 column = floorOf(top.x1());
        if (floorOf(top.x2()) != column || !isColumn(column))
            return top;
        const Reach::Rows &rows = m_columns[static_cast<std::size_t>(column)];
        const double highest = std::ceil(rows.top);
        const double lowest = std::floor(rows.bottom);
        if (!rows.contains({std::min(top.y1(), top.y2()), std::max(top.y1(), top.y2())}) || highest > lowest)
            return top;
        m_level = std::clamp(m_level, highest, lowest);
        return {top.x1(), m_level, top.x2(), m_level};
    }

    void draw()
    {
        const auto isCovered = [this](const QLineF &line) {
            const Reach reach = reachOf(line);
            for (qint64 column = reach.first; column <= reach.last; ++column) {
                if (!isColumn(column) || !m_columns[static_cast<std::size_t>(column)].contains(reach.rows))
                    return false;
            }
            return true;
        };
        m_lines.erase(std::remove_if(m_lines.begin(), m_lines.end(), isCovered), m_lines.end());
        for (std::size_t column = 0; column < m_columns.size(); ++column) {
            const Reach::Rows rows = std::exchange(m_columns[column], {});
            const double edge = rows.top == rows.bottom ? 0.25 : 0.5; // a level line needs a length
            const auto x = static_cast<double>(column);
            if (!rows.isEmpty())
                m_lines.emplace_back(x + edge, rows.top, x + 1.0 - edge, rows.bottom);
        }
        drawOpaqueLines(m_painter, m_color, m_lines);
        m_lines.clear();
    }

private:
    /// The columns and heights that a segment may touch.
    struct Reach {
        struct Rows {
            double top = std::numeric_limits<double>::max();
            double bottom = std::numeric_limits<double>::lowest();
            bool isEmpty() const { return bottom < top; }
            bool contains(const Rows &other) const { return top <= other.top && other.bottom <= bottom; }
        };
        qint64 first;
        qint64 last;
        Rows rows;
        bool isWithinOne; ///< it touches one column, there exactly these rows
    };

    static Reach reachOf(const QLineF &line)
    {
        constexpr double rounding = 1.0 / 32.0;
        const double width = std::abs(line.dx());
        const double height = std::abs(line.dy());
        const bool isSteep = height > width + 2.0 * rounding;
        const bool isLevel = height == 0.0;
        double aside = rounding;
        if (isSteep)
            aside += (width + 2.0 * rounding) / (height - rounding) / 2.0;
        else if (!isLevel)
            aside += 0.5;
        const double upwards = isSteep || isLevel ? 0.0 : 1.0;
        const qint64 first = floorOf(std::min(line.x1(), line.x2()) - aside);
        const qint64 last = floorOf(std::max(line.x1(), line.x2()) + aside);
        const Reach::Rows rows{std::min(line.y1(), line.y2()) - upwards, std::max(line.y1(), line.y2()) + upwards};
        const bool isDrawn = isSteep || (isLevel && width >= rounding); // a shorter one may vanish
        return {first, last, rows, first == last && isDrawn};
    }

    bool isColumn(qint64 column) const { return column >= 0 && column < static_cast<qint64>(m_columns.size()); }

    QPainter &m_painter;
    QColor m_color;
    std::vector<Reach::Rows> m_columns; ///< the upright lines
    std::vector<QLineF> m_lines;        ///< the other segments
    double m_level = 0.0;               ///< of the latest levelled() edge
};

} // namespace

void drawOpaqueLines(QPainter &painter, QPen pen, const std::vector<QLineF> &lines)
{
    // The opposite colour, inverted, gives the same pixels. The usual way, some builds of Qt 5 switch from
    // AVX to SSE instructions and back for each few pixels, which makes such lines four times as slow.
    const QColor color = pen.color();
    pen.setColor(QColor(255 - color.red(), 255 - color.green(), 255 - color.blue()));
    painter.setPen(pen);
    painter.setCompositionMode(QPainter::RasterOp_NotSource);
    painter.drawLines(lines.data(), static_cast<int>(lines.size()));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

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
    constexpr std::size_t areasAtOnce = 4096;
    constexpr std::size_t worthJoining = 64;
    SegmentRun segments(painter, color, pixelRatio == 1.0 && end - first >= worthJoining ? geometry.width : 0);
    AreaRun areas(painter, ChartStyle::fillOf(color), geometry.plotBottom(), pixelRatio);
    std::vector<QLineF> tops;
    const auto draw = [&] {
        for (const QLineF &top : tops)
            areas.add(segments.levelled(top));
        areas.fill();
        tops.clear();
        segments.draw();
    };

    const double axisMs = geometry.lengthMs();
    QPointF from = geometry.map(points[first]);
    for (std::size_t k = first; k < end; ++k) {
        const QPointF to = geometry.map(points[k + 1]);
        QLineF line(from, to);
        from = to;
        if (points[k].x() > axisMs || points[k + 1].x() > axisMs) {
            const std::optional<QLineF> pair = cutAtAxisEnd(points[k], points[k + 1], axisMs);
            if (!pair)
                continue;
            line = {geometry.map(pair->p1()), geometry.map(pair->p2())};
        }
        if (!isFinite(line))
            continue;
        segments.add(line);
        if (coversPixelMiddle(line.x1(), line.x2(), pixelRatio))
            tops.push_back(line);
        if (tops.size() == areasAtOnce)
            draw();
    }
    draw();
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
