#include "charts/repaintpacer.h"

#include <algorithm>
#include <chrono>
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
    const qint64 passedMs = m_sinceLast.isValid() ? m_sinceLast.elapsed() : m_intervalMs;
    const int waitMs = static_cast<int>(std::max<qint64>(0, m_intervalMs - passedMs));
    if (!m_timer.isActive() || m_timer.remainingTime() > waitMs)
        m_timer.start(waitMs);
}

void RepaintPacer::requestForMeasurement()
{
    if (m_timer.isActive())
        return;
    const qint64 nowMs =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    m_timer.start(measurementIntervalMs - static_cast<int>(nowMs % measurementIntervalMs));
}

void RepaintPacer::fire()
{
    m_sinceLast.start();
    emit due();
}
