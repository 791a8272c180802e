#include "charts/previewscaler.h"
#include "charts/videoglpreview.h"

#include <QApplication>
#include <QElapsedTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int shownWidth = 400;
constexpr int shownHeight = 225;
constexpr int longestStartMs = 10000;

Bytes makeFrame(const benchmark::State &state)
{
    Bytes frame(std::size_t(state.range(0)) * std::size_t(state.range(1)) * 2 + PreviewScaler::frameTailBytes);
    std::minstd_rand generator(1); // NOLINT: the same frame in every run
    std::generate(frame.begin(), frame.end(), [&generator] { return static_cast<std::uint8_t>(generator()); });
    return frame;
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Args({1920, 1080})->Args({3840, 2160})->Unit(benchmark::kMillisecond);
}

/// The conversion of one frame, as the preview does it. Of one core at 60 frames a second: time * 6 %.
void convert(benchmark::State &state)
{
    const Bytes frame = makeFrame(state);
    PreviewScaler scaler;
    for (auto _ : state) {
        const PreviewPlanes *const planes =
            scaler.scale(frame.data(), int(state.range(0)), int(state.range(1)), shownWidth, shownHeight);
        if (!planes)
            state.SkipWithError("not converted");
        benchmark::DoNotOptimize(planes);
    }
}
BENCHMARK(convert)->Apply(sizes);

/// For comparison: a scaler and a buffer made for every frame.
void convertAllAnew(benchmark::State &state)
{
    const Bytes frame = makeFrame(state);
    for (auto _ : state) {
        PreviewScaler scaler;
        benchmark::DoNotOptimize(
            scaler.scale(frame.data(), int(state.range(0)), int(state.range(1)), shownWidth, shownHeight));
    }
}
BENCHMARK(convertAllAnew)->Apply(sizes);

/// A whole paint: conversion, upload of the planes, drawing and putting the window together. Needs a
/// screen. The copy of the frame that is handed over is not measured.
void paint(benchmark::State &state)
{
    const Bytes frame = makeFrame(state);
    VideoGlPreview preview;
    preview.resize(shownWidth, shownHeight);
    preview.setSource(0);
    int paints = 0;
    QObject::connect(&preview, &VideoGlPreview::finishedToRenderPixmap, &preview, [&paints] { ++paints; });
    preview.show();
    QElapsedTimer clock;
    clock.start();
    while (paints == 0 && clock.elapsed() < longestStartMs)
        QCoreApplication::processEvents();
    if (!preview.canDraw()) {
        state.SkipWithError("there is no screen with OpenGL");
        return;
    }
    for (auto _ : state) {
        state.PauseTiming();
        auto *const copy = new uint8_t[frame.size()];
        std::memcpy(copy, frame.data(), frame.size());
        preview.setFrame(0, 0, int(state.range(0)), int(state.range(1)), copy);
        paints = 0;
        preview.update();
        state.ResumeTiming();
        while (paints == 0)
            QCoreApplication::processEvents();
    }
}
BENCHMARK(paint)->Apply(sizes);

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
