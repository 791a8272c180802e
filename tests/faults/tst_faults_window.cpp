#include "tests/faults/drivenwindow.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QtTest>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>

namespace {

constexpr double busyRate = 8;     ///< what the rate of the last second may be off when the machine stood still in it
constexpr int uptakeMs = 2500;     ///< how far behind the window of a slow machine may be when it is told to stop
constexpr int tourUptakeMs = 1000; ///< the same in a tour; the largest picture of the preview takes as long
constexpr int measuredMs = 1300;   ///< of each source of a tour

QByteArray source(const QByteArray &name, const QByteArray &more,
                  const QByteArray &size = R"("width":640,"height":360,)")
{
    return R"({"name":")" + name + "\"," + size + more + "}";
}

QByteArray fifty(const QByteArray &name, const QByteArray &more)
{
    return source(name, R"("rateN":50,"rateD":1)" + (more.isEmpty() ? more : "," + more));
}

QByteArray scenario(const QByteArrayList &sources)
{
    // Long queues: whatever the machine does to the runtime, the loss of a frame is the program's fault.
    return R"({"queueFrames":1000,"discoveryMs":0,"discoveryBatch":100000,"sources":[)" + sources.join(',') + "]}";
}

/// Those of a receiver's frames that came before the test was asked to end must all be rows, in order and in time. What
/// the window had not taken up by then, lateMs at most, need not be there.
QString everyFrameIsARow(const QVector<TestRecordRow> &rows, const ReceiverTruth &truth, qint64 endNs, int lateMs)
{
    const QString wrong = checkRowTimes(rows, truth);
    if (!wrong.isEmpty())
        return wrong;
    for (int i = 0; i < rows.size(); ++i) {
        const int intervalMs = expectedIntervalMs(rows, i);
        if (rows.at(i).intervalMs != intervalMs)
            return QStringLiteral("row %1 has interval %2, not %3").arg(i).arg(rows.at(i).intervalMs).arg(intervalMs);
    }
    for (int i = rows.size(); i < truth.frames.size(); ++i) {
        if (truth.frames.at(i).timeNs < endNs - lateMs * qint64(1000000))
            return QStringLiteral("frame %1 has no row").arg(i);
    }
    return {};
}

/// The same of the two receivers of a record, whichever of the two of the truth each is.
QString misfitOfTwo(const TestRecord &record, const QVector<ReceiverTruth> &two, qint64 endNs, int lateMs)
{
    const auto misfit = [&](int first, int second) {
        return everyFrameIsARow(record.rowsOf(first), two.at(0), endNs, lateMs)
               + everyFrameIsARow(record.rowsOf(second), two.at(1), endNs, lateMs);
    };
    const QString straight = misfit(1, 2);
    return straight.isEmpty() || misfit(2, 1).isEmpty() ? QString() : straight;
}

/// Nothing was lost, kept, freed twice or asked of the dead.
QString misuse(const std::vector<loopback::TruthRecord> &events)
{
    for (const char *kind : {"drop", "dead", "refree"}) {
        if (loopback::countTruth(events, kind) != 0)
            return QStringLiteral("%1 of kind %2").arg(loopback::countTruth(events, kind)).arg(QLatin1String(kind));
    }
    for (const loopback::TruthRecord &event : events) {
        if (event.kind == "destroy" && event.number != 0)
            return QStringLiteral("%1 frames of receiver %2 not freed").arg(event.number).arg(event.receiver);
    }
    return {};
}

/// The receivers that were made for a source of the scenario, in their order; the first one asks for its format.
QVector<ReceiverTruth> receiversOf(const std::vector<loopback::TruthRecord> &events, int sourceIndex)
{
    const QVector<ReceiverTruth> all = truthOfReceivers(events);
    QVector<ReceiverTruth> found;
    for (const loopback::TruthRecord &event : events) {
        if (event.kind == "create" && event.number == sourceIndex)
            found.append(all.at(int(event.receiver)));
    }
    return found;
}

int longIntervals(const QVector<TestRecordRow> &rows, int ms)
{
    return static_cast<int>(
        std::count_if(rows.cbegin(), rows.cend(), [ms](const TestRecordRow &row) { return row.intervalMs >= ms; }));
}

/// What the frames of a source declare, and what its rows must say.
struct Declared {
    QByteArray name;
    QByteArray json;
    int width = 640;
    int height = 360;
    double defaultFps = 50;
};

