#include "tests/support/testbench.h"

#include <QTest>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace loopback;

/// Frames of sources at work in real time, and what receivers get of them, on the loopback's core.
class TestLoopbackSources final : public QObject {
    Q_OBJECT

private slots:
    void everyFrameInOrderAndOnTime();
    void lateTakersDoNotSlowTheClock();
    void receiversShareThePixels();
    void clockGoesOnWithoutReceivers();
    void slowReceiverLosesTheOldest();
    void kindsWithoutAPointerAreThrownAway();
    void bandwidthDecidesWhatComes();
    void audioAndMetadataCarryData();
    void timeoutsAreKept();
    void messagesReachReceivers();
    void framesAsTheScenarioDeclaresThem();
    void unpacedMakesFramesAtOnce();
    void unpacedWithEvents();
    void manyThreads();
};

void TestLoopbackSources::everyFrameInOrderAndOnTime()
{
    TestBench bench(sources(R"("rateD": 1)"));
    const auto receiver = bench.connect("x");
    const std::int64_t startNs = *bench.runtime->findSource("x", nullptr)->clockStartNs();
    std::int64_t leastLateNs[2] = {INT64_MAX, INT64_MAX};
    for (std::int64_t frame = 0; frame < 100; ++frame) {
        QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
        const std::int64_t lateNs = steadyNowNs() - (startNs + frame * 10 * kNsPerMs);
        QCOMPARE(bench.number(), frame);
        QCOMPARE(bench.video.timecode, frame * 100'000);
        QVERIFY(lateNs >= 0);
        leastLateNs[frame / 50] = std::min(leastLateNs[frame / 50], lateNs);
        bench.runtime->freeVideo(receiver, &bench.video);
    }
    // the second half is no later than the first: had the clock drifted, every frame would be
    QVERIFY2(leastLateNs[1] < 5 * kNsPerMs, std::to_string(leastLateNs[1]).c_str());
    bench.runtime->destroyReceiver(receiver);
    const auto truth = bench.truth();
    QCOMPARE(countTruth(truth, "create", 0), std::int64_t{1});
    QCOMPARE(countTruth(truth, "video", 0), std::int64_t{100});
    QCOMPARE(countTruth(truth, "free", 0), std::int64_t{100});
    QCOMPARE(truth.back().kind, std::string("destroy"));
    QCOMPARE(truth.back().number, std::int64_t{0});
    QCOMPARE(truth[1].kind, std::string("ask"));
    QCOMPARE(countTruth(truth, "ask"), std::int64_t{1});
    QCOMPARE(truth[2].note, std::string("320x240"));
}

/// Whoever takes late gets the frames of the meantime at once, and then those of the right time.
void TestLoopbackSources::lateTakersDoNotSlowTheClock()
{
    TestBench bench(sources(R"("rateD": 1)"));
    const auto receiver = bench.connect("x");
    const Source *source = bench.runtime->findSource("x", nullptr);
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    bench.runtime->freeVideo(receiver, &bench.video);
    const auto waiting = [&bench, receiver] {
        NDIlib_recv_performance_t total;
        bench.runtime->performance(receiver, &total, nullptr);
        return total.video_frames >= 10;
    };
    QTRY_VERIFY_WITH_TIMEOUT(waiting(), 20000);
    for (std::int64_t frame = 1; frame < 30; ++frame) {
        QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
        QCOMPARE(bench.number(), frame);
        QVERIFY(steadyNowNs() >= *source->clockStartNs() + frame * 10 * kNsPerMs);
        bench.runtime->freeVideo(receiver, &bench.video);
    }
}

void TestLoopbackSources::receiversShareThePixels()
{
    TestBench bench(sources(R"("rateD": 1)"));
    std::vector<NDIlib_recv_instance_t> receivers;
    receivers.reserve(8);
    for (int i = 0; i < 8; ++i)
        receivers.push_back(bench.connect("x"));
    std::vector<NDIlib_video_frame_v2_t> frames;
    constexpr std::int64_t wanted = 20; // by then all are connected
    for (const auto receiver : receivers) {
        QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
        while (bench.number() < wanted) {
            bench.runtime->freeVideo(receiver, &bench.video);
            QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
        }
        QCOMPARE(bench.number(), wanted);
        frames.push_back(bench.video);
        QCOMPARE(static_cast<const void *>(frames.back().p_data), static_cast<const void *>(frames.front().p_data));
        QCOMPARE(frames.back().timestamp, frames.front().timestamp);
    }
    for (std::size_t i = 0; i < 8; ++i) // still good in the hands of each until it is freed
        bench.runtime->freeVideo(receivers[i], &frames[i]);
    QCOMPARE(countTruth(bench.truth(), "refree"), std::int64_t{0});
}

void TestLoopbackSources::clockGoesOnWithoutReceivers()
{
    TestBench bench(R"({"connectMs": 0, "sources": [{"name": "x", "width": 320, "height": 240, "rateN": 100}]})");
    const auto first = bench.connect("x");
    const std::int64_t startNs = *bench.runtime->findSource("x", nullptr)->clockStartNs();
    QCOMPARE(bench.capture(first), NDIlib_frame_type_video);
    QCOMPARE(bench.number(), std::int64_t{0});
    bench.runtime->destroyReceiver(first);
    QTRY_VERIFY_WITH_TIMEOUT(steadyNowNs() > startNs + 100 * kNsPerMs, 20000);
    const std::int64_t againNs = steadyNowNs();
    const auto second = bench.connect("x");
    QCOMPARE(bench.capture(second), NDIlib_frame_type_video);
    // the first frame due after the connection is made
    const std::int64_t expected = (againNs - startNs) / (10 * kNsPerMs);
    QVERIFY(bench.number() >= expected && bench.number() <= expected + 20);
    QCOMPARE(*bench.runtime->findSource("x", nullptr)->clockStartNs(), startNs);
}

void TestLoopbackSources::slowReceiverLosesTheOldest()
{
    TestBench bench(R"({"queueFrames": 4, "sources": [{"name": "x", "rateN": 500, "width": 320, "height": 240,
        "endMs": 100}]})"); // 50 frames, 0 to 49
    const auto receiver = bench.connect("x");
    NDIlib_recv_performance_t total;
    NDIlib_recv_performance_t dropped;
    const auto allCame = [&] {
        bench.runtime->performance(receiver, &total, &dropped);
        return total.video_frames == 50;
    };
    QTRY_VERIFY_WITH_TIMEOUT(allCame(), 20000);
    QCOMPARE(dropped.video_frames, std::int64_t{46});
    for (std::int64_t frame = 46; frame < 50; ++frame) {
        QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
        QCOMPARE(bench.number(), frame);
    }
    QCOMPARE(bench.capture(receiver, 0), NDIlib_frame_type_none);
    std::int64_t lost = 0;
    for (const TruthRecord &record : bench.truth()) {
        if (record.kind == "drop")
            QCOMPARE(record.number, lost++);
    }
    QCOMPARE(lost, std::int64_t{46});
}

