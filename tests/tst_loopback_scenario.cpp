#include "loopback/scenario.h"

#include <QTest>

#include <string>

using namespace loopback;

/// Reading of scenario files: every key, and every mistake with its place.
class TestLoopbackScenario final : public QObject {
    Q_OBJECT

private slots:
    void emptyObjectIsTheDefault();
    void everyKeyOfTheTopLevel();
    void everyKeyOfASource();
    void everyKindOfEvent();
    void ratesThatPaceAndRatesThatDoNot_data();
    void ratesThatPaceAndRatesThatDoNot();
    void absurdValuesAreTaken();
    void repeatNumbersNamesAndAddresses();
    void discoverySchedule();
    void mistakesAreNamedWithTheirPlace_data();
    void mistakesAreNamedWithTheirPlace();
};

namespace {

Scenario parsed(const std::string &json)
{
    const ScenarioResult result = parseScenario(json);
    if (!result.scenario)
        QTest::qFail(result.error.c_str(), __FILE__, __LINE__);
    return result.scenario.value_or(Scenario());
}

SourceSpec parsedSource(const std::string &members)
{
    const Scenario scenario = parsed(R"({"sources": [{"name": "x", )" + members + "}]}");
    return scenario.sources.empty() ? SourceSpec() : scenario.sources.front();
}

} // namespace

void TestLoopbackScenario::emptyObjectIsTheDefault()
{
    const Scenario scenario = parsed("{}");
    QCOMPARE(scenario.initialize, true);
    QCOMPARE(scenario.finderFails, false);
    QCOMPARE(scenario.receiverFails, false);
    QCOMPARE(scenario.unpaced, false);
    QCOMPARE(scenario.connectNs, 30 * kNsPerMs);
    QCOMPARE(scenario.discoveryNs, 150 * kNsPerMs);
    QCOMPARE(scenario.queueFrames, 16);
    QVERIFY(!scenario.crash.has_value());
    QCOMPARE(scenario.sources.size(), std::size_t{4});
    QCOMPARE(scenario.sources[0].name, std::string("LOOPBACK (1080p59.94)"));
    QCOMPARE(scenario.sources[1].name, std::string("LOOPBACK (2160p25)"));
    QCOMPARE(scenario.sources[2].name, std::string("LOOPBACK (720p50)"));
    QCOMPARE(scenario.sources[3].name, std::string("LOOPBACK (1080p29.97 jittery)"));
    QCOMPARE(scenario.sources[0].clockRate.n, 60000);
    QCOMPARE(scenario.sources[0].clockRate.d, 1001);
    QCOMPARE(scenario.sources[1].format.width, 3840);
    QCOMPARE(scenario.sources[1].format.height, 2160);
    QCOMPARE(scenario.sources[0].jitter.kind, JitterKind::none);
    QCOMPARE(scenario.sources[3].jitter.kind, JitterKind::gaussian);
}

void TestLoopbackScenario::everyKeyOfTheTopLevel()
{
    const Scenario scenario = parsed(R"({"initialize": false, "finderFails": true, "receiverFails": true,
        "unpaced": true, "connectMs": 1.5, "discoveryMs": 7, "discoveryStepMs": 8, "discoveryBatch": 9,
        "queueFrames": 10, "claimedSources": 4294967295, "crash": {"kind": "stackOverflow", "in": "capture", "call": 11}, "sources": []})");
    QCOMPARE(scenario.initialize, false);
    QCOMPARE(scenario.finderFails, true);
    QCOMPARE(scenario.receiverFails, true);
    QCOMPARE(scenario.unpaced, true);
    QCOMPARE(scenario.connectNs, std::int64_t{1500000});
    QCOMPARE(scenario.discoveryNs, 7 * kNsPerMs);
    QCOMPARE(scenario.discoveryStepNs, 8 * kNsPerMs);
    QCOMPARE(scenario.discoveryBatch, std::int64_t{9});
    QCOMPARE(scenario.queueFrames, 10);
    QCOMPARE(scenario.claimedSources.value_or(0), 4294967295U);
    QVERIFY(scenario.crash.has_value());
    QCOMPARE(int(scenario.crash->kind), int(CrashKind::stackOverflow));
    QCOMPARE(int(scenario.crash->call), int(CrashCall::capture));
    QCOMPARE(scenario.crash->number, std::int64_t{11});
    QVERIFY(scenario.sources.empty());
}

