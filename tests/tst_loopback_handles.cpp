#include "tests/support/testbench.h"

#include <QTest>

#include <algorithm>
#include <future>
#include <set>
#include <string>
#include <vector>

using namespace loopback;

/// Finders and receivers: discovery, their whole life, and every misuse that must do no harm.
class TestLoopbackHandles final : public QObject {
    Q_OBJECT

private slots:
    void framesFreedTwice();
    void frameFreedTwiceAfterItsMemoryWasUsedAgain();
    void deadAndForeignHandles();
    void destroyEndsACaptureUnderWay();
    void leakIsWrittenDown();
    void receiverOfAnUnknownSource();
    void sourceByNameAndAddress();
    void shutDownIsQuiet();
    void discoveryFirstAnswerIsEmpty();
    void thousandsOfSources();
    void sourcesAppearDisappearAndChurn();
    void vanishedSourceReturns();
    void closingAFinderEndsItsWait();
    void failuresOnRequest();
};

void TestLoopbackHandles::framesFreedTwice()
{
    TestBench bench(sources(R"("audio": {})"));
    const auto receiver = bench.connect("x");
    QCOMPARE(bench.runtime->capture(receiver, &bench.video, nullptr, nullptr, kLongMs), NDIlib_frame_type_video);
    bench.runtime->freeVideo(receiver, &bench.video);
    bench.runtime->freeVideo(receiver, &bench.video);
    QCOMPARE(bench.runtime->capture(receiver, nullptr, &bench.audio, nullptr, kLongMs), NDIlib_frame_type_audio);
    bench.runtime->freeAudio(receiver, &bench.audio);
    bench.runtime->freeAudio(receiver, &bench.audio);
    const NDIlib_video_frame_v2_t never;
    bench.runtime->freeVideo(receiver, &never);
    bench.runtime->freeVideo(receiver, nullptr);
    const auto truth = bench.truth();
    QCOMPARE(countTruth(truth, "free", 0), std::int64_t{1});
    QCOMPARE(countTruth(truth, "afree", 0), std::int64_t{1});
    QCOMPARE(countTruth(truth, "refree", 0), std::int64_t{4});
}

void TestLoopbackHandles::frameFreedTwiceAfterItsMemoryWasUsedAgain()
{
    TestBench bench(sources(R"("rateD": 1)"));
    const auto receiver = bench.connect("x");
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    const NDIlib_video_frame_v2_t early = bench.video;
    bench.runtime->freeVideo(receiver, &bench.video);
    do { // until a newer frame lies in the same memory
        QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
        if (bench.video.p_data != early.p_data)
            bench.runtime->freeVideo(receiver, &bench.video);
    } while (bench.video.p_data != early.p_data);
    const std::int64_t number = bench.number();
    bench.runtime->freeVideo(receiver, &early);
    QCOMPARE(countTruth(bench.truth(), "refree", 0), std::int64_t{1});
    QCOMPARE(bench.number(), number); // the newer one is still ours
    bench.runtime->freeVideo(receiver, &bench.video);
    QCOMPARE(countTruth(bench.truth(), "refree", 0), std::int64_t{1});
}

void TestLoopbackHandles::deadAndForeignHandles()
{
    TestBench bench(sources(R"("rateD": 1)"));
    const auto receiver = bench.connect("x");
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    bench.runtime->destroyReceiver(receiver);
    int local = 0;
    const auto foreign = reinterpret_cast<NDIlib_recv_instance_t>(&local);
    for (const auto handle : {receiver, foreign, NDIlib_recv_instance_t(nullptr)}) {
        QVERIFY(millisecondsOf([&] { QCOMPARE(bench.capture(handle, 3000), NDIlib_frame_type_none); }) < 2000.0);
        bench.runtime->freeVideo(handle, &bench.video);
        bench.runtime->freeAudio(handle, &bench.audio);
        NDIlib_recv_performance_t total;
        total.video_frames = 5;
        bench.runtime->performance(handle, &total, nullptr);
        QCOMPARE(total.video_frames, std::int64_t{0});
        bench.runtime->destroyReceiver(handle); // of null: allowed
    }
    const auto next = bench.connect("x");
    QVERIFY(next != receiver); // handles are never used again
    const auto truth = bench.truth();
    QCOMPARE(countTruth(truth, "dead", 0), std::int64_t{5});
    QCOMPARE(countTruth(truth, "dead"), std::int64_t{14});
    QCOMPARE(countTruth(truth, "destroy"), std::int64_t{1});
    const auto dead = std::find_if(truth.begin(), truth.end(), [](const auto &one) { return one.kind == "dead"; });
    QCOMPARE(dead->note, std::string("capture"));

    const auto finder = reinterpret_cast<NDIlib_find_instance_t>(&local);
    std::uint32_t count = 7;
    QVERIFY(!bench.runtime->waitForSources(finder, 0));
    QVERIFY(bench.runtime->currentSources(finder, &count) == nullptr);
    QCOMPARE(count, 0U);
    bench.runtime->destroyFinder(finder);
    QCOMPARE(countTruth(bench.truth(), "dead"), std::int64_t{17});
}

