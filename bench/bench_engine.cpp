#include "app/recordfile.h"
#include "bench/measuredruntime.h"
#include "ndi/ndilib.h"
#include "ndi/receivercontroller.h"

#include <QEventLoop>
#include <QObject>
#include <QSemaphore>
#include <QThread>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

namespace {

constexpr int frames = 20000;
const NDIlib_source_t source{"LOOPBACK (1080p59.94)", nullptr};

double bareMedianUs = 0.0; // of the same run, for comparison
double bareP99Us = 0.0;

void report(benchmark::State &state, const std::vector<double> &sortedUs)
{
    state.SetItemsProcessed(state.iterations() * frames);
    state.counters["median_us"] = quantile(sortedUs, 0.5);
    state.counters["p99_us"] = quantile(sortedUs, 0.99);
}

/// Capture and free, and nothing else.
void bareLoop(benchmark::State &state)
{
    std::vector<double> timesUs;
    for (auto _ : state) {
        MeasuredRuntime runtime(frames);
        NDIlib_recv_create_v3_t settings;
        settings.source_to_connect_to = source;
        const NDIlib_recv_instance_t receiver = NDIlib_recv_create_v3(&settings);
        NDIlib_frame_type_e type = NDIlib_frame_type_none;
        do {
            NDIlib_video_frame_v2_t video;
            NDIlib_audio_frame_v2_t audio;
            type = NDIlib_recv_capture_v2(receiver, &video, &audio, nullptr, 1000);
            if (type == NDIlib_frame_type_video)
                NDIlib_recv_free_video_v2(receiver, &video);
        } while (type != NDIlib_frame_type_error);
        NDIlib_recv_destroy(receiver);
        timesUs = runtime.sortedTimesUs();
    }
    bareMedianUs = quantile(timesUs, 0.5);
    bareP99Us = quantile(timesUs, 0.99);
    report(state, timesUs);
}
BENCHMARK(bareLoop)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Runs one receiver under a controller, as a test does, and stores a row for each frame.
/// afterRow is called when a row has been stored, on the controller's thread.
void runController(const std::function<void()> &afterRow)
{
    QThread thread;
    QObject home;
    home.moveToThread(&thread);
    thread.start();
    QStringList rows;
    QMetaObject::invokeMethod(
        &home,
        [&] {
            auto *const controller = new ReceiverController;
            QObject::connect(controller, &ReceiverController::sourceFrameReceived, controller,
                             [&](double fps, int time, int, double defaultFps, int width, int height, int, int ping,
                                 int, int indexNum) {
                                 rows.append(recordRow(QStringLiteral("LOOPBACK (1080p59.94)"), width, height,
                                                       defaultFps, time, indexNum, fps, ping));
                                 if (afterRow)
                                     afterRow();
                             });
            QObject::connect(controller, &ReceiverController::sourceReceiverFinished, controller,
                             [controller, &thread] {
                                 controller->deleteLater();
                                 thread.quit();
                             });
            controller->startReceivers(source, 0, 1, 0);
        },
        Qt::BlockingQueuedConnection);
    thread.wait();
}

/// What a receiver adds on the capturing thread: stamp, measurement, its way to another thread.
void receiverLoop(benchmark::State &state)
{
    std::vector<double> timesUs;
    for (auto _ : state) {
        MeasuredRuntime runtime(frames);
        runController({});
        timesUs = runtime.sortedTimesUs();
    }
    report(state, timesUs);
    state.counters["median_beyond_bare_us"] = quantile(timesUs, 0.5) - bareMedianUs;
    state.counters["p99_beyond_bare_us"] = quantile(timesUs, 0.99) - bareP99Us;
}
BENCHMARK(receiverLoop)->Unit(benchmark::kMillisecond)->UseRealTime();

/// From the return of a capture to the row that stands in memory on the other thread; the next frame is
/// taken when the last one has arrived.
void captureToRow(benchmark::State &state)
{
    std::vector<double> timesUs;
    for (auto _ : state) {
        MeasuredRuntime runtime(frames);
        QSemaphore stored(1);
        runtime.setBeforeCapture([&stored] { stored.acquire(); });
        timesUs.clear();
        runController([&] {
            const auto now = std::chrono::steady_clock::now().time_since_epoch();
            const std::int64_t ns = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
            timesUs.push_back(double(ns - MeasuredRuntime::lastReturnNs()) / 1000.0);
            stored.release();
        });
    }
    std::sort(timesUs.begin(), timesUs.end());
    report(state, timesUs);
}
BENCHMARK(captureToRow)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
