#include "charts/repaintpacer.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double mostPerSecond = 60.0;

int intervalFor(double framesPerSecond)
{
    const double rate = framesPerSecond > 0.0 ? std::min(framesPerSecond, mostPerSecond) : mostPerSecond;
    return static_cast<int>(std::ceil(1000.0 / std::max(rate, 1.0)));
}

} // namespace

RepaintPacer::RepaintPacer(QObject *parent) : QObject(parent), m_intervalMs(intervalFor(mostPerSecond))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &RepaintPacer::fire);
}

void RepaintPacer::setDisplayRate(double framesPerSecond)
{
    m_intervalMs = intervalFor(framesPerSecond);
}

void RepaintPacer::request()
{
    if (m_timer.isActive())
        return;
    const qint64 passedMs = m_sinceLast.isValid() ? m_sinceLast.elapsed() : m_intervalMs;
    m_timer.start(static_cast<int>(std::max<qint64>(0, m_intervalMs - passedMs)));
}

void RepaintPacer::fire()
{
    m_sinceLast.start();
    emit due();
}
