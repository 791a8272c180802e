#include "widgets/qroundprogressbar.h"

#include <QConicalGradient>
#include <QPainter>
#include <QtMath>

#include <cmath>

namespace {

const QColor accentColor(21, 207, 187);
const QColor panelColor(32, 32, 32);
const QColor grooveColor(23, 23, 23);

constexpr double ringShare = 0.09;       // thickness of the ring, of the side
constexpr double trackOpacity = 0.16;    // of the arc's colour on the ring that waits for it
constexpr double textHeightShare = 0.62; // of the inner radius
constexpr double textWidthShare = 1.5;   // of the inner radius: what fits into the disk at half height
constexpr int leastTextPixels = 6;       // smaller digits cannot be read

double ringThickness(const QRectF &baseRect)
{
    return qMax(2.0, baseRect.width() * ringShare);
}

/// A gradient that is given relative to what it fills must be given relative to the whole ring: the
/// arc's own bounding box has another middle.
QBrush brushOnRing(const QBrush &brush, const QRectF &baseRect)
{
    const QGradient *gradient = brush.gradient();
    if (!gradient || gradient->type() != QGradient::ConicalGradient
        || gradient->coordinateMode() != QGradient::ObjectBoundingMode)
        return brush;
    const auto *conical = static_cast<const QConicalGradient *>(gradient);
    const QPointF center(baseRect.x() + conical->center().x() * baseRect.width(),
                         baseRect.y() + conical->center().y() * baseRect.height());
    QConicalGradient placed(center, conical->angle());
    placed.setStops(conical->stops());
    return placed;
}

QRectF squareAround(const QPointF &center, double radius)
{
    return {center.x() - radius, center.y() - radius, 2.0 * radius, 2.0 * radius};
}

} // namespace

double roundBarArcStep(double minimum, double maximum, double value)
{
    const double range = maximum - minimum;
    return range > 0.0 ? 360.0 / range * value : 0.0;
}

int roundBarPercent(double minimum, double maximum, double value)
{
    const double range = maximum - minimum;
    if (!(range > 0.0))
        return 0;
    // 29 of 100 must not become 28 by the last bit of a division.
    const double percent = std::floor((value - minimum) / range * 100.0 + 1e-9);
    return percent > 0.0 ? int(qMin(percent, 100.0)) : 0;
}

QPainterPath roundBarArc(const QRectF &rect, double thickness, double degrees)
{
    QPainterPath path;
    const double span = std::isnan(degrees) ? 0.0 : qBound(-360.0, degrees, 360.0);
    const double outer = rect.width() / 2.0;
    const double inner = outer - thickness;
    if (span == 0.0 || thickness <= 0.0 || inner <= 0.0)
        return path;
    const QPointF center = rect.center();
    if (std::abs(span) >= 360.0) {
        path.addEllipse(rect);
        path.addEllipse(squareAround(center, inner));
        return path; // odd-even: the inner circle is a hole
    }
    // The same arc, smaller by the radius of its corners on all sides, drawn with a round pen of that
    // radius. An arc shorter than it is thick has smaller corners, so it grows evenly from nothing.
    const double middle = (outer + inner) / 2.0;
    const double length = qDegreesToRadians(std::abs(span)) * middle;
    const double corner = qMin(thickness, length) / 2.0;
    const double inset = qMin(qRadiansToDegrees(corner / middle), std::abs(span) / 2.0);
    const double first = span > 0.0 ? 90.0 - inset : 90.0 + inset; // Qt counts against the clock
    const double sweep = span > 0.0 ? -(span - 2.0 * inset) : -(span + 2.0 * inset);
    const QRectF outerRect = squareAround(center, outer - corner);
    const QRectF innerRect = squareAround(center, inner + corner);
    QPainterPath core;
    core.arcMoveTo(outerRect, first);
    core.arcTo(outerRect, first, sweep);
    core.arcTo(innerRect, first + sweep, -sweep);
    core.closeSubpath();
    QPainterPathStroker stroker;
    stroker.setWidth(2.0 * corner);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    path = stroker.createStroke(core);
    path.addPath(core);
    path.setFillRule(Qt::WindingFill);
    return path;
}

QGradientStops clockwiseStops(const QGradientStops &stops)
{
    QGradientStops turned;
    for (auto stop = stops.crbegin(); stop != stops.crend(); ++stop)
        turned.append({1.0 - stop->first, stop->second});
    return turned;
}

QRoundProgressBar::QRoundProgressBar(QWidget *parent) : QWidget(parent)
{
    QPalette colors = palette();
    colors.setColor(QPalette::Window, panelColor);
    colors.setColor(QPalette::AlternateBase, panelColor);
    colors.setColor(QPalette::Base, grooveColor);
    colors.setColor(QPalette::Highlight, accentColor);
    colors.setColor(QPalette::Text, accentColor);
    setPalette(colors);
}

QString QRoundProgressBar::text() const
{
    QString text = m_format;
    return text.replace(QLatin1String("%p"), QString::number(roundBarPercent(m_minimum, m_maximum, m_value)));
}

