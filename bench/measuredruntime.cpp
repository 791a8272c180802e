#include "bench/measuredruntime.h"

#include "ndi/ndifunctions.h"
#include "ndi/runtimeloader.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

struct State {
    int frames = 0;
    int captured = 0;
    std::int64_t returnedNs = 0;
    std::vector<double> timesUs;
    std::function<void()> beforeCapture;
};

State state; // of the capturing thread while it runs
std::atomic<std::int64_t> lastReturn{0};

std::int64_t nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

const NdiFunctions &loopback()
{
    static const LoadedRuntime runtime = [] {
        LoadedRuntime loaded =
            loadRuntime({QStringLiteral(VEXA_LOOPBACK_DIR) + QLatin1Char('/') + runtimeFileNames().first()});
        if (!loaded.library) {
            std::fprintf(stderr, "%s\n", qPrintable(loaded.problem));
            std::exit(1);
        }
        return loaded;
    }();
    return runtime.functions;
}

NDIlib_frame_type_e measuredCapture(NDIlib_recv_instance_t receiver, NDIlib_video_frame_v2_t *video,
                                    NDIlib_audio_frame_v2_t *audio, NDIlib_metadata_frame_t *metadata,
                                    std::uint32_t timeoutMs)
{
    const std::int64_t enteredNs = nowNs();
    if (state.captured > 0)
        state.timesUs.push_back(double(enteredNs - state.returnedNs) / 1000.0);
    if (state.captured++ == state.frames)
        return NDIlib_frame_type_error;
    if (state.beforeCapture)
        state.beforeCapture();
    const NDIlib_frame_type_e type = loopback().recvCapture(receiver, video, audio, metadata, timeoutMs);
    state.returnedNs = nowNs();
    lastReturn.store(state.returnedNs, std::memory_order_relaxed);
    return type;
}

} // namespace

MeasuredRuntime::MeasuredRuntime(int frames)
{
    static const NdiFunctions measured = [] {
        NdiFunctions functions = loopback();
        functions.recvCapture = measuredCapture;
        return functions;
    }();
    state = State();
    state.frames = frames;
    state.timesUs.reserve(std::size_t(frames) + 1);
    overrideNdiFunctions(&measured);
}

MeasuredRuntime::~MeasuredRuntime()
{
    overrideNdiFunctions(nullptr);
}

void MeasuredRuntime::setBeforeCapture(std::function<void()> beforeCapture)
{
    state.beforeCapture = std::move(beforeCapture);
}

std::vector<double> MeasuredRuntime::sortedTimesUs() const
{
    std::vector<double> sorted = state.timesUs;
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

std::int64_t MeasuredRuntime::lastReturnNs()
{
    return lastReturn.load(std::memory_order_relaxed);
}

double quantile(const std::vector<double> &sorted, double part)
{
    if (sorted.empty())
        return 0.0;
    return sorted[std::min(sorted.size() - 1, std::size_t(part * double(sorted.size())))];
}