void TestLoopbackHandles::destroyEndsACaptureUnderWay()
{
    TestBench bench(sources(R"("endMs": 0)"));
    const auto receiver = bench.connect("x");
    std::promise<void> begun;
    auto capture = std::async(std::launch::async, [&] {
        begun.set_value();
        NDIlib_video_frame_v2_t video;
        return bench.runtime->capture(receiver, &video, nullptr, nullptr, 60000);
    });
    begun.get_future().wait();
    QTest::qWait(50); // nothing tells when the call has begun to wait
    bench.runtime->destroyReceiver(receiver);
    QCOMPARE(capture.get(), NDIlib_frame_type_none);
    QCOMPARE(countTruth(bench.truth(), "dead", 0), std::int64_t{1});
}

void TestLoopbackHandles::leakIsWrittenDown()
{
    TestBench bench(sources(R"("rateD": 1)"));
    const auto receiver = bench.connect("x");
    for (int i = 0; i < 3; ++i)
        QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    bench.runtime->freeVideo(receiver, &bench.video);
    bench.runtime->destroyReceiver(receiver);
    const auto truth = bench.truth();
    QCOMPARE(truth.back().kind, std::string("destroy"));
    QCOMPARE(truth.back().number, std::int64_t{2});
}

void TestLoopbackHandles::receiverOfAnUnknownSource()
{
    TestBench bench(sources(R"("rateD": 1)"));
    const auto receiver = bench.connect("y");
    QVERIFY(receiver != nullptr);
    QVERIFY(bench.runtime->createReceiver(nullptr) != nullptr);
    QCOMPARE(bench.capture(receiver, 30), NDIlib_frame_type_none);
    bench.runtime->destroyReceiver(receiver);
    QCOMPARE(bench.truth().front().number, std::int64_t{-1});
}

void TestLoopbackHandles::sourceByNameAndAddress()
{
    TestBench bench(
        R"({"sources": [{"name": "a", "url": "1"}, {"name": "a", "url": "2"}, {"name": "b", "url": "3"}]})");
    const Runtime &runtime = *bench.runtime;
    QCOMPARE(runtime.findSource("a", "2")->spec().url, std::string("2"));
    QCOMPARE(runtime.findSource("a", "1")->spec().url, std::string("1"));
    QCOMPARE(runtime.findSource("a", "9")->spec().name, std::string("a")); // a name is enough
    QCOMPARE(runtime.findSource("b", nullptr)->spec().url, std::string("3"));
    QCOMPARE(runtime.findSource(nullptr, "3")->spec().name, std::string("b"));
    QCOMPARE(runtime.findSource("", "3")->spec().name, std::string("b"));
    QVERIFY(runtime.findSource("c", "3") == nullptr);
    QVERIFY(runtime.findSource(nullptr, "9") == nullptr);
    QVERIFY(runtime.findSource(nullptr, nullptr) == nullptr);
}

void TestLoopbackHandles::shutDownIsQuiet()
{
    TestBench bench(sources(R"("rateD": 1)"));
    const auto receiver = bench.connect("x");
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    bench.runtime->shutDown();
    while (bench.capture(receiver, 50) == NDIlib_frame_type_video) {
    }
    QCOMPARE(bench.capture(receiver, 50), NDIlib_frame_type_none);
    bench.runtime->freeVideo(receiver, &bench.video);
    bench.runtime->destroyReceiver(receiver);
    const auto again = bench.connect("x");
    QCOMPARE(bench.capture(again), NDIlib_frame_type_video); // and everything can begin anew
}

void TestLoopbackHandles::discoveryFirstAnswerIsEmpty()
{
    TestBench bench(R"({"discoveryMs": 300, "discoveryStepMs": 50})");
    const auto finder = bench.runtime->createFinder();
    QVERIFY(bench.runtime->waitForSources(finder, kLongMs));
    QCOMPARE(bench.names(finder).size(), std::size_t{0});
    QVERIFY(!bench.runtime->waitForSources(finder, 0));
    for (std::size_t count = 0; count < 4; count = bench.names(finder).size())
        QVERIFY(bench.runtime->waitForSources(finder, kLongMs));
    QCOMPARE(bench.names(finder).front(), std::string("LOOPBACK (1080p59.94)"));
    QVERIFY(millisecondsOf([&] { QVERIFY(!bench.runtime->waitForSources(finder, 40)); }) >= 40.0);
    bench.runtime->destroyFinder(finder);
}

