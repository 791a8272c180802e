#include "loopback/sourceclock.h"
#include "loopback/timeline.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace loopback;

/// When frames are due and what happens on a source's timeline: pure computation, no waiting.
class TestLoopbackCore final : public QObject {
    Q_OBJECT

private slots:
    void deadlinesAreExact_data();
    void deadlinesAreExact();
    void deadlinesStayExactForDays();
    void rateChangeKeepsTheTime();
    void jitterIsReproducibleAndBounded_data();
    void jitterIsReproducibleAndBounded();
    void jitterDependsOnSeed();
    void jitterDoesNotAddUpOrReorder();
    void burstJitterHoldsFramesBack();
    void startAndEnd();
    void dropLeavesFramesOut();
    void stallGoesOnAtTheLivePosition();
    void burstComesBackToBack();
    void messagesComeAtTheirTime_data();
    void messagesComeAtTheirTime();
    void messagesComeAfterTheLastFrame();
    void sizeAndRateChange();
    void zeroSizeFrames();
    void vanishIsQuietAndOutOfTheList();
    void vanishAtAFrameAfterARateChange();
    void audioBetweenFrames();
    void audioOfAFixedLength();
    void metadataEverySoManyFrames();
    void stepsAreInOrderWithEverythingAtOnce();
};

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

SourceSpec sourceOf(Rate rate)
{
    SourceSpec spec;
    spec.name = "x";
    spec.clockRate = rate;
    spec.format.declaredRate = rate;
    return spec;
}

Event eventOf(EventKind kind, std::optional<std::int64_t> atNs, std::optional<std::int64_t> atFrame = {})
{
    Event event;
    event.kind = kind;
    event.atNs = atNs;
    event.atFrame = atFrame;
    return event;
}

/// All steps up to and without `untilNs`.
std::vector<Step> play(const SourceSpec &spec, std::int64_t untilNs)
{
    std::vector<Step> steps;
    Timeline timeline(spec);
    for (std::optional<Step> step = timeline.next(); step && step->dueNs < untilNs; step = timeline.next())
        steps.push_back(*step);
    return steps;
}

std::vector<Step> only(const std::vector<Step> &steps, StepKind kind)
{
    std::vector<Step> found;
    std::copy_if(steps.begin(), steps.end(), std::back_inserter(found),
                 [kind](const Step &step) { return step.kind == kind; });
    return found;
}

std::vector<std::int64_t> frames(const std::vector<Step> &steps)
{
    std::vector<std::int64_t> numbers;
    std::transform(steps.begin(), steps.end(), std::back_inserter(numbers),
                   [](const Step &step) { return step.frame; });
    return numbers;
}

using Numbers = std::vector<std::int64_t>;

} // namespace

void TestLoopbackCore::deadlinesAreExact_data()
{
    QTest::addColumn<int>("n");
    QTest::addColumn<int>("d");
    QTest::newRow("59.94") << 60000 << 1001;
    QTest::newRow("29.97") << 30000 << 1001;
    QTest::newRow("23.976") << 24000 << 1001;
    QTest::newRow("25") << 25 << 1;
    QTest::newRow("50") << 50 << 1;
    QTest::newRow("a rate with a long period") << 1'000'000'007 << 16'683'333;
}

/// Five minutes and an hour of frames: every n whole periods a deadline is known without rounding,
/// and no interval is more than a nanosecond off.
void TestLoopbackCore::deadlinesAreExact()
{
    QFETCH(int, n);
    QFETCH(int, d);
    const SourceClock clock({n, d});
    const long double intervalNs = 1e9L * d / n;
    std::int64_t before = 0;
    std::int64_t frame = 0;
    for (std::int64_t ns = 0; ns < 3600 * kSecond; ns = clock.frameNs(++frame)) {
        if (frame > 0)
            QVERIFY(std::abs(static_cast<long double>(ns - before) - intervalNs) < 1.0L);
        QVERIFY(std::abs(static_cast<long double>(ns) - intervalNs * static_cast<long double>(frame)) < 1.01L);
        if (frame % n == 0)
            QCOMPARE(ns, frame / n * d * kSecond);
        before = ns;
    }
    QVERIFY(frame > 60000);
}