void TestLoopbackScenario::everyKeyOfASource()
{
    const SourceSpec source = parsedSource(R"("url": "u", "width": 640, "height": 480, "rateN": 24000,
        "rateD": 1001, "clockRateN": 25, "clockRateD": 2, "fourCC": "NV12", "stride": 700, "noData": true,
        "aspect": 1.5, "frameFormat": "field1", "appearMs": 1, "disappearMs": 2,
        "churn": {"periodMs": 3, "fromMs": 4, "untilMs": 5}, "startMs": 6, "endMs": 7, "timestamps": false,
        "frameMetadata": "<f/>",
        "audio": {"blocksPerFrame": 2, "samples": 400, "sampleRate": 96000, "channels": 8},
        "metadata": {"everyFrames": 9, "text": "<m/>"},
        "jitter": {"kind": "burst", "amplitudeMs": 10, "everyFrames": 11, "seed": 12})");
    QCOMPARE(source.url, std::string("u"));
    QCOMPARE(source.format.width, 640);
    QCOMPARE(source.format.height, 480);
    QCOMPARE(source.format.declaredRate.n, 24000);
    QCOMPARE(source.format.declaredRate.d, 1001);
    QCOMPARE(source.clockRate.n, 25);
    QCOMPARE(source.clockRate.d, 2);
    QCOMPARE(source.format.fourCC, 0x3231564EU);
    QCOMPARE(source.format.stride, 700);
    QCOMPARE(source.format.noData, true);
    QCOMPARE(source.format.aspect, 1.5F);
    QCOMPARE(source.format.frameFormat, 3);
    QCOMPARE(source.appearNs.value(), 1 * kNsPerMs);
    QCOMPARE(source.disappearNs.value(), 2 * kNsPerMs);
    QCOMPARE(source.churn.periodNs, 3 * kNsPerMs);
    QCOMPARE(source.churn.fromNs, 4 * kNsPerMs);
    QCOMPARE(source.churn.untilNs, 5 * kNsPerMs);
    QCOMPARE(source.startNs, 6 * kNsPerMs);
    QCOMPARE(source.endNs.value(), 7 * kNsPerMs);
    QCOMPARE(source.timestamps, false);
    QCOMPARE(source.frameMetadata, std::string("<f/>"));
    QCOMPARE(source.audio.blocksPerFrame, 2);
    QCOMPARE(source.audio.samples, 400);
    QCOMPARE(source.audio.sampleRate, 96000);
    QCOMPARE(source.audio.channels, 8);
    QCOMPARE(source.metadata.everyFrames, std::int64_t{9});
    QCOMPARE(source.metadata.text, std::string("<m/>"));
    QCOMPARE(source.jitter.kind, JitterKind::burst);
    QCOMPARE(source.jitter.amplitudeNs, 10 * kNsPerMs);
    QCOMPARE(source.jitter.everyFrames, std::int64_t{11});
    QCOMPARE(source.jitter.seed, std::uint64_t{12});
    QCOMPARE(parsedSource(R"("jitter": {"kind": "gaussian", "sigmaMs": 2.5})").jitter.sigmaNs, std::int64_t{2500000});
    QCOMPARE(parsedSource(R"("jitter": {"kind": "uniform", "amplitudeMs": 2})").jitter.kind, JitterKind::uniform);
    QCOMPARE(parsedSource(R"("jitter": {"kind": "none"})").jitter.kind, JitterKind::none);
}

