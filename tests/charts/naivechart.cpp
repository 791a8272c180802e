#include "tests/charts/naivechart.h"

#include "charts/naturalspline.h"

#include <QPolygonF>

#include <cmath>
#include <cstdlib>

namespace {

bool finite(QPointF point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

} // namespace

double NaiveChart::left() const
{
    return std::ceil(std::log(maxY + 1) / std::log(10.0)) * 9 + 10;
}

QPointF NaiveChart::map(QPointF sample) const
{
    const double plotWidth = width - 21 - left();
    const double plotHeight = height - 65;
    return {sample.x() * plotWidth / 1000 / maxX + left(), plotHeight - sample.y() * plotHeight / maxY + 40};
}

bool NaiveChart::cut(QPointF &first, QPointF &second) const
{
    const double end = maxX * 1000;
    if (first.x() > end && second.x() > end)
        return false;
    if (first.x() < end && end < second.x())
        second.setX(end);
    else if (second.x() < end && end < first.x())
        first.setX(end);
    return true;
}

void NaiveChart::paintGrid(QPainter &painter) const
{
    QFont font(QStringLiteral("Kumbh Sans"), 8, 50);
    painter.setFont(font);
    painter.setPen(QColor(66, 66, 66));
    const double plotWidth = width - 21 - left();
    const double plotHeight = height - 65;
    const int xStep = static_cast<int>(maxX / 6);
    for (int i = 0; i < 7; ++i) {
        const double x = i * (plotWidth / maxX) * xStep + left();
        painter.drawLine(QPointF(x, 40), QPointF(x, height - 25));
        if (i > 0)
            painter.drawText(QPoint(static_cast<int>(x - 15), height - 10), QString::number(i * xStep));
    }
    const int yStep = static_cast<int>(maxY / 6);
    for (int j = 0; j < 7; ++j) {
        const double y = plotHeight - j * (plotHeight / maxY) * yStep + 40;
        painter.drawLine(QPointF(left(), y), QPointF(left() + plotWidth, y));
        painter.drawText(QRect(0, static_cast<int>(y - 5), static_cast<int>(left()) - 5, 15), Qt::AlignRight,
                         QString::number(j * yStep));
    }
    if (hoverTime >= 0 && hoverTime <= maxX * 1000) {
        const double x = (hoverTime / 1000.0) * plotWidth / maxX + left();
        painter.setPen(QPen(QColor(66, 66, 66), 1, Qt::DashLine));
        painter.drawLine(QPointF(x, 40), QPointF(x, plotHeight + 40));
    }
}

void NaiveChart::paintRaw(QPainter &painter, const NaiveSeries &one) const
{
    QColor fill = one.color;
    fill.setAlpha(50);
    const double bottom = height - 25;
    for (std::size_t k = 0; k + 1 < one.plain.size(); ++k) {
        QPointF first = one.plain[k];
        QPointF second = one.plain[k + 1];
        if (!cut(first, second))
            continue;
        first = map(first);
        second = map(second);
        if (!finite(first) || !finite(second))
            continue;
        painter.setPen(QColor(255, 255, 255, 0));
        painter.setBrush(fill);
        painter.drawPolygon(QPolygonF({first, second, QPointF(second.x(), bottom), QPointF(first.x(), bottom)}));
        painter.setPen(one.color);
        painter.drawLine(first, second);
    }
}

void NaiveChart::paintBand(QPainter &painter, const NaiveSeries &one) const
{
    QColor fill = one.color;
    fill.setAlpha(50);
    for (std::size_t k = 0; k + 1 < one.average.size(); ++k) {
        QPointF average[2] = {one.average[k], one.average[k + 1]};
        QPointF maximum[2] = {one.maximum[k], one.maximum[k + 1]};
        QPointF minimum[2] = {one.minimum[k], one.minimum[k + 1]};
        bool whole = true;
        for (QPointF *pair : {average, maximum, minimum}) {
            whole = cut(pair[0], pair[1]) && whole;
            pair[0] = map(pair[0]);
            pair[1] = map(pair[1]);
            whole = finite(pair[0]) && finite(pair[1]) && whole;
        }
        if (!whole)
            continue;
        painter.setPen(QColor(255, 255, 255, 0));
        painter.setBrush(fill);
        painter.drawPolygon(QPolygonF({average[0], average[1], maximum[1], maximum[0]}));
        painter.drawPolygon(QPolygonF({average[0], average[1], minimum[1], minimum[0]}));
        painter.setPen(QPen(one.color, 2, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
        painter.drawLine(average[0], average[1]);
        painter.setPen(Qt::red);
        painter.drawLine(maximum[0], maximum[1]);
        painter.setPen(Qt::blue);
        painter.drawLine(minimum[0], minimum[1]);
    }
}

void NaiveChart::paintSmooth(QPainter &painter, const std::vector<QPointF> &points, const QColor &color) const
{
    if (points.size() < 3)
        return;
    std::vector<QPointF> knots;
    int b = 0;
    double sum = 0;
    int count = 0;
    double firstX = 0;
    double lastX = 0;
    bool any = false;
    for (const QPointF &sample : points) {
        const QPointF pixel = map(sample);
        if (!finite(pixel))
            continue;
        const int px = static_cast<int>(pixel.x());
        if (!any)
            firstX = pixel.x();
        any = true;
        lastX = pixel.x();
        if (px / 5 != b / 5 && count > 0) {
            knots.emplace_back(b, sum / count);
            b = px;
            sum = 0;
            count = 0;
        }
        sum += pixel.y();
        ++count;
    }
    if (any)
        knots.emplace_back(b, sum / count);
    if (knots.size() <= 2)
        return;
    for (std::size_t i = 1; i < knots.size(); ++i) {
        if (knots[i].x() <= knots[i - 1].x())
            return;
    }
    // The program's spline, which has tests of its own: a difference in the last bit can move a pixel.
    auto spline = NaturalSpline::through(knots);
    const double right = width - 21;
    const auto inside = [&](double y) { return y >= 40 && y <= height - 25; };
    painter.setPen(QPen(color.lighter(150), 2));
    bool started = false;
    const int end = static_cast<int>(lastX + 1);
    for (int x = static_cast<int>(left()); x < end && x <= right; ++x) {
        if (!(x - 1 > firstX))
            continue;
        const QPointF from = started ? QPointF(x - 1, spline->at(x - 1)) : QPointF(firstX, spline->at(firstX));
        const QPointF to(x, spline->at(x));
        started = true;
        if (inside(from.y()) && inside(to.y()))
            painter.drawLine(from, to);
    }
}

void NaiveChart::paint(QPainter &painter) const
{
    paintGrid(painter);
    painter.setClipRect(QRect(static_cast<int>(left()), 0, width - 21 - static_cast<int>(left()) + 1, height));
    for (const NaiveSeries &one : series) {
        if (!one.visible)
            continue;
        if (raw)
            paintRaw(painter, one);
        if (smooth)
            paintSmooth(painter, one.plain, one.color);
        if (raw)
            paintBand(painter, one);
        if (smooth) {
            paintSmooth(painter, one.average, one.color);
            paintSmooth(painter, one.maximum, Qt::red);
            paintSmooth(painter, one.minimum, Qt::blue);
        }
    }
    painter.setClipping(false);
}

QImage NaiveChart::image(double pixelRatio) const
{
    QImage picture(
        QSize(static_cast<int>(std::ceil(width * pixelRatio)), static_cast<int>(std::ceil(height * pixelRatio))),
        QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(pixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(painter);
    return picture;
}

double NaiveChart::pick(std::vector<QPointF> NaiveSeries::*list) const
{
    double chart = 0;
    for (const NaiveSeries &one : series) {
        const std::vector<QPointF> &points = one.*list;
        if (!one.visible)
            continue;
        double value = -1;
        double best = 100000000;
        const auto test = [&](QPointF point) {
            if (finite(point) && static_cast<int>(point.x() / 100) == hoverTime / 100
                && std::abs(point.x() - hoverTime) < best) {
                best = std::abs(point.x() - hoverTime);
                value = point.y();
            }
        };
        for (std::size_t k = 0; k + 1 < points.size(); ++k) {
            QPointF first = points[k];
            QPointF second = points[k + 1];
            if (!cut(first, second))
                continue;
            test(first);
            if (k + 2 == points.size())
                test(second);
        }
        chart = std::max(chart, value);
    }
    return chart;
}