void TestLoopbackCore::deadlinesStayExactForDays()
{
    const SourceClock clock({60000, 1001});
    const std::int64_t periods = 86400; // of 60000 frames in 1001 s: a thousand days
    QCOMPARE(clock.frameNs(60000 * periods), 1001 * periods * kSecond);
    QCOMPARE(clock.frameNs(60000 * periods + 1), 1001 * periods * kSecond + 16'683'333);
    QCOMPARE(clock.frameNs(60000 * periods - 1), 1001 * periods * kSecond - 16'683'334);
    QCOMPARE(SourceClock({25, 1}).frameNs(7500), 300 * kSecond);
}

void TestLoopbackCore::rateChangeKeepsTheTime()
{
    SourceClock clock({25, 1});
    clock.changeRate(100, {50, 1});
    QCOMPARE(clock.frameNs(100), 4 * kSecond);
    QCOMPARE(clock.frameNs(150), 5 * kSecond);
    clock.changeRate(150, {10, 1});
    QCOMPARE(clock.frameNs(160), 6 * kSecond);
}

void TestLoopbackCore::jitterIsReproducibleAndBounded_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<qint64>("least");
    QTest::addColumn<qint64>("most");
    QTest::addColumn<double>("deviation");
    const qint64 ms = kNsPerMs;
    QTest::newRow("none") << int(JitterKind::none) << qint64(0) << qint64(0) << 0.0;
    QTest::newRow("uniform: 3 ms to both sides")
        << int(JitterKind::uniform) << -3 * ms << 3 * ms << 3e6 / std::sqrt(3.0);
    QTest::newRow("gaussian: cut at 4 sigma of 2 ms") << int(JitterKind::gaussian) << -8 * ms << 8 * ms << 2e6;
    QTest::newRow("burst: up to 3 ms late") << int(JitterKind::burst) << qint64(0) << 3 * ms << -1.0;
}

void TestLoopbackCore::jitterIsReproducibleAndBounded()
{
    QFETCH(int, kind);
    QFETCH(qint64, least);
    QFETCH(qint64, most);
    QFETCH(double, deviation);
    JitterSpec spec;
    spec.kind = static_cast<JitterKind>(kind);
    spec.amplitudeNs = 3 * kNsPerMs;
    spec.sigmaNs = 2 * kNsPerMs;
    spec.everyFrames = 20;
    Jitter first(spec);
    Jitter second(spec);
    double squares = 0.0;
    constexpr int count = 20000;
    for (std::int64_t frame = 0; frame < count; ++frame) {
        const std::int64_t offset = first.offsetNs(frame, frame * kNsPerMs);
        QCOMPARE(second.offsetNs(frame, frame * kNsPerMs), offset);
        QVERIFY(offset >= least && offset <= most);
        squares += static_cast<double>(offset) * static_cast<double>(offset);
    }
    QCOMPARE(first.maxEarlyNs(), -least);
    const double expected = deviation < 0.0 ? std::sqrt(squares / count) : deviation; // bursts have none
    QVERIFY(std::abs(std::sqrt(squares / count) - expected) <= expected * 0.05);
    QVERIFY(kind == int(JitterKind::none) || squares > 0.0);
}

void TestLoopbackCore::jitterDependsOnSeed()
{
    JitterSpec spec;
    spec.kind = JitterKind::uniform;
    spec.amplitudeNs = kNsPerMs;
    Jitter one(spec);
    spec.seed = 2;
    Jitter two(spec);
    int same = 0;
    for (std::int64_t frame = 0; frame < 1000; ++frame)
        same += one.offsetNs(frame, 0) == two.offsetNs(frame, 0) ? 1 : 0;
    QVERIFY(same < 10);
}

void TestLoopbackCore::jitterDoesNotAddUpOrReorder()
{
    SourceSpec spec = sourceOf({50, 1});
    spec.jitter.kind = JitterKind::uniform;
    spec.jitter.amplitudeNs = 50 * kNsPerMs; // far more than the distance of two frames
    const std::vector<Step> video = only(play(spec, 600 * kSecond), StepKind::video);
    QVERIFY(video.size() > 29900);
    std::int64_t before = 0;
    for (std::size_t i = 0; i < video.size(); ++i) {
        QCOMPARE(video[i].frame, static_cast<std::int64_t>(i));
        QVERIFY(video[i].dueNs >= before);
        QVERIFY(std::abs(video[i].dueNs - video[i].frame * 20 * kNsPerMs) <= 50 * kNsPerMs);
        before = video[i].dueNs;
    }
}

