#include "charts/repaintpacer.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double mostPerSecond = 60.0;
constexpr int measurementIntervalMs = 50;

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
    fireAfter(m_intervalMs);
}

void RepaintPacer::requestForMeasurement()
{
    if (!m_timer.isActive())
        fireAfter(std::max(measurementIntervalMs, m_intervalMs));
}

/// Not sooner than intervalMs after the last time, but never later than asked for before.
void RepaintPacer::fireAfter(int intervalMs)
{
    const qint64 passedMs = m_sinceLast.isValid() ? m_sinceLast.elapsed() : intervalMs;
    const int waitMs = static_cast<int>(std::max<qint64>(0, intervalMs - passedMs));
    if (!m_timer.isActive() || m_timer.remainingTime() > waitMs)
        m_timer.start(waitMs);
}

void RepaintPacer::fire()
{
    m_sinceLast.start();
    emit due();
}
