#include "ndi/framemetrics.h"

#include <limits>

int nominalRate(int numerator, int denominator)
{
    if (denominator == 0)
        return 0;
    const qint64 quotient = qint64(numerator) / denominator;
    return int(qBound<qint64>(std::numeric_limits<int>::min(), quotient, std::numeric_limits<int>::max()));
}

void FrameTimes::restart()
{
    clear();
    m_arrivalsMs.append(0);
}

void FrameTimes::clear()
{
    m_arrivalsMs.clear();
    m_previousMs = 0;
}

FrameFigures FrameTimes::add(int nowMs, int nominalFramesPerSecond)
{
    FrameFigures figures;
    figures.intervalMs = m_previousMs == 0 ? 0 : nowMs - m_previousMs;
    m_previousMs = nowMs;
    m_arrivalsMs.append(nowMs);
    if (double(m_arrivalsMs.size()) > double(nominalFramesPerSecond))
        m_arrivalsMs.removeFirst();

    // A nominal rate below 1 empties the window: nothing was measured then.
    const qint64 frames = qint64(m_arrivalsMs.size()) * 1000 - 1000;
    const int spanMs = nowMs - oldestMs();
    if (m_arrivalsMs.isEmpty() || frames == 0)
        figures.framesPerSecond = 0.0;
    else
        figures.framesPerSecond =
            spanMs == 0 ? std::numeric_limits<double>::infinity() : double(frames) / double(spanMs);
    return figures;
}

std::size_t frameCopyBytes(int width, int height)
{
    constexpr std::size_t largest = std::size_t(1) << 30;
    if (width <= 0 || height <= 0)
        return 0;
    const std::size_t bytes = std::size_t(width) * std::size_t(height) * 2;
    return bytes > largest ? 0 : bytes;
}
