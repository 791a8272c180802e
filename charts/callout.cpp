#include "charts/callout.h"

#include "charts/chartstyle.h"

#include <QPainter>

#include <cmath>

namespace {

constexpr double circleRadius = 4.0;
constexpr double tip = 10.0;      ///< from the anchor to the arrow's point
constexpr double shoulder = 16.0; ///< from the anchor to the box
constexpr double halfNotch = 6.0; ///< half the arrow's width
constexpr double boxWidth = 60.0;
constexpr double boxHeight = 30.0;

} // namespace

CalloutSide calloutSide(CalloutFigure figure, QPointF anchor, const ChartGeometry &geometry)
{
    switch (figure) {
    case CalloutFigure::plain:
        return anchor.y() <= 90.0 ? CalloutSide::below : CalloutSide::above;
    case CalloutFigure::average:
        return anchor.x() <= geometry.labelWidth + 60 ? CalloutSide::right : CalloutSide::left;
    case CalloutFigure::maximum:
        return CalloutSide::above;
    case CalloutFigure::minimum:
        return anchor.y() >= geometry.plotHeight - 10 ? CalloutSide::above : CalloutSide::below;
    }
    return CalloutSide::above;
}

QPolygonF calloutBox(CalloutSide side, QPointF anchor)
{
    const double x = anchor.x();
    const double y = anchor.y();
    if (side == CalloutSide::above || side == CalloutSide::below) {
        const double s = side == CalloutSide::above ? -1.0 : 1.0; // away from the anchor
        const double w = side == CalloutSide::above ? -1.0 : 1.0; // side on which the outline starts
        const double near = y + s * shoulder;
        const double far = y + s * (shoulder + boxHeight);
        return QPolygonF({{x, y + s * tip},
                          {x + w * halfNotch, near},
                          {x + w * boxWidth / 2, near},
                          {x + w * boxWidth / 2, far},
                          {x - w * boxWidth / 2, far},
                          {x - w * boxWidth / 2, near},
                          {x - w * halfNotch, near},
                          {x, y + s * tip}});
    }
    const double s = side == CalloutSide::left ? -1.0 : 1.0;
    const double near = x + s * shoulder;
    const double far = x + s * (shoulder + boxWidth);
    return QPolygonF({{x + s * tip, y},
                      {near, y + halfNotch},
                      {near, y + boxHeight / 2},
                      {far, y + boxHeight / 2},
                      {far, y - boxHeight / 2},
                      {near, y - boxHeight / 2},
                      {near, y - halfNotch},
                      {x + s * tip, y}});
}

QRectF calloutTextRect(CalloutSide side, QPointF anchor)
{
    switch (side) {
    case CalloutSide::above:
        return {anchor.x() - boxWidth / 2, anchor.y() - shoulder - boxHeight, boxWidth, boxHeight};
    case CalloutSide::below:
        return {anchor.x() - boxWidth / 2, anchor.y() + shoulder, boxWidth, boxHeight};
    case CalloutSide::left:
        return {anchor.x() - shoulder - boxWidth, anchor.y() - boxHeight / 2, boxWidth, boxHeight};
    case CalloutSide::right:
        break;
    }
    return {anchor.x() + shoulder, anchor.y() - boxHeight / 2, boxWidth, boxHeight};
}

QRectF calloutBounds(CalloutSide side, QPointF anchor)
{
    const QRectF circle(anchor.x() - circleRadius, anchor.y() - circleRadius, 2 * circleRadius, 2 * circleRadius);
    return calloutBox(side, anchor).boundingRect().united(circle).adjusted(-2, -2, 2, 2);
}

QString calloutText(double value)
{
    return QString::number(std::trunc(value * 100.0) / 100.0, 'g', 6);
}

void paintCallout(QPainter &painter, CalloutSide side, QPointF anchor, double value)
{
    painter.setPen(ChartStyle::gridColor());
    painter.setBrush(QColor(230, 230, 230));
    painter.drawEllipse(anchor, circleRadius, circleRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ChartStyle::gridColor());
    painter.drawPolygon(calloutBox(side, anchor));
    painter.setPen(Qt::white);
    painter.setFont(ChartStyle::font(12));
    painter.drawText(calloutTextRect(side, anchor), Qt::AlignCenter, calloutText(value));
}
