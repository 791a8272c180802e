#pragma once

/// One frame's measurement, as it goes into the record.
struct Measurement {
    double fps = 0.0;        ///< received frames per second, may be infinite
    double defaultFps = 0.0; ///< nominal rate, frames per second
    int timeMs = 0;          ///< since the receiver's run began
    int width = 0;           ///< pixels
    int height = 0;          ///< pixels
    int intervalMs = 0;      ///< since the same receiver's previous frame, 0 for the first
    int sourceIndex = 0;     ///< position of the source in the list of the test
    int graph = 0;           ///< 0-based number of the receiver in the test

    /// False: a frame of 0 x 0, which is nothing to see and no row of a record.
    constexpr bool hasPicture() const noexcept { return width != 0 || height != 0; }
};

/// Takes measurements on the capturing threads, before they wait in anybody's event queue.
class MeasurementSink {
public:
    virtual ~MeasurementSink() = default;
    /// Any thread, several at once. Takes well below a microsecond and never waits for another thread.
    virtual void add(const Measurement &measurement) noexcept = 0;
};