void TestLoopbackCore::burstJitterHoldsFramesBack()
{
    SourceSpec spec = sourceOf({100, 1});
    spec.jitter.kind = JitterKind::burst;
    spec.jitter.amplitudeNs = 55 * kNsPerMs;
    spec.jitter.everyFrames = 50;
    const std::vector<Step> video = only(play(spec, 100 * kSecond), StepKind::video);
    int together = 0;
    int bursts = 0;
    for (std::size_t i = 0; i < video.size(); ++i) {
        QVERIFY(i == 0 || video[i].dueNs >= video[i - 1].dueNs);
        together += i > 0 && video[i].dueNs == video[i - 1].dueNs ? 1 : 0;
        bursts += video[i].dueNs == video[i].frame * 10 * kNsPerMs + 55 * kNsPerMs ? 1 : 0;
    }
    QVERIFY(bursts > 50 && bursts < 400);
    QCOMPARE(together, bursts * 5); // 55 ms hold six frames of 10 ms, which come as one
}

void TestLoopbackCore::startAndEnd()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.startNs = 250 * kNsPerMs;
    spec.endNs = 600 * kNsPerMs;
    const std::vector<Step> steps = play(spec, INT64_MAX);
    QCOMPARE(frames(steps), Numbers({3, 4, 5})); // frame 6 is due exactly at the end
    QCOMPARE(only(steps, StepKind::video).size(), std::size_t{3});
}

void TestLoopbackCore::dropLeavesFramesOut()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.events.push_back(eventOf(EventKind::drop, std::nullopt, 2));
    spec.events.back().frames = 3;
    const std::vector<Step> steps = play(spec, 700 * kNsPerMs);
    QCOMPARE(frames(only(steps, StepKind::video)), Numbers({0, 1, 5, 6}));
    QCOMPARE(frames(only(steps, StepKind::skip)), Numbers({2, 3, 4}));
}

void TestLoopbackCore::stallGoesOnAtTheLivePosition()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.audio.blocksPerFrame = 1;
    spec.events.push_back(eventOf(EventKind::stall, 200 * kNsPerMs));
    spec.events.back().durationNs = 300 * kNsPerMs;
    const std::vector<Step> steps = play(spec, 700 * kNsPerMs);
    QCOMPARE(frames(only(steps, StepKind::video)), Numbers({0, 1, 5, 6}));
    QCOMPARE(frames(only(steps, StepKind::skip)), Numbers({2, 3, 4}));
    QCOMPARE(only(steps, StepKind::video)[2].dueNs, 500 * kNsPerMs);
    QCOMPARE(only(steps, StepKind::audio).size(), std::size_t{4});
}

void TestLoopbackCore::burstComesBackToBack()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.events.push_back(eventOf(EventKind::burst, 150 * kNsPerMs));
    spec.events.back().frames = 3;
    const std::vector<Step> video = only(play(spec, 700 * kNsPerMs), StepKind::video);
    Numbers due;
    for (const Step &step : video)
        due.push_back(step.dueNs / kNsPerMs);
    QCOMPARE(due, Numbers({0, 100, 400, 400, 400, 500, 600}));
    QCOMPARE(frames(video), Numbers({0, 1, 2, 3, 4, 5, 6}));
    QCOMPARE(video[2].timecode100ns, std::int64_t{2'000'000}); // keeps its own time
}

void TestLoopbackCore::messagesComeAtTheirTime_data()
{
    QTest::addColumn<int>("event");
    QTest::addColumn<int>("step");
    QTest::newRow("error") << int(EventKind::error) << int(StepKind::error);
    QTest::newRow("status change") << int(EventKind::status) << int(StepKind::status);
    QTest::newRow("unknown type") << int(EventKind::unknown) << int(StepKind::unknown);
    QTest::newRow("metadata") << int(EventKind::metadata) << int(StepKind::metadata);
}