Declared ofRate(const QByteArray &name, const QByteArray &numerator, const QByteArray &denominator, double shown)
{
    return {name, source(name, R"("rateN":)" + numerator + R"(,"rateD":)" + denominator + R"(,"clockRateN":50)"), 640,
            360, shown};
}

Declared ofSize(const QByteArray &name, int width, int height, const QByteArray &more = QByteArray())
{
    const QByteArray size =
        R"("width":)" + QByteArray::number(width) + R"(,"height":)" + QByteArray::number(height) + ",";
    return {name, source(name, R"("rateN":50,"rateD":1)" + more, size), width, height, 50};
}

/// A window whose sources are measured one after the other, and when each test was asked to end.
struct Tour {
    std::vector<Declared> stops;
    std::unique_ptr<DrivenWindow> window;
    std::vector<qint64> endsNs;
};

} // namespace

/// Sources that misbehave in every way, measured by the program with its window and its preview. The records must
/// hold what the truth file says.
class TestFaultsWindow final : public TestBase {
    Q_OBJECT

private slots:
    void framesThatDeclareNonsense();
    void faultsInTheMiddle();
    void errorOnOneReceiver();
    void errorsOnAllReceivers();
};

/// Each source in its turn, with two receivers and the preview on it.
void TestFaultsWindow::framesThatDeclareNonsense()
{
    std::array<Tour, 2> tours;
    tours[0].stops = {ofRate("OVER NOTHING", "50", "0", 0),
                      ofRate("OF NOTHING", "0", "1001", 0),
                      ofRate("ONE", "1", "1", 1),
                      {"FAST", source("FAST", R"("rateN":120000,"rateD":1001)"), 640, 360, 119},
                      ofRate("HIGHEST", "2147483647", "1", 2147480000.0),
                      ofRate("LOWEST", "-2147483648", "-1", 2147480000.0),
                      ofRate("BACKWARDS", "-50", "1", -50),
                      ofSize("UNKNOWN PIXELS", 640, 360, R"(,"fourCC":"?!?!")"),
                      ofSize("ODD", 641, 361)};
    tours[1].stops = {ofSize("NO SIZE", 0, 0),
                      ofSize("ONE PIXEL", 1, 1),
                      ofSize("NEGATIVE", -640, -360),
                      ofSize("NEGATIVE WIDTH", -1, 1080),
                      ofSize("SHORT LINES", 640, 360, R"(,"stride":100)"),
                      ofSize("LONG LINES", 640, 360, R"(,"stride":4096)"),
                      ofSize("LINES UPWARDS", 640, 360, R"(,"stride":-1280)"),
                      ofSize("NO PIXELS", 640, 360, R"(,"noData":true)"),
                      ofSize("HUGE", 16384, 16384, R"(,"clockRateN":5)")};
    std::size_t longest = 0;
    for (Tour &tour : tours) {
        QByteArrayList sources;
        for (const Declared &declared : tour.stops)
            sources.append(declared.json);
        tour.window = std::make_unique<DrivenWindow>();
        tour.window->setScenario(scenario(sources));
        tour.window->start();
        longest = qMax(longest, tour.stops.size());
    }
    for (Tour &tour : tours) // all, before any has a key: a window that opens takes the keyboard
        QVERIFY2(tour.window->isOpen(int(tour.stops.size())), tour.window->account());
    for (Tour &tour : tours)
        tour.window->chooseTwoReceivers();
    for (std::size_t stop = 0; stop < longest; ++stop) {
        for (Tour &tour : tours) {
            if (stop < tour.stops.size())
                tour.window->startOrStop();
        }
        for (Tour &tour : tours) {
            if (stop < tour.stops.size())
                QVERIFY2(tour.window->hasStarted("single, 2 receivers", int(stop) + 1), tour.window->account());
        }
        QTest::qWait(measuredMs); // and every record has its own second
        for (Tour &tour : tours) {
            if (stop < tour.stops.size()) {
                tour.endsNs.push_back(DrivenWindow::steadyNs());
                tour.window->startOrStop();
            }
        }
        for (Tour &tour : tours) {
            if (stop < tour.stops.size()) {
                QVERIFY2(tour.window->hasEnded(int(stop) + 1), tour.window->account());
                tour.window->press({DrivenWindow::Key::Down});
            }
        }
    }
    for (Tour &tour : tours) {
        QVERIFY2(tour.window->closes(), tour.window->account());
        const auto events = loopback::readTruth(tour.window->truthPath().toStdString());
        QCOMPARE(misuse(events), QString());
        const QStringList records = tour.window->records();
        int record = 0;
        for (std::size_t stop = 0; stop < tour.stops.size(); ++stop) {
            const Declared &declared = tour.stops[stop];
            const QVector<ReceiverTruth> receivers = receiversOf(events, int(stop));
            QVERIFY2(receivers.size() >= 3, declared.name); // one for the format, two for the test
            if (declared.width == 0)                        // nothing of it counts, so there is no record
                continue;
            QVERIFY2(record < records.size(), declared.name);
            const TestRecord read = TestRecord::read(records.at(record++));
            QCOMPARE(read.problem, QString());
            QVERIFY2(read.rows.size() >= (declared.width == 16384 ? 2 : 10),
                     (declared.name + ' ' + QByteArray::number(read.rows.size())).constData());
            for (const TestRecordRow &row : read.rows) {
                QCOMPARE(row.sourceName, declared.name);
                QCOMPARE(row.width, declared.width);
                QCOMPARE(row.height, declared.height);
                QCOMPARE(row.defaultFps, declared.defaultFps);
            }
            const QVector<ReceiverTruth> two = receivers.mid(receivers.size() - 2);
            const QString wrong = misfitOfTwo(read, two, tour.endsNs[stop], tourUptakeMs);
            QVERIFY2(wrong.isEmpty(), (declared.name + ": " + wrong.toUtf8()).constData());
        }
        QCOMPARE(record, int(records.size()));
    }
}