void QRoundProgressBar::setFormat(const QString &format)
{
    if (format == m_format)
        return;
    m_format = format;
    update();
}

void QRoundProgressBar::setDataColors(const QGradientStops &stops)
{
    if (stops == m_dataColors)
        return;
    m_dataColors = stops;
    m_dataColorsChanged = true;
    update();
}

QSize QRoundProgressBar::sizeHint() const
{
    return {120, 120};
}

QSize QRoundProgressBar::minimumSizeHint() const
{
    return {32, 32};
}

void QRoundProgressBar::setRange(double min, double max)
{
    if (!std::isfinite(min) || !std::isfinite(max))
        return;
    m_minimum = qMin(min, max);
    m_maximum = qMax(min, max);
    m_value = qBound(m_minimum, m_value, m_maximum);
    update();
}

void QRoundProgressBar::setMinimum(double min)
{
    setRange(min, m_maximum);
}

void QRoundProgressBar::setMaximum(double max)
{
    setRange(m_minimum, max);
}

void QRoundProgressBar::setValue(double val)
{
    if (!std::isfinite(val))
        return;
    const double value = qBound(m_minimum, val, m_maximum);
    if (value == m_value)
        return;
    m_value = value;
    update();
}

void QRoundProgressBar::paintEvent(QPaintEvent *)
{
    const int side = qMin(width(), height());
    if (side <= 2)
        return;
    const double ratio = devicePixelRatioF();
    const QSize pixels = QSize(side, side) * ratio;
    if (m_image.size() != pixels || !qFuzzyCompare(m_image.devicePixelRatioF(), ratio)) {
        m_image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        m_image.setDevicePixelRatio(ratio);
    }
    if (m_image.isNull())
        return;
    m_image.fill(Qt::transparent);
    if (m_dataColorsChanged)
        rebuildGradient();
    {
        QPainter painter(&m_image);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF baseRect(1, 1, side - 2, side - 2);
        drawBackground(painter, baseRect);
        drawBase(painter, baseRect);
        drawValue(painter, baseRect, m_value, roundBarArcStep(m_minimum, m_maximum, m_value));
        QRectF innerRect;
        double innerRadius = 0.0;
        calculateInnerRect(baseRect, innerRect, innerRadius);
        drawInnerBackground(painter, innerRect);
        drawText(painter, innerRect, innerRadius, m_value);
    }
    QPainter painter(this);
    painter.drawImage(0, 0, m_image);
}

void QRoundProgressBar::rebuildGradient()
{
    m_dataColorsChanged = false;
    QBrush brush = accentColor;
    if (!m_dataColors.isEmpty()) {
        QConicalGradient gradient(0.5, 0.5, 90.0); // from twelve o'clock
        gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
        gradient.setStops(clockwiseStops(m_dataColors));
        brush = gradient;
    }
    QPalette colors = palette();
    colors.setBrush(QPalette::All, QPalette::Highlight, brush);
    setPalette(colors);
}

void QRoundProgressBar::drawBackground(QPainter &painter, const QRectF &baseRect)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().brush(QPalette::Window));
    painter.drawEllipse(baseRect);
}

void QRoundProgressBar::drawBase(QPainter &painter, const QRectF &baseRect)
{
    const QPainterPath ring = roundBarArc(baseRect, ringThickness(baseRect), 360.0);
    painter.setPen(Qt::NoPen);
    painter.fillPath(ring, palette().brush(QPalette::Base));
    painter.setOpacity(trackOpacity);
    painter.fillPath(ring, brushOnRing(palette().brush(QPalette::Highlight), baseRect));
    painter.setOpacity(1.0);
}

void QRoundProgressBar::drawValue(QPainter &painter, const QRectF &baseRect, double, double arcStep)
{
    painter.fillPath(roundBarArc(baseRect, ringThickness(baseRect), arcStep),
                     brushOnRing(palette().brush(QPalette::Highlight), baseRect));
}

void QRoundProgressBar::calculateInnerRect(const QRectF &baseRect, QRectF &innerRect, double &innerRadius)
{
    const double thickness = ringThickness(baseRect);
    innerRect = baseRect.adjusted(thickness, thickness, -thickness, -thickness);
    innerRadius = qMax(0.0, innerRect.width() / 2.0);
}

void QRoundProgressBar::drawInnerBackground(QPainter &painter, const QRectF &innerRect)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().brush(QPalette::AlternateBase));
    painter.drawEllipse(innerRect);
}

void QRoundProgressBar::drawText(QPainter &painter, const QRectF &innerRect, double innerRadius, double)
{
    const QString shown = text();
    if (shown.isEmpty())
        return;
    QFont textFont = font();
    const int wantedPixels = int(innerRadius * textHeightShare);
    if (wantedPixels < leastTextPixels)
        return;
    textFont.setPixelSize(wantedPixels);
    const double room = innerRadius * textWidthShare;
    const double needed = QFontMetricsF(textFont).horizontalAdvance(shown);
    if (needed > room)
        textFont.setPixelSize(qMax(leastTextPixels, int(wantedPixels * room / needed)));
    painter.setFont(textFont);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(innerRect, Qt::AlignCenter, shown);
}