void TestLoopbackCore::messagesComeAtTheirTime()
{
    QFETCH(int, event);
    QFETCH(int, step);
    SourceSpec spec = sourceOf({10, 1});
    spec.events.push_back(eventOf(static_cast<EventKind>(event), 150 * kNsPerMs));
    spec.events.push_back(eventOf(static_cast<EventKind>(event), std::nullopt, 4));
    for (Event &one : spec.events) {
        one.value = 105;
        one.receiver = 3;
        one.text = "<t/>";
    }
    const std::vector<Step> steps = play(spec, kSecond);
    const std::vector<Step> found = only(steps, static_cast<StepKind>(step));
    QCOMPARE(found.size(), std::size_t{2});
    QCOMPARE(found[0].dueNs, 150 * kNsPerMs);
    QCOMPARE(found[1].dueNs, 400 * kNsPerMs);
    QCOMPARE(found[0].value, event == int(EventKind::unknown) ? 105 : 0);
    QCOMPARE(found[0].receiver.value_or(-1), event == int(EventKind::error) ? 3 : -1);
    QCOMPARE(found[0].text != nullptr, event == int(EventKind::metadata));
    QCOMPARE(only(steps, StepKind::video).size(), std::size_t{10});
    const auto at = std::find_if(steps.begin(), steps.end(), [step](const Step &one) {
        return one.kind == static_cast<StepKind>(step) && one.dueNs == 400 * kNsPerMs;
    });
    QVERIFY(at + 1 != steps.end());
    QCOMPARE((at + 1)->frame, std::int64_t{4}); // before its frame
}

void TestLoopbackCore::messagesComeAfterTheLastFrame()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.endNs = 200 * kNsPerMs;
    spec.events.push_back(eventOf(EventKind::error, 5 * kSecond));
    const std::vector<Step> steps = play(spec, INT64_MAX);
    QCOMPARE(steps.size(), std::size_t{3});
    QCOMPARE(steps.back().kind, StepKind::error);
    QCOMPARE(steps.back().dueNs, 5 * kSecond);
}

void TestLoopbackCore::sizeAndRateChange()
{
    SourceSpec spec = sourceOf({10, 1});
    Event size = eventOf(EventKind::size, std::nullopt, 2);
    size.width = 320;
    size.height = 240;
    Event rate = eventOf(EventKind::rate, 250 * kNsPerMs);
    rate.declaredRate = {20, 0};
    rate.clockRate = {20, 1};
    spec.events = {rate, size};
    const std::vector<Step> video = only(play(spec, 460 * kNsPerMs), StepKind::video);
    QCOMPARE(video.size(), std::size_t{7});
    QCOMPARE(video[1].format.width, 1920);
    QCOMPARE(video[2].format.width, 320);
    QCOMPARE(video[2].format.height, 240);
    QCOMPARE(video[2].format.fourCC, 0x59565955U);
    QCOMPARE(video[2].format.declaredRate.n, 10);
    QCOMPARE(video[3].dueNs, 300 * kNsPerMs); // the first frame of the new rate keeps its time
    QCOMPARE(video[3].format.declaredRate.n, 20);
    QCOMPARE(video[3].format.declaredRate.d, 0);
    QCOMPARE(video[4].dueNs, 350 * kNsPerMs);
    QCOMPARE(video[6].dueNs, 450 * kNsPerMs);
}

void TestLoopbackCore::zeroSizeFrames()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.events.push_back(eventOf(EventKind::zeroSize, std::nullopt, 1));
    spec.events.back().frames = 2;
    const std::vector<Step> video = only(play(spec, 500 * kNsPerMs), StepKind::video);
    Numbers widths;
    for (const Step &step : video)
        widths.push_back(step.format.width);
    QCOMPARE(widths, Numbers({1920, 0, 0, 1920, 1920}));
    QCOMPARE(video[1].format.height, 0);
    QCOMPARE(video[1].format.noData, true);
    QCOMPARE(video[3].format.noData, false);
}

void TestLoopbackCore::vanishIsQuietAndOutOfTheList()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.events.push_back(eventOf(EventKind::vanish, 150 * kNsPerMs));
    spec.events.back().durationNs = 200 * kNsPerMs;
    QCOMPARE(frames(only(play(spec, 600 * kNsPerMs), StepKind::video)), Numbers({0, 1, 4, 5}));
    const std::vector<Window> windows = Timeline::vanishWindows(spec);
    QCOMPARE(windows.size(), std::size_t{1});
    QCOMPARE(windows[0].fromNs, 150 * kNsPerMs);
    QCOMPARE(windows[0].untilNs, 350 * kNsPerMs);
    QVERIFY(Timeline::vanishWindows(sourceOf({10, 1})).empty());
}

