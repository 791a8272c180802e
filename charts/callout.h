#pragma once

#include "charts/chartgeometry.h"

#include <QPolygonF>
#include <QRectF>
#include <QString>

class QPainter;

/// On which side of its anchor a callout stands.
enum class CalloutSide { above, below, left, right };

/// Which figure of the chart a callout shows; each has its own rule for the side.
enum class CalloutFigure { plain, average, maximum, minimum };

/// Side for a figure whose anchor is at this point.
CalloutSide calloutSide(CalloutFigure figure, QPointF anchor, const ChartGeometry &geometry);
/// The arrow-shaped box, closed, in logical pixels.
QPolygonF calloutBox(CalloutSide side, QPointF anchor);
/// 60 x 30 pixels in which the text is centred.
QRectF calloutTextRect(CalloutSide side, QPointF anchor);
/// All that a callout covers, its circle included.
QRectF calloutBounds(CalloutSide side, QPointF anchor);
/// The value cut (not rounded) to two decimals, at most six significant digits: 29.979 is "29.97".
QString calloutText(double value);

/// Draws circle, box and text. Leaves the painter's pen, brush and font changed.
void paintCallout(QPainter &painter, CalloutSide side, QPointF anchor, double value);