void TestLoopbackScenario::everyKindOfEvent()
{
    const std::vector<Event> events = parsedSource(R"("events": [
        {"atMs": 1, "kind": "drop", "frames": 2},
        {"atFrame": 3, "kind": "stall", "ms": 4},
        {"atFrame": 5, "kind": "burst", "frames": 6},
        {"atMs": 7, "kind": "error", "receiver": 8},
        {"atMs": 9, "kind": "status"},
        {"atMs": 10, "kind": "unknown", "value": -101},
        {"atMs": 11, "kind": "metadata", "text": "<t/>"},
        {"atMs": 12, "kind": "size", "width": 13, "height": 14, "fourCC": "I420", "stride": 15, "noData": true},
        {"atMs": 16, "kind": "rate", "rateN": 17, "rateD": 0, "clockRateN": 18, "clockRateD": 19},
        {"atMs": 20, "kind": "vanish", "ms": 21},
        {"atMs": 22, "kind": "zeroSize", "frames": 23},
        {"atMs": 24, "kind": "error"}])")
                                          .events;
    QCOMPARE(events.size(), std::size_t{12});
    QCOMPARE(events[0].kind, EventKind::drop);
    QCOMPARE(events[0].atNs.value(), kNsPerMs);
    QVERIFY(!events[0].atFrame.has_value());
    QCOMPARE(events[0].frames, std::int64_t{2});
    QCOMPARE(events[1].kind, EventKind::stall);
    QCOMPARE(events[1].atFrame.value(), std::int64_t{3});
    QVERIFY(!events[1].atNs.has_value());
    QCOMPARE(events[1].durationNs, 4 * kNsPerMs);
    QCOMPARE(events[2].kind, EventKind::burst);
    QCOMPARE(events[2].frames, std::int64_t{6});
    QCOMPARE(events[3].kind, EventKind::error);
    QCOMPARE(events[3].receiver.value(), 8);
    QCOMPARE(events[4].kind, EventKind::status);
    QCOMPARE(events[5].kind, EventKind::unknown);
    QCOMPARE(events[5].value, -101);
    QCOMPARE(events[6].kind, EventKind::metadata);
    QCOMPARE(events[6].text, std::string("<t/>"));
    QCOMPARE(events[7].kind, EventKind::size);
    QCOMPARE(events[7].width, 13);
    QCOMPARE(events[7].height, 14);
    QCOMPARE(events[7].fourCC.value(), 0x30323449U);
    QCOMPARE(events[7].stride, 15);
    QCOMPARE(events[7].noData, true);
    QCOMPARE(events[8].kind, EventKind::rate);
    QCOMPARE(events[8].declaredRate.n, 17);
    QCOMPARE(events[8].declaredRate.d, 0);
    QCOMPARE(events[8].clockRate.n, 18);
    QCOMPARE(events[8].clockRate.d, 19);
    QCOMPARE(events[9].kind, EventKind::vanish);
    QCOMPARE(events[9].durationNs, 21 * kNsPerMs);
    QCOMPARE(events[10].kind, EventKind::zeroSize);
    QCOMPARE(events[10].frames, std::int64_t{23});
    QVERIFY(!events[11].receiver.has_value());
}

void TestLoopbackScenario::ratesThatPaceAndRatesThatDoNot_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<int>("declaredN");
    QTest::addColumn<int>("declaredD");
    QTest::addColumn<int>("clockN");
    QTest::addColumn<int>("clockD");
    QTest::newRow("nothing given") << QByteArray(R"("width": 16)") << 60000 << 1001 << 60000 << 1001;
    QTest::newRow("a whole rate") << QByteArray(R"("rateN": 50)") << 50 << 1 << 50 << 1;
    QTest::newRow("a fraction") << QByteArray(R"("rateN": 30000, "rateD": 1001)") << 30000 << 1001 << 30000 << 1001;
    QTest::newRow("declared 0/0 is paced all the same")
        << QByteArray(R"("rateN": 0, "rateD": 0)") << 0 << 0 << 30000 << 1001;
    QTest::newRow("declared over 0") << QByteArray(R"("rateN": 25, "rateD": 0)") << 25 << 0 << 30000 << 1001;
    QTest::newRow("declared negative") << QByteArray(R"("rateN": -25, "rateD": 1)") << -25 << 1 << 30000 << 1001;
    QTest::newRow("declared too fast to be paced")
        << QByteArray(R"("rateN": 2147483647, "rateD": 1)") << 2147483647 << 1 << 30000 << 1001;
    QTest::newRow("the fastest that is paced") << QByteArray(R"("rateN": 10000)") << 10000 << 1 << 10000 << 1;
    QTest::newRow("a clock of its own") << QByteArray(R"("rateN": 0, "rateD": 0, "clockRateN": 10)") << 0 << 0 << 10
                                        << 1;
}

void TestLoopbackScenario::ratesThatPaceAndRatesThatDoNot()
{
    QFETCH(QByteArray, members);
    const SourceSpec source = parsedSource(members.toStdString());
    QTEST(source.format.declaredRate.n, "declaredN");
    QTEST(source.format.declaredRate.d, "declaredD");
    QTEST(source.clockRate.n, "clockN");
    QTEST(source.clockRate.d, "clockD");
}

void TestLoopbackScenario::absurdValuesAreTaken()
{
    const SourceSpec source = parsedSource(R"("width": -2147483648, "height": 2147483647, "stride": -1,
        "fourCC": 4294967295, "aspect": -1)");
    QCOMPARE(source.format.width, std::int32_t{INT32_MIN});
    QCOMPARE(source.format.height, std::int32_t{INT32_MAX});
    QCOMPARE(source.format.stride, -1);
    QCOMPARE(source.format.fourCC, 0xFFFFFFFFU);
}