/// All of them at once, in MULTIPLE.
void TestFaultsWindow::faultsInTheMiddle()
{
    // A source's clock starts when the window asks for its format. The test has all the time that a busy machine may
    // take to begin before the first of them does anything.
    constexpr int measuredUntilFrame = 19 * 50;
    const QByteArrayList sources{
        fifty("STEADY", ""),
        fifty("AWAY", R"("events":[{"kind":"vanish","atMs":15000,"ms":3000}])"),
        fifty("GONE", R"("endMs":15000)"),
        fifty("OTHER SIZE", R"("events":[{"kind":"vanish","atMs":15000,"ms":2000},)"
                            R"({"kind":"size","atMs":16000,"width":1280,"height":720}])"),
        fifty("ERROR", R"("events":[{"kind":"error","atMs":15000}])"),
        fifty("SILENT", R"("startMs":3600000)"),
        source("SLOWS DOWN", R"("rateN":60,"rateD":1,"events":[{"kind":"rate","atMs":15000,"rateN":25,"rateD":1}])"),
        fifty("UNKNOWN", R"("events":[{"kind":"unknown","atMs":14500,"value":4711},{"kind":"unknown","atMs":14900,)"
                         R"("value":-1},{"kind":"unknown","atMs":15300,"value":107},{"kind":"status","atMs":15700}])")};
    DrivenWindow window;
    window.setScenario(scenario(sources));
    window.start();
    QVERIFY2(window.isOpen(sources.size()), window.account());
    window.chooseAllSources();
    window.startOrStop();
    QVERIFY2(window.hasStarted("multiple, 8 receivers"), window.account());
    const auto isMeasured = [&window] {
        const auto steady = receiversOf(loopback::readTruth(window.truthPath().toStdString()), 0);
        return steady.size() == 2 && !steady.at(1).frames.isEmpty()
               && steady.at(1).frames.last().number >= measuredUntilFrame;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isMeasured(), 40000);
    const qint64 endNs = DrivenWindow::steadyNs();
    window.startOrStop();
    QVERIFY2(window.hasEnded(), window.account());
    QVERIFY2(window.closes(), window.account());

    const auto events = loopback::readTruth(window.truthPath().toStdString());
    QCOMPARE(misuse(events), QString());
    QCOMPARE(int(loopback::countTruth(events, "error")), 1);
    QCOMPARE(int(loopback::countTruth(events, "unknown")), 3);
    QCOMPARE(window.records().size(), 1);
    const TestRecord record = TestRecord::read(window.records().constFirst());
    QCOMPARE(record.problem, QString());
    std::map<QByteArray, QVector<TestRecordRow>> rows;
    for (const TestRecordRow &row : record.rows)
        rows[row.sourceName].append(row);
    for (int i = 0; i < sources.size(); ++i) {
        const QVector<ReceiverTruth> receivers = receiversOf(events, i);
        QVERIFY2(receivers.size() == 2, sources.at(i));
        const QString wrong = everyFrameIsARow(record.rowsOf(i + 1), receivers.at(1), endNs, uptakeMs);
        QVERIFY2(wrong.isEmpty(), qPrintable(QString::fromUtf8(sources.at(i)) + wrong));
    }
    const auto lastMs = [&rows](const char *name) { return rows.at(name).last().timeMs; };
    const int endMs = lastMs("STEADY");
    QCOMPARE(longIntervals(rows.at("AWAY"), 2000), 1);
    QVERIFY(lastMs("AWAY") > endMs - 1000);
    QVERIFY(lastMs("GONE") < endMs - 2500);
    QVERIFY(lastMs("ERROR") < endMs - 2500);
    QVERIFY(rows.find("SILENT") == rows.end());
    bool isBack = false;
    for (const TestRecordRow &row : rows.at("OTHER SIZE")) {
        isBack = isBack || row.intervalMs >= 1000;
        QCOMPARE(row.width, isBack ? 1280 : 640);
    }
    QVERIFY(isBack);
    QCOMPARE(rows.at("SLOWS DOWN").first().defaultFps, 60.0);
    QCOMPARE(rows.at("SLOWS DOWN").last().defaultFps, 25.0);
    QCOMPARE(checkRowsAmongThemselves(rows.at("SLOWS DOWN")), QString());
    const double rate = medianRate(rows.at("SLOWS DOWN"), 25);
    QVERIFY2(qAbs(rate - 25.0) < busyRate, qPrintable(QString::number(rate)));
    QVERIFY(lastMs("UNKNOWN") > endMs - 1000);
}

