#include "widgets/qprogressindicator.h"

#include <QPainter>

#include <utility>

namespace {

constexpr int degreesPerSpoke = 360 / spokeCount;

} // namespace

QRect SpokeGeometry::spoke() const
{
    return QRect(int(double(-width) * 0.5), -outerRadius, width, length);
}

SpokeGeometry spokeGeometry(const QSize &size)
{
    const int side = qMin(size.width(), size.height());
    if (side <= 0)
        return {};
    SpokeGeometry geometry;
    const double radius = (side - 1) * 0.5;
    geometry.outerRadius = int(radius);
    geometry.length = geometry.outerRadius - int(radius * 0.38);
    geometry.width = int(geometry.length * (side <= 32 ? 0.35 : 0.23));
    geometry.cornerRadius = geometry.width / 2;
    return geometry;
}

double spokeOpacity(int spoke)
{
    return 1.0 - double(spoke) / spokeCount;
}

QProgressIndicator::QProgressIndicator(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFocusPolicy(Qt::NoFocus);
}

QSize QProgressIndicator::sizeHint() const
{
    return {20, 20};
}

void QProgressIndicator::startAnimation()
{
    m_angle = 0;
    if (m_timerId == -1)
        m_timerId = startTimer(m_delayMs);
    update();
}

void QProgressIndicator::stopAnimation()
{
    if (m_timerId != -1)
        killTimer(m_timerId);
    m_timerId = -1;
    update();
}

void QProgressIndicator::setAnimationDelay(int delay)
{
    m_delayMs = qMax(1, delay); // a timer of 0 ms would keep the event loop spinning
    if (m_timerId == -1)
        return;
    killTimer(m_timerId);
    m_timerId = startTimer(m_delayMs);
}

void QProgressIndicator::setDisplayedWhenStopped(bool state)
{
    m_displayedWhenStopped = state;
    update();
}

void QProgressIndicator::setColor(QColor color)
{
    m_color = std::move(color);
    update();
}

void QProgressIndicator::timerEvent(QTimerEvent *)
{
    m_angle = (m_angle + degreesPerSpoke) % 360;
    update();
}

void QProgressIndicator::paintEvent(QPaintEvent *)
{
    if (!isAnimated() && !m_displayedWhenStopped)
        return;
    const SpokeGeometry geometry = spokeGeometry(size());
    if (geometry.width <= 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QPointF middle = QRectF(rect()).center();
    QColor color = m_color;
    for (int i = 0; i < spokeCount; ++i) {
        color.setAlphaF(spokeOpacity(i));
        painter.resetTransform();
        painter.translate(middle);
        painter.rotate(m_angle - degreesPerSpoke * i);
        painter.setBrush(color);
        painter.drawRoundedRect(geometry.spoke(), geometry.cornerRadius, geometry.cornerRadius);
    }
}
