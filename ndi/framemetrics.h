#pragma once

#include <QList>

#include <cstddef>

/// Nominal frame rate in whole frames per second: the integer quotient of numerator and denominator
/// (60000/1001 gives 59). A denominator of 0 gives 0; a quotient outside int is clamped to it.
int nominalRate(int numerator, int denominator);

/// What one arrival tells about the stream.
struct FrameFigures {
    double framesPerSecond = 0.0; ///< over the window; +infinity when all of it arrived within one ms
    int intervalMs = 0;           ///< since the previous frame, 0 for the first
};

/// Sliding window over the arrival times of one receiver's frames. It holds the start of the run and
/// then at most as many arrivals as the nominal rate has frames a second, so it spans about a second
/// of video and the work for a frame is constant. Not thread-safe; belongs to one receiver.
class FrameTimes final {
public:
    /// Forgets everything; the start of the run, 0 ms, becomes the first entry.
    void restart();

    /// Takes the arrival of a frame. nowMs: whole milliseconds since restart(), never decreasing.
    /// A shrinking nominal rate takes one entry away for each frame, not all at once.
    /// framesPerSecond = (entries - 1) * 1000 / (newest - oldest).
    FrameFigures add(int nowMs, int nominalFramesPerSecond);

    int size() const { return m_arrivalsMs.size(); }
    int oldestMs() const { return m_arrivalsMs.isEmpty() ? 0 : m_arrivalsMs.first(); }
    void clear();

private:
    QList<int> m_arrivalsMs; ///< oldest first
    int m_previousMs = 0;
};

/// How many bytes a published copy of a frame's pixels has: two per pixel, whatever the format.
/// 0 when there is nothing to copy or it would be more than 1 GiB: then nothing is published.
std::size_t frameCopyBytes(int width, int height);