void TestLoopbackScenario::repeatNumbersNamesAndAddresses()
{
    const Scenario scenario = parsed(R"json({"sources": [
        {"name": "Kamera ä %1 (%1)", "url": "host:%1", "repeat": 3000},
        {"name": "100 %1"},
        {"name": "same", "repeat": 2}]})json");
    QCOMPARE(scenario.sources.size(), std::size_t{3003});
    QCOMPARE(scenario.sources[0].name, std::string("Kamera ä 1 (1)"));
    QCOMPARE(scenario.sources[2999].name, std::string("Kamera ä 3000 (3000)"));
    QCOMPARE(scenario.sources[2999].url, std::string("host:3000"));
    QCOMPARE(scenario.sources[3000].name, std::string("100 %1")); // without repeat the text is left alone
    QCOMPARE(scenario.sources[3001].name, scenario.sources[3002].name);
    QVERIFY(scenario.sources[3001].url != scenario.sources[3002].url);
}

void TestLoopbackScenario::discoverySchedule()
{
    const Scenario four = parsed("{}");
    QCOMPARE(four.appearNs(0), 150 * kNsPerMs);
    QCOMPARE(four.appearNs(1), 200 * kNsPerMs);
    QCOMPARE(four.appearNs(3), 300 * kNsPerMs);
    const Scenario many = parsed(R"({"discoveryMs": 10, "discoveryStepMs": 5,
        "sources": [{"name": "%1", "repeat": 2000}, {"name": "late", "appearMs": 3}]})");
    QCOMPARE(many.appearNs(0), 10 * kNsPerMs);
    QCOMPARE(many.appearNs(200), 10 * kNsPerMs); // a tenth of 2001, rounded up, is 201
    QCOMPARE(many.appearNs(201), 15 * kNsPerMs);
    QCOMPARE(many.appearNs(1999), 55 * kNsPerMs);
    QCOMPARE(many.appearNs(2000), 3 * kNsPerMs);
    const Scenario pairs = parsed(R"({"discoveryBatch": 2, "sources": [{"name": "%1", "repeat": 4}]})");
    QCOMPARE(pairs.appearNs(1), 150 * kNsPerMs);
    QCOMPARE(pairs.appearNs(2), 200 * kNsPerMs);
}