void TestLoopbackSources::kindsWithoutAPointerAreThrownAway()
{
    TestBench bench(sources(R"("audio": {}, "metadata": {"everyFrames": 1}, "endMs": 50)"));
    const auto receiver = bench.connect("x");
    const auto countOf = [&](bool video, bool audio, bool metadata, std::int32_t type) {
        int count = 0;
        for (;;) {
            const auto got =
                bench.runtime->capture(receiver, video ? &bench.video : nullptr, audio ? &bench.audio : nullptr,
                                       metadata ? &bench.metadata : nullptr, 300);
            if (got != type)
                return got == NDIlib_frame_type_none ? count : -1;
            ++count;
        }
    };
    QCOMPARE(countOf(false, true, false, NDIlib_frame_type_audio), 5);
    QCOMPARE(bench.capture(receiver, 0), NDIlib_frame_type_none); // the rest is gone, not kept
    NDIlib_recv_performance_t total;
    NDIlib_recv_performance_t dropped;
    bench.runtime->performance(receiver, &total, &dropped);
    QCOMPARE(total.video_frames, std::int64_t{5});
    QCOMPARE(total.metadata_frames, std::int64_t{5});
    QCOMPARE(dropped.video_frames, std::int64_t{0});
    QCOMPARE(countTruth(bench.truth(), "video"), std::int64_t{0});
    QCOMPARE(countTruth(bench.truth(), "audio", 0), std::int64_t{5});
}