/// In SINGLE, with its first frame and in the middle: the other receiver goes on until the test is stopped.
void TestFaultsWindow::errorOnOneReceiver()
{
    // Receiver 0 asks for the format. A test that is late to begin meets the next error; there is none after the first.
    const auto errors = [](std::initializer_list<int> timesMs) {
        QByteArrayList events;
        for (const int timeMs : timesMs)
            events.append(R"({"kind":"error","receiver":1,"atMs":)" + QByteArray::number(timeMs) + "}");
        return QByteArray(R"("events":[)" + events.join(',') + "]");
    };
    constexpr int framesAfterwards = 75;
    DrivenWindow first;
    first.setScenario(scenario({fifty("LATE", R"("startMs":15500,)" + errors({6000, 14000}))}));
    DrivenWindow middle;
    middle.setScenario(scenario({fifty("STAGE", errors({6000, 14000, 22000, 30000}))}));
    for (DrivenWindow *window : {&first, &middle})
        window->start();
    for (DrivenWindow *window : {&first, &middle}) // both, before either has a key
        QVERIFY2(window->isOpen(1), window->account());
    for (DrivenWindow *window : {&first, &middle}) {
        window->chooseTwoReceivers();
        window->startOrStop();
    }
    for (DrivenWindow *window : {&first, &middle}) {
        QVERIFY2(window->hasStarted("single, 2 receivers"), window->account());
        const auto goesOn = [window] {
            const auto events = loopback::readTruth(window->truthPath().toStdString());
            int frames = -1; // since the error
            for (const loopback::TruthRecord &event : events) {
                if (event.kind == "error")
                    frames = 0;
                else if (event.kind == "video" && event.receiver == 2 && frames >= 0)
                    ++frames;
            }
            return frames >= framesAfterwards;
        };
        QTRY_VERIFY_WITH_TIMEOUT(goesOn(), 40000);
    }
    for (DrivenWindow *window : {&first, &middle}) {
        QCOMPARE(window->saidSoFar("vexa.window: test ended"), 0);
        const qint64 endNs = DrivenWindow::steadyNs();
        window->startOrStop();
        QVERIFY2(window->hasEnded(), window->account());
        QVERIFY2(window->closes(), window->account());
        const auto events = loopback::readTruth(window->truthPath().toStdString());
        QCOMPARE(misuse(events), QString());
        QCOMPARE(int(loopback::countTruth(events, "error")), 1);
        const QVector<ReceiverTruth> receivers = receiversOf(events, 0);
        QCOMPARE(receivers.size(), 3);
        QCOMPARE(window->records().size(), 1);
        const TestRecord record = TestRecord::read(window->records().constFirst());
        QCOMPARE(record.problem, QString());
        QCOMPARE(misfitOfTwo(record, receivers.mid(1), endNs, uptakeMs), QString());
        const int failed = record.rowsOf(1).size() < record.rowsOf(2).size() ? 1 : 2;
        QVERIFY(record.rowsOf(3 - failed).size() >= record.rowsOf(failed).size() + framesAfterwards - 30);
        if (window == &first)
            QVERIFY(record.rowsOf(failed).isEmpty());
        else
            QVERIFY(!record.rowsOf(failed).isEmpty());
    }
}