void TestLoopbackCore::vanishAtAFrameAfterARateChange()
{
    SourceSpec spec = sourceOf({10, 1});
    Event rate = eventOf(EventKind::rate, std::nullopt, 10);
    rate.clockRate = {100, 1};
    Event vanish = eventOf(EventKind::vanish, std::nullopt, 20);
    vanish.durationNs = kSecond;
    Event never = eventOf(EventKind::vanish, std::nullopt, 1000);
    spec.events = {never, vanish, rate};
    spec.endNs = 5 * kSecond;
    const std::vector<Window> windows = Timeline::vanishWindows(spec);
    QCOMPARE(windows.size(), std::size_t{1}); // frame 1000 is after the end
    QCOMPARE(windows[0].fromNs, 1100 * kNsPerMs);
    QCOMPARE(windows[0].untilNs, 2100 * kNsPerMs);
}

void TestLoopbackCore::audioBetweenFrames()
{
    SourceSpec spec = sourceOf({30000, 1001});
    spec.audio.blocksPerFrame = 2;
    const std::vector<Step> steps = play(spec, 1001 * kSecond);
    const std::vector<Step> audio = only(steps, StepKind::audio);
    std::int64_t samples = 0;
    for (const Step &block : audio) {
        QCOMPARE(block.firstSample, samples); // without a gap
        samples += block.samples;
    }
    QCOMPARE(samples, std::int64_t{1001} * 48000);
    QCOMPARE(audio.size(), std::size_t{60000});
    QCOMPARE(steps[0].kind, StepKind::video);
    QCOMPARE(steps[1].kind, StepKind::audio);
    QCOMPARE(steps[2].kind, StepKind::audio);
    QCOMPARE(steps[3].kind, StepKind::video);
    QVERIFY(steps[1].dueNs > steps[0].dueNs && steps[1].dueNs < steps[2].dueNs && steps[2].dueNs < steps[3].dueNs);
}

void TestLoopbackCore::audioOfAFixedLength()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.audio.blocksPerFrame = 1;
    spec.audio.samples = 123;
    const std::vector<Step> audio = only(play(spec, 300 * kNsPerMs), StepKind::audio);
    QCOMPARE(frames(audio), Numbers({0, 1, 2}));
    QCOMPARE(audio[2].samples, 123);
}

void TestLoopbackCore::metadataEverySoManyFrames()
{
    SourceSpec spec = sourceOf({10, 1});
    spec.metadata = {3, "<m/>"};
    const std::vector<Step> metadata = only(play(spec, kSecond), StepKind::metadata);
    QCOMPARE(metadata.size(), std::size_t{4}); // frames 0, 3, 6 and 9
    QCOMPARE(metadata[1].dueNs, 300 * kNsPerMs);
    QCOMPARE(metadata[1].text, static_cast<const std::string *>(&spec.metadata.text));
}

void TestLoopbackCore::stepsAreInOrderWithEverythingAtOnce()
{
    SourceSpec spec = sourceOf({60000, 1001});
    spec.jitter.kind = JitterKind::gaussian;
    spec.jitter.sigmaNs = 10 * kNsPerMs;
    spec.audio.blocksPerFrame = 3;
    spec.metadata.everyFrames = 5;
    for (std::int64_t i = 0; i < 200; ++i) {
        spec.events.push_back(eventOf(static_cast<EventKind>(i % 7), i * 37 * kNsPerMs));
        spec.events.back().frames = i % 5 + 1;
        spec.events.back().durationNs = 20 * kNsPerMs;
    }
    const std::vector<Step> steps = play(spec, 10 * kSecond);
    std::int64_t expected = 0;
    Numbers seen;
    for (const Step &step : steps) {
        if (step.kind == StepKind::video || step.kind == StepKind::skip)
            seen.push_back(step.frame);
    }
    QVERIFY(std::is_sorted(steps.begin(), steps.end(),
                           [](const Step &left, const Step &right) { return left.dueNs < right.dueNs; }));
    std::sort(seen.begin(), seen.end());
    for (const std::int64_t frame : seen)
        expected += frame == expected ? 1 : 0;
    QCOMPARE(static_cast<std::size_t>(expected), seen.size()); // each exactly once, none missing before the last
}

QTEST_APPLESS_MAIN(TestLoopbackCore)
#include "tst_loopback_core.moc"