void TestLoopbackSources::bandwidthDecidesWhatComes()
{
    const std::string json = sources(R"("audio": {}, "metadata": {"everyFrames": 1}, "endMs": 30)");
    const auto countsFor = [&json](NDIlib_recv_bandwidth_e bandwidth) {
        TestBench bench(json);
        const auto receiver = bench.connect("x", bandwidth);
        std::vector<int> counts(4, 0);
        for (auto type = bench.capture(receiver, 300); type != NDIlib_frame_type_none;
             type = bench.capture(receiver, 300))
            ++counts.at(static_cast<std::size_t>(type));
        return counts;
    };
    using Counts = std::vector<int>; // none, video, audio, metadata
    QCOMPARE(countsFor(NDIlib_recv_bandwidth_highest), Counts({0, 3, 3, 3}));
    QCOMPARE(countsFor(NDIlib_recv_bandwidth_lowest), Counts({0, 3, 3, 3}));
    QCOMPARE(countsFor(NDIlib_recv_bandwidth_audio_only), Counts({0, 0, 3, 3}));
    QCOMPARE(countsFor(NDIlib_recv_bandwidth_metadata_only), Counts({0, 0, 0, 3}));
}

void TestLoopbackSources::audioAndMetadataCarryData()
{
    TestBench bench(sources(
        R"("audio": {"channels": 3, "sampleRate": 44100}, "metadata": {"everyFrames": 2, "text": "<ä/>"}, "frameMetadata": "<f/>")"));
    const auto receiver = bench.connect("x");
    bool audioSeen = false;
    bool metadataSeen = false;
    bool videoSeen = false;
    while (!audioSeen || !metadataSeen || !videoSeen) {
        const auto type = bench.capture(receiver);
        QVERIFY(type != NDIlib_frame_type_none);
        if (type == NDIlib_frame_type_audio) {
            QCOMPARE(bench.audio.no_samples, 441);
            QCOMPARE(bench.audio.no_channels, 3);
            QCOMPARE(bench.audio.sample_rate, 44100);
            float loudest = 0.0F;
            for (int channel = 0; channel < 3; ++channel) {
                for (int i = 0; i < 441; ++i)
                    loudest =
                        std::max(loudest, bench.audio.p_data[channel * bench.audio.channel_stride_in_bytes / 4 + i]);
            }
            QVERIFY(loudest > 0.09F && loudest < 0.11F);
            bench.runtime->freeAudio(receiver, &bench.audio);
            audioSeen = true;
        } else if (type == NDIlib_frame_type_metadata) {
            QCOMPARE(QByteArray(bench.metadata.p_data), QByteArray("<ä/>"));
            QCOMPARE(bench.metadata.length, 6);
            metadataSeen = true;
        } else {
            QCOMPARE(QByteArray(bench.video.p_metadata), QByteArray("<f/>"));
            QVERIFY(std::abs(bench.video.timestamp - wallNow100ns()) < 600'000'000); // a minute
            videoSeen = true;
        }
    }
    // a second block goes on with the tone: 441 samples are nine more than whole periods of 48
    const float expected = bench.audio.p_data[9];
    while (bench.capture(receiver) != NDIlib_frame_type_audio) {
    }
    bench.runtime->freeAudio(receiver, &bench.audio);
    QCOMPARE(bench.audio.p_data[0], expected);
    QCOMPARE(countTruth(bench.truth(), "afree"), countTruth(bench.truth(), "audio"));
}

void TestLoopbackSources::timeoutsAreKept()
{
    TestBench bench(sources(R"("endMs": 0)"));
    const auto receiver = bench.connect("x");
    QVERIFY(millisecondsOf([&] { QCOMPARE(bench.capture(receiver, 40), NDIlib_frame_type_none); }) >= 40.0);
    QVERIFY(millisecondsOf([&] {
                for (int i = 0; i < 100; ++i)
                    bench.capture(receiver, 0);
            })
            < 1000.0);
}

