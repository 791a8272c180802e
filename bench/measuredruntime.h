#pragma once

#include "ndi/nditypes.h"

#include <functional>
#include <vector>

/// Puts itself between the program and the loopback runtime and takes the time that a capturing
/// thread spends outside of capture: from the return of one to the start of the next.
class MeasuredRuntime final {
public:
    /// After frames captures of a receiver the next one is an error, which ends its run.
    explicit MeasuredRuntime(int frames);
    ~MeasuredRuntime();
    MeasuredRuntime(const MeasuredRuntime &) = delete;
    MeasuredRuntime &operator=(const MeasuredRuntime &) = delete;

    /// Called before each capture, on the capturing thread; its time is not counted.
    void setBeforeCapture(std::function<void()> beforeCapture);

    /// Microseconds of every frame of the last run, sorted. One capturing thread at a time.
    std::vector<double> sortedTimesUs() const;
    /// Steady clock at the return of the last capture, ns.
    static std::int64_t lastReturnNs();
};

/// The value below which this part of the sorted values lies; part: 0 to 1.
double quantile(const std::vector<double> &sorted, double part);