void TestLoopbackHandles::thousandsOfSources()
{
    TestBench bench(R"({"discoveryMs": 5, "discoveryStepMs": 2, "sources": [
        {"name": "Größe 日本 %1", "url": "10.0.0.1:%1", "repeat": 2500, "rateN": 100, "width": 320, "height": 240}]})");
    const auto finder = bench.runtime->createFinder();
    std::vector<std::size_t> sizes;
    while (sizes.empty() || sizes.back() < 2500) {
        QVERIFY(bench.runtime->waitForSources(finder, kLongMs));
        sizes.push_back(bench.names(finder).size());
    }
    QVERIFY(std::is_sorted(sizes.begin(), sizes.end()));
    const std::vector<std::string> names = bench.names(finder);
    QCOMPARE(names.size(), std::size_t{2500});
    QCOMPARE(names[0], std::string("Größe 日本 1"));
    QCOMPARE(names[2499], std::string("Größe 日本 2500"));
    QCOMPARE(std::set<std::string>(names.begin(), names.end()).size(), names.size());
    const auto receiver = bench.connect("Größe 日本 1234");
    QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
    QCOMPARE(countTruth(bench.truth(), "create"), std::int64_t{1});
    QCOMPARE(bench.truth().front().number, std::int64_t{1233});
}

void TestLoopbackHandles::sourcesAppearDisappearAndChurn()
{
    const Scenario scenario = *parseScenario(R"({"sources": [
        {"name": "guest", "appearMs": 100, "disappearMs": 300},
        {"name": "churn", "appearMs": 0, "churn": {"periodMs": 100, "fromMs": 150, "untilMs": 420}}]})")
                                   .scenario;
    TruthLog none;
    std::vector<std::unique_ptr<Source>> made;
    for (const SourceSpec &spec : scenario.sources)
        made.push_back(std::make_unique<Source>(spec, 0, none));
    const Finder finder(scenario, made, kNsPerMs);
    using Indexes = std::vector<std::size_t>;
    struct Row {
        std::int64_t sinceMs;
        Indexes visible;
        std::int64_t changeMs;
    };
    const std::vector<Row> rows = {{0, {1}, 100},   {99, {1}, 100},  {100, {0, 1}, 250}, {249, {0, 1}, 250},
                                   {250, {0}, 300}, {299, {0}, 300}, {300, {}, 350},     {350, {1}, 420},
                                   {420, {1}, -1},  {5000, {1}, -1}};
    for (const Row &row : rows) {
        std::int64_t changeNs = INT64_MAX;
        QCOMPARE(finder.visibleAt((row.sinceMs + 1) * kNsPerMs, changeNs), row.visible);
        QCOMPARE(changeNs, row.changeMs < 0 ? INT64_MAX : (row.changeMs + 1) * kNsPerMs);
    }
}

void TestLoopbackHandles::vanishedSourceReturns()
{
    TestBench bench(sources(R"("events": [{"kind": "vanish", "atMs": 500, "ms": 1500}])"));
    const auto finder = bench.runtime->createFinder();
    while (bench.names(finder).empty())
        bench.runtime->waitForSources(finder, kLongMs);
    bench.runtime->waitForSources(finder, 0);
    const auto receiver = bench.connect("x"); // starts the source's clock
    QVERIFY(bench.runtime->waitForSources(finder, kLongMs));
    QCOMPARE(bench.names(finder).size(), std::size_t{0});
    QVERIFY(bench.runtime->waitForSources(finder, kLongMs));
    QCOMPARE(bench.names(finder).size(), std::size_t{1});
    std::vector<std::int64_t> numbers;
    while (numbers.empty() || numbers.back() < 200) {
        QCOMPARE(bench.capture(receiver), NDIlib_frame_type_video);
        numbers.push_back(bench.number());
        bench.runtime->freeVideo(receiver, &bench.video);
    }
    QVERIFY(std::none_of(numbers.begin(), numbers.end(), [](auto number) { return number >= 50 && number < 200; }));
    QCOMPARE(countTruth(bench.truth(), "skip", 0), std::int64_t{150}); // of the source, not of a receiver
}

void TestLoopbackHandles::closingAFinderEndsItsWait()
{
    TestBench bench(R"({"sources": []})");
    const auto finder = bench.runtime->createFinder();
    QVERIFY(bench.runtime->waitForSources(finder, 0));
    std::promise<void> begun;
    auto wait = std::async(std::launch::async, [&] {
        begun.set_value();
        return bench.runtime->waitForSources(finder, 60000);
    });
    begun.get_future().wait();
    bench.runtime->destroyFinder(finder);
    QCOMPARE(wait.get(), false);
}

void TestLoopbackHandles::failuresOnRequest()
{
    TestBench bench(R"({"initialize": false, "finderFails": true, "receiverFails": true})");
    QVERIFY(!bench.runtime->initialize());
    QVERIFY(bench.runtime->createFinder() == nullptr);
    QVERIFY(bench.connect("LOOPBACK (720p50)") == nullptr);
    QVERIFY(TestBench("{}").runtime->initialize());
    TruthLog none;
    Runtime broken(nullptr, none);
    QVERIFY(!broken.initialize());
    QVERIFY(broken.createFinder() == nullptr);
    QVERIFY(broken.createReceiver(nullptr) == nullptr);
}

QTEST_GUILESS_MAIN(TestLoopbackHandles)
#include "tst_loopback_handles.moc"