void TestLoopbackSources::messagesReachReceivers()
{
    TestBench bench(sources(R"("endMs": 0, "events": [{"kind": "error", "atMs": 20, "receiver": 1},
        {"kind": "status", "atMs": 30}, {"kind": "unknown", "atMs": 40, "value": 107}, {"kind": "error", "atMs": 50}])"));
    const auto first = bench.connect("x");
    const auto second = bench.connect("x");
    for (const int type : {100, 107, 4})
        QCOMPARE(static_cast<int>(bench.capture(first)), type);
    for (const int type : {4, 100, 107, 4})
        QCOMPARE(static_cast<int>(bench.capture(second)), type);
    const auto truth = bench.truth();
    QCOMPARE(countTruth(truth, "error", 0), std::int64_t{1});
    QCOMPARE(countTruth(truth, "error", 1), std::int64_t{2});
    QCOMPARE(countTruth(truth, "status"), std::int64_t{2});
    const auto unknown =
        std::find_if(truth.begin(), truth.end(), [](const auto &one) { return one.kind == "unknown"; });
    QCOMPARE(unknown->number, std::int64_t{107});
}

void TestLoopbackSources::framesAsTheScenarioDeclaresThem()
{
    TestBench bench(
        R"({"connectMs": 5, "sources": [{"name": "x", "width": 64, "height": 48, "fourCC": "BGRA", "rateN": 7,
        "rateD": 0, "clockRateN": 200, "aspect": 1.25, "frameFormat": "interleaved", "timestamps": false, "events": [
        {"kind": "zeroSize", "atFrame": 1, "frames": 1},
        {"kind": "size", "atFrame": 2, "width": -3, "height": 16384, "fourCC": "abcd", "stride": -8},
        {"kind": "size", "atFrame": 3, "width": 32, "height": 16, "fourCC": "UYVY", "noData": true},
        {"kind": "size", "atFrame": 4, "width": 16384, "height": 16384}]}]})");
    const auto receiver = bench.connect("x");
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    QCOMPARE(bench.video.xres, 64);
    QCOMPARE(bench.video.yres, 48);
    QCOMPARE(bench.video.FourCC, NDIlib_FourCC_video_type_BGRA);
    QCOMPARE(bench.video.line_stride_in_bytes, 256);
    QCOMPARE(bench.video.frame_rate_N, 7);
    QCOMPARE(bench.video.frame_rate_D, 0);
    QCOMPARE(bench.video.picture_aspect_ratio, 1.25F);
    QCOMPARE(bench.video.frame_format_type, NDIlib_frame_format_type_interleaved);
    QCOMPARE(bench.video.timestamp, std::int64_t{INT64_MAX});
    QVERIFY(bench.video.p_metadata == nullptr);
    bench.runtime->freeVideo(receiver, &bench.video);
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    QCOMPARE(bench.video.xres, 0);
    QVERIFY(bench.video.p_data == nullptr);
    bench.runtime->freeVideo(receiver, &bench.video);
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    QCOMPARE(bench.video.xres, -3);
    QCOMPARE(bench.video.yres, 16384);
    QCOMPARE(static_cast<int>(bench.video.FourCC), 0x64636261);
    QCOMPARE(bench.video.line_stride_in_bytes, -8);
    bench.runtime->freeVideo(receiver, &bench.video);
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    QCOMPARE(bench.video.xres, 32);
    QVERIFY(bench.video.p_data == nullptr);
    bench.runtime->freeVideo(receiver, &bench.video);
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    QCOMPARE(bench.video.xres, 16384);
    QVERIFY(bench.video.p_data != nullptr);
    QCOMPARE(int(bench.video.p_data[std::size_t{16384} * 16384 * 2 - 1]), 0); // there to the last byte
    bench.runtime->freeVideo(receiver, &bench.video);
    bench.runtime->destroyReceiver(receiver);
    QCOMPARE(countTruth(bench.truth(), "free"), std::int64_t{5});
    QCOMPARE(countTruth(bench.truth(), "refree"), std::int64_t{0});
}