void TestLoopbackScenario::mistakesAreNamedWithTheirPlace_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");
    const auto row = [](const char *name, const char *json, const char *error) {
        QTest::newRow(name) << QByteArray(json) << QByteArray(error);
    };
    const auto sourceRow = [](const char *name, const char *members, const char *error) {
        QTest::newRow(name) << QByteArray(R"({"sources": [{"name": "x", )") + members + "}]}" << QByteArray(error);
    };
    row("empty file", "", "line 1, column 1: not JSON");
    row("a comma too many", "{\n  \"unpaced\": true,\n}", "line 3, column 1: not JSON");
    row("not UTF-8", "{\"\xff\": 1}", "line 1, column 3: not JSON");
    row("a list", "[]", "the file: must be an object");
    row("misspelt key", R"({"sauces": []})", "sauces: is not a key that is known here");
    row("not a truth value", R"({"unpaced": 1})", "unpaced: must be true or false");
    row("time below zero", R"({"connectMs": -1})", "connectMs: must be a number from 0.0 to 86400000000.0");
    row("time as text", R"({"connectMs": "1"})", "connectMs: must be a number from 0.0 to 86400000000.0");
    row("a number of sources that could be true", R"({"claimedSources": 100000})",
        "claimedSources: must be a whole number from 100001 to 4294967295");
    row("no queue", R"({"queueFrames": 0})", "queueFrames: must be a whole number from 1 to 1000");
    row("half a frame", R"({"queueFrames": 1.5})", "queueFrames: must be a whole number from 1 to 1000");
    row("more than 64 bits", R"({"queueFrames": 18446744073709551615})",
        "queueFrames: must be a whole number from 1 to 1000");
    row("crash without a kind", R"({"crash": {"in": "wait"}})", "crash.kind: is missing");
    row("crash without a place", R"({"crash": {"kind": "abort"}})", "crash.in: is missing");
    row("crash of no known kind", R"({"crash": {"kind": "fire", "in": "wait"}})",
        "crash.kind: \"fire\" is not one of nullWrite, abort, stackOverflow, pureVirtual");
    row("crash in no call", R"({"crash": {"kind": "abort", "in": "wait", "call": 0}})",
        "crash.call: must be a whole number from 1 to 1099511627776");
    row("sources not a list", R"({"sources": {}})", "sources: must be a list");
    row("source not an object", R"({"sources": [{"name": "a"}, 1]})", "sources[1]: must be an object");
    row("source without a name", R"({"sources": [{}]})", "sources[0].name: is missing");
    row("name not a text", R"({"sources": [{"name": 1}]})", "sources[0].name: must be a text");
    row("too many sources", R"({"sources": [{"name": "a"}, {"name": "b", "repeat": 100000}]})",
        "sources[1].repeat: makes more than 100000 sources");
    sourceRow("size beyond 32 bits", R"("width": 2147483648)",
              "sources[0].width: must be a whole number from -2147483648 to 2147483647");
    sourceRow("code of three characters", R"("fourCC": "UYV")",
              "sources[0].fourCC: \"UYV\" does not have four characters");
    sourceRow("code below zero", R"("fourCC": -1)", "sources[0].fourCC: must be a whole number from 0 to 4294967295");
    sourceRow("clock that stands", R"("clockRateN": 0)",
              "sources[0].clockRateN: must be a whole number from 1 to 2147483647");
    sourceRow("clock too fast", R"("clockRateN": 10001)",
              "sources[0].clockRateN: gives a rate outside 0.001 to 10000 frames per second");
    sourceRow("clock too slow", R"("clockRateN": 1, "clockRateD": 1001)",
              "sources[0].clockRateN: gives a rate outside 0.001 to 10000 frames per second");
    sourceRow("frame format", R"("frameFormat": "both")",
              "sources[0].frameFormat: \"both\" is not one of interleaved, progressive, field0, field1");
    sourceRow("jitter kind", R"("jitter": {"kind": "foo"})",
              "sources[0].jitter.kind: \"foo\" is not one of none, uniform, gaussian, burst");
    sourceRow("jitter without kind", R"("jitter": {})", "sources[0].jitter.kind: is missing");
    sourceRow("uniform without amplitude", R"("jitter": {"kind": "uniform"})",
              "sources[0].jitter.amplitudeMs: is missing");
    sourceRow("gaussian without sigma", R"("jitter": {"kind": "gaussian"})", "sources[0].jitter.sigmaMs: is missing");
    sourceRow("a key of another jitter", R"("jitter": {"kind": "gaussian", "sigmaMs": 1, "amplitudeMs": 1})",
              "sources[0].jitter.amplitudeMs: is not a key that is known here");
    sourceRow("churn without period", R"("churn": {})", "sources[0].churn.periodMs: is missing");
    sourceRow("churn too fast", R"("churn": {"periodMs": 0.5})", "sources[0].churn.periodMs: must be at least 1");
    sourceRow("no channels", R"("audio": {"channels": 0})",
              "sources[0].audio.channels: must be a whole number from 1 to 64");
    sourceRow("metadata not an object", R"("metadata": "<m/>")", "sources[0].metadata: must be an object");
    sourceRow("events not a list", R"("events": {})", "sources[0].events: must be a list");
    sourceRow("event kind", R"("events": [{"kind": "bang"}])",
              "sources[0].events[0].kind: \"bang\" is not one of drop, stall, burst, error, status, unknown, "
              "metadata, size, rate, vanish, zeroSize");
    sourceRow("event without a time", R"("events": [{"kind": "status"}])",
              "sources[0].events[0]: needs either atMs or atFrame");
    sourceRow("event with two times", R"("events": [{"kind": "status", "atMs": 1, "atFrame": 1}])",
              "sources[0].events[0]: needs either atMs or atFrame");
    sourceRow("drop of nothing", R"("events": [{"kind": "drop", "atMs": 1, "frames": 0}])",
              "sources[0].events[0].frames: must be a whole number from 1 to 1099511627776");
    sourceRow("stall without a length", R"("events": [{"kind": "stall", "atMs": 1}])",
              "sources[0].events[0].ms: is missing");
    sourceRow("size without height", R"("events": [{"kind": "size", "atMs": 1, "width": 1}])",
              "sources[0].events[0].height: is missing");
    sourceRow("a key of another event", R"("events": [{"kind": "status", "atMs": 1, "frames": 1}])",
              "sources[0].events[0].frames: is not a key that is known here");
    sourceRow("no repeat", R"("repeat": 0)", "sources[0].repeat: must be a whole number from 1 to 100000");
}

void TestLoopbackScenario::mistakesAreNamedWithTheirPlace()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    const ScenarioResult result = parseScenario(json.toStdString());
    QVERIFY(!result.scenario.has_value());
    QCOMPARE(QByteArray::fromStdString(result.error), error);
}

QTEST_APPLESS_MAIN(TestLoopbackScenario)
#include "tst_loopback_scenario.moc"