/// The window must be ready for the next test without being told.
void TestFaultsWindow::errorsOnAllReceivers()
{
    // A test that is late to begin ends with the next error. After the first one the one without frames has time for a
    // test that is stopped by hand.
    constexpr int errorMs = 40000; // by then there has been one for any test
    DrivenWindow first;
    first.setScenario(scenario({fifty("NEVER", R"("startMs":3600000,"events":[{"kind":"error","atMs":8000},)"
                                               R"({"kind":"error","atMs":30000}])")}));
    DrivenWindow middle;
    QByteArrayList three;
    for (const char *name : {"ONE", "TWO", "THREE"})
        three.append(fifty(name, R"("events":[{"kind":"error","atMs":8000},{"kind":"error","atMs":16000},)"
                                 R"({"kind":"error","atMs":24000},{"kind":"error","atMs":32000},)"
                                 R"({"kind":"error","atMs":40000},{"kind":"error","atMs":48000}])"));
    middle.setScenario(scenario(three));
    first.start();
    middle.start();
    QVERIFY2(first.isOpen(1), first.account());
    QVERIFY2(middle.isOpen(3), middle.account());
    first.chooseTwoReceivers();
    first.startOrStop();
    middle.chooseAllSources();
    middle.startOrStop();
    QVERIFY2(first.hasStarted("single, 2 receivers"), first.account());
    QVERIFY2(middle.hasStarted("multiple, 3 receivers"), middle.account());
    QVERIFY2(first.hasSaid("vexa.window: test ended: ", 1, errorMs), first.account());
    QVERIFY2(middle.hasSaid("vexa.window: test ended: ", 1, errorMs), middle.account());
    QVERIFY(first.records().isEmpty()); // nothing was measured
    // The controls are free again: another mode can be chosen.
    using Key = DrivenWindow::Key;
    first.press({Key::BackTab, Key::Right, Key::Space, Key::Tab, Key::Tab, Key::CtrlA});
    first.startOrStop();
    QVERIFY2(first.hasStarted("multiple, 1 receivers"), first.account());
    first.startOrStop();
    QVERIFY2(first.hasEnded(2), first.account());
    QCOMPARE(middle.records().size(), 1);
    // Another one ends in the same way.
    middle.startOrStop();
    QVERIFY2(middle.hasStarted("multiple, 3 receivers", 2), middle.account());
    QVERIFY2(middle.hasSaid("vexa.window: test ended: ", 2, errorMs), middle.account());
    QVERIFY2(first.closes(), first.account());
    QVERIFY2(middle.closes(), middle.account());
    const QStringList records = middle.records();
    QCOMPARE(records.size(), 2);
    const auto events = loopback::readTruth(middle.truthPath().toStdString());
    QCOMPARE(misuse(events), QString());
    QCOMPARE(int(loopback::countTruth(events, "error")), 6);
    for (int run = 0; run < 2; ++run) {
        const TestRecord record = TestRecord::read(records.at(run));
        QCOMPARE(record.problem, QString());
        for (int i = 0; i < 3; ++i) {
            const QVector<ReceiverTruth> receivers = receiversOf(events, i);
            QCOMPARE(receivers.size(), 3);
            QCOMPARE(everyFrameIsARow(record.rowsOf(i + 1), receivers.at(run + 1), DrivenWindow::steadyNs(), 0),
                     QString());
            QVERIFY(!record.rowsOf(i + 1).isEmpty());
        }
    }
}

QTEST_GUILESS_MAIN(TestFaultsWindow)

#include "tst_faults_window.moc"