void TestLoopbackSources::unpacedMakesFramesAtOnce()
{
    TestBench bench(R"({"unpaced": true, "connectMs": 100000, "sources": [{"name": "x", "rateN": 1}]})");
    const auto receiver = bench.connect("x");
    const auto other = bench.connect("x");
    for (std::int64_t frame = 0; frame < 2000; ++frame) { // half an hour of its own clock
        QCOMPARE(bench.capture(receiver, 0), NDIlib_frame_type_video);
        QCOMPARE(bench.number(), frame);
        bench.runtime->freeVideo(receiver, &bench.video);
    }
    QCOMPARE(bench.capture(other, 0), NDIlib_frame_type_video);
    QCOMPARE(bench.number(), std::int64_t{0}); // each receiver at its own speed
    QVERIFY(bench.runtime->findSource("x", nullptr)->pool().size() <= 2);
    QVERIFY(!bench.runtime->findSource("x", nullptr)->clockStartNs().has_value());
}

void TestLoopbackSources::unpacedWithEvents()
{
    TestBench bench(R"({"unpaced": true, "sources": [{"name": "x", "rateN": 10, "endMs": 600, "events": [
        {"kind": "drop", "atFrame": 1, "frames": 2}, {"kind": "error", "atMs": 350, "receiver": 0},
        {"kind": "status", "atMs": 350}]}]})");
    const auto first = bench.connect("x");
    const auto second = bench.connect("x");
    for (const int type : {1, 1, 4, 100, 1, 1})
        QCOMPARE(static_cast<int>(bench.capture(first, 0)), type);
    for (const int type : {1, 1, 100, 1, 1, 0})
        QCOMPARE(static_cast<int>(bench.capture(second, 0)), type);
    QCOMPARE(countTruth(bench.truth(), "skip"), std::int64_t{4}); // two for each, as each plays for itself
}

/// Everything at once, for the sanitizers: receivers and finders made, used and destroyed.
void TestLoopbackSources::manyThreads()
{
    TestBench bench(R"({"connectMs": 1, "queueFrames": 2, "discoveryMs": 1, "sources": [
        {"name": "1", "rateN": 1000, "width": 160, "height": 120, "audio": {"blocksPerFrame": 2}},
        {"name": "2", "rateN": 700, "width": 160, "height": 120, "jitter": {"kind": "uniform", "amplitudeMs": 3},
         "events": [{"kind": "size", "atFrame": 20, "width": 200, "height": 100},
                    {"kind": "vanish", "atFrame": 40, "ms": 10}]}]})");
    std::vector<std::thread> threads;
    threads.reserve(6);
    std::atomic<int> frames{0};
    for (int i = 0; i < 6; ++i)
        threads.emplace_back([&bench, &frames, i] {
            for (int round = 0; round < 5; ++round) {
                const auto receiver = bench.connect(i % 2 == 0 ? "1" : "2");
                for (int taken = 0; taken < 30;) {
                    NDIlib_video_frame_v2_t video;
                    NDIlib_audio_frame_v2_t audio;
                    const auto type = bench.runtime->capture(receiver, &video, &audio, nullptr, 100);
                    if (type == NDIlib_frame_type_audio)
                        bench.runtime->freeAudio(receiver, &audio);
                    if (type != NDIlib_frame_type_video)
                        continue;
                    frames += video.p_data[0] > 0 ? 1 : 0;
                    bench.runtime->freeVideo(receiver, &video);
                    ++taken;
                }
                bench.runtime->destroyReceiver(receiver);
                const auto finder = bench.runtime->createFinder();
                bench.runtime->waitForSources(finder, 5);
                std::uint32_t count = 0;
                bench.runtime->currentSources(finder, &count);
                bench.runtime->destroyFinder(finder);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(frames.load(), 6 * 5 * 30);
    const auto truth = bench.truth();
    QCOMPARE(countTruth(truth, "free"), std::int64_t{900});
    QCOMPARE(countTruth(truth, "video"), std::int64_t{900});
    QCOMPARE(countTruth(truth, "refree"), std::int64_t{0});
    QCOMPARE(countTruth(truth, "dead"), std::int64_t{0});
    QCOMPARE(countTruth(truth, "destroy"), std::int64_t{30});
}

QTEST_GUILESS_MAIN(TestLoopbackSources)
#include "tst_loopback_sources.moc"
