#pragma once

#include <memory>
#include <optional>

class LoadAbort;

/// Reads the two load figures. Used on one thread at a time: the sampler's.
class LoadReader {
public:
    LoadReader() = default;
    LoadReader(const LoadReader &) = delete;
    LoadReader &operator=(const LoadReader &) = delete;
    virtual ~LoadReader() = default;

    /// Mean load of all processors since the previous reading, 0 to 100 percent. Empty when there is
    /// nothing to compare with yet or the reading failed.
    virtual std::optional<int> processorPercent() = 0;

    /// Load of the graphics engines, percent, summed, so it may exceed 100. Empty when it cannot be
    /// told. May take 30 s; abort ends it within 100 ms.
    virtual std::optional<int> graphicsPercent(const LoadAbort &abort) = 0;
};

/// This platform's reader. Also loads and initialises the graphics driver's library where there is
/// one. The processor's counters are shared by all readers and kept for the life of the process.
std::unique_ptr<LoadReader> makeLoadReader();
