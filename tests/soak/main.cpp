// Test after test in the window, with eight receivers of 1080p59.94, charts and preview, on the loopback runtime: does
// memory stay flat, is every frame recorded, is the window's thread in time? Needs a screen.
// Usage: window_soak SECONDS [TEST_SECONDS [strict]]
// strict: for a machine that does nothing else. Then beats must be in time, and memory as flat as a long run shows it.
#include "app/recordfile.h"
#include "app/unusedmemory.h"
#include "loopback/truthreader.h"
#include "mainwindow/ndiwindow.h"
#include "probes/machinefactsreader.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/support/heartbeat.h"
#include "tests/support/ownmemory.h"
#include "tests/support/testhome.h"
#include "tests/support/truthcheck.h"
#include "ui_ndiwindow.h"
#include "widgets/darkstyle.h"
#include "widgets/framelesswindow.h"
#include "widgets/stylesheetnoise.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

constexpr int receivers = 8;
constexpr double latestMs = 50.0;     ///< goal for every beat
constexpr double p99Ms = 20.0;        ///< goal for 99 of 100
constexpr double flatWithinMb = 8.0;  ///< growth between the halves of a long run
constexpr double aFewFramesMb = 20.0; ///< the same of a short one: pictures of 4 MB wait here and there
constexpr int endToleranceMs = 500;   ///< frames that come later than this before the end have a row
constexpr int longestTestMs = 600000; ///< beyond the length that was asked for

qint64 steadyNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// How late a thread is that does nothing but wait: what the machine itself adds to the window's lateness.
class IdleThread final {
public:
    ~IdleThread()
    {
        m_ends = true;
        m_thread.join();
    }
    /// Since the last call, in ms.
    double takeLatestMs() { return m_latestMs.exchange(0.0); }

private:
    std::atomic<bool> m_ends{false};
    std::atomic<double> m_latestMs{0.0};
    std::thread m_thread{[this] {
        while (!m_ends) {
            const qint64 dueNs = steadyNs() + 5000000;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            m_latestMs = std::max(m_latestMs.load(), static_cast<double>(steadyNs() - dueNs) * 1e-6);
        }
    }};
};

struct SoakedTest {
    qint64 startNs = 0; ///< steady clock
    qint64 endNs = 0;
    QString record;
    double memoryMb = 0.0;
    double p99Ms = 0.0;
    double latestMs = 0.0;
    double idleLatestMs = 0.0; ///< of a thread that only waits
};

void waitUntil(const std::function<bool()> &condition, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    QTimer wake;
    wake.start(20);
    while (!condition() && clock.elapsed() < timeoutMs)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
}

SoakedTest runTest(const NDIWindow &window, int testMs, Heartbeat *heartbeat, IdleThread *idleThread)
{
    const Ui::NDIWindow &ui = window.form();
    SoakedTest test;
    heartbeat->takeSorted();
    idleThread->takeLatestMs();
    test.startNs = steadyNs();
    ui.btn_test->click();
    ui.cmbPreviewSources->setCurrentIndex(1);
    waitUntil([&ui] { return ui.timeList->isEnabled(); }, testMs + longestTestMs);
    test.endNs = steadyNs();
    const std::vector<double> late = heartbeat->takeSorted();
    test.p99Ms = lateAt(late, 0.99);
    test.latestMs = late.back();
    test.idleLatestMs = idleThread->takeLatestMs();
    test.record = recordPath();
    waitUntil([] { return false; }, 200); // the window still lets go of what the test needed
    test.memoryMb = ownMemoryMb();
    return test;
}

/// What is wrong with a test's record beside the truth; empty when nothing is.
QString problemOf(const SoakedTest &test, const std::vector<loopback::TruthRecord> &events, int testMs)
{
    const TestRecord record = TestRecord::read(test.record);
    if (!record.problem.isEmpty())
        return test.record + QLatin1String(": ") + record.problem;
    QVector<ReceiverTruth> ofTest;
    const QVector<ReceiverTruth> all = truthOfReceivers(events);
    for (const ReceiverTruth &receiver : all) {
        if (receiver.createdNs >= test.startNs && receiver.createdNs < test.endNs)
            ofTest.append(receiver);
    }
    if (ofTest.size() != receivers)
        return QStringLiteral("%1 receivers were made").arg(ofTest.size());
    QVector<int> pairing;
    const QString unpaired = pairWithTruth(record, ofTest, &pairing);
    if (!unpaired.isEmpty())
        return unpaired;
    const qint64 countedUntilNs = test.startNs + (testMs - endToleranceMs) * qint64(1000000);
    for (int i = 0; i < receivers; ++i) {
        const ReceiverTruth &truth = ofTest.at(pairing.at(i));
        const int rows = record.rowsOf(i + 1).size();
        if (rows < truth.frames.size() && truth.frames.at(rows).timeNs < countedUntilNs)
            return QStringLiteral("receiver %1 has no row for frame %2").arg(i + 1).arg(truth.frames.at(rows).number);
    }
    return {};
}

/// From the median of the first half to that of the second, without the first test, which fills caches and pools.
double growthBetweenHalvesMb(const std::vector<SoakedTest> &tests)
{
    if (tests.size() < 5)
        return 0.0;
    const auto median = [&tests](std::size_t from, std::size_t to) {
        std::vector<double> values;
        for (std::size_t i = from; i < to; ++i)
            values.push_back(tests.at(i).memoryMb);
        std::sort(values.begin(), values.end());
        return values.at(values.size() / 2);
    };
    const std::size_t half = 1 + (tests.size() - 1) / 2;
    return median(half, tests.size()) - median(1, half);
}

int judge(const std::vector<SoakedTest> &tests, const QString &truthPath, int testMs, bool strict)
{
    int status = 0;
    const auto fail = [&status](const QString &what) {
        std::printf("FAILED: %s\n", qPrintable(what));
        status = 1;
    };
    const std::vector<loopback::TruthRecord> events = loopback::readTruth(truthPath.toStdString());
    const int dropped = static_cast<int>(loopback::countTruth(events, "drop"));
    if (loopback::countTruth(events, "full") > 0)
        fail(QStringLiteral("the truth file was too small"));
    for (const SoakedTest &test : tests) {
        const QString problem = problemOf(test, events, testMs);
        if (!problem.isEmpty())
            fail(problem);
    }
    double latest = 0.0;
    double worstP99 = 0.0;
    for (const SoakedTest &test : tests) {
        latest = std::max(latest, test.latestMs);
        worstP99 = std::max(worstP99, test.p99Ms);
    }
    if (strict && (worstP99 > p99Ms || latest > latestMs))
        fail(QStringLiteral("the window's thread was late"));
    const double growthMb = growthBetweenHalvesMb(tests);
    if (growthMb > (strict ? flatWithinMb : aFewFramesMb))
        fail(QStringLiteral("memory has grown"));
    std::printf("%zu tests, %d frames dropped by the loopback, memory %+.1f MB from half to half, beats "
                "late by %.1f ms at 99 %% and %.1f ms at most\n",
                tests.size(), dropped, growthMb, worstP99, latest);
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    keepFewMemoryStores(); // as the program does
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 120;
    const int testMs = (argc > 2 ? std::max(2, std::atoi(argv[2])) : 20) * 1000;
    const bool strict = argc > 3 && qstrcmp(argv[3], "strict") == 0;
    const TestHome home;
    const QString truthPath = home.filePath(QStringLiteral("truth"));
    home.use();
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    qputenv("VEXA_LOOPBACK_TRUTH", truthPath.toUtf8());
    // The loopback's own store of pictures, in this process, is kept small.
    const QString scenarioPath = home.filePath(QStringLiteral("scenario"));
    QFile scenario(scenarioPath);
    if (!scenario.open(QIODevice::WriteOnly)
        || scenario.write(R"json({"queueFrames": 4, "sources": [{"name": "LOOPBACK (1080p59.94)"}]})json") < 0) {
        std::printf("FAILED: no scenario file could be written\n");
        return 1;
    }
    scenario.close();
    qputenv("VEXA_LOOPBACK_SCENARIO", scenarioPath.toUtf8());
    // A line for each frame and one for its end, with room to spare.
    qputenv("VEXA_LOOPBACK_TRUTH_RECORDS", QByteArray::number(qint64(seconds + 120) * receivers * 60 * 2 + 100000));
    QApplication application(argc, argv);
    QApplication::setStyle(new DarkStyle);
    const StyleSheetNoiseFilter noiseFilter;
    QApplication::setQuitOnLastWindowClosed(false);
    initVexaResources();
    loadFonts();

    NDIWindowParts parts = NDIWindowParts::ofThisMachine();
    parts.minuteMs = testMs;
    const QPointer<FramelessWindow> frame = new FramelessWindow;
    auto *const window = new NDIWindow(parts);
    frame->setContent(window);
    QObject::connect(frame, &FramelessWindow::requestClose, window, &NDIWindow::requestClose);
    frame->show();
    frame->maximizeOrCenter();
    window->warmUpPreview();
    const Ui::NDIWindow &ui = window->form();
    waitUntil([&ui] { return ui.sourceList->count() > 0; }, 30000);
    waitUntil([] { return false; }, 3000); // the probes
    const int source = ui.sourceList->findText(QStringLiteral("LOOPBACK (1080p59.94)"));
    if (source < 0) {
        std::printf("FAILED: the loopback runtime has no source of 1080p59.94\n");
        return 1;
    }
    ui.sourceList->setCurrentIndex(source);
    ui.threadCount->setCurrentIndex(receivers - 1);

    std::vector<SoakedTest> tests;
    Heartbeat heartbeat;
    IdleThread idleThread;
    QElapsedTimer clock;
    clock.start();
    std::printf(
        "| test | from [s] | own memory [MB] | beat late, 99 %% [ms] | most [ms] | idle thread late, most [ms] |\n"
        "|---|---:|---:|---:|---:|---:|\n");
    while (clock.elapsed() < seconds * qint64(1000)) {
        const qint64 fromS = clock.elapsed() / 1000;
        tests.push_back(runTest(*window, testMs, &heartbeat, &idleThread));
        const SoakedTest &test = tests.back();
        std::printf("| %zu | %lld | %.1f | %.1f | %.1f | %.1f |\n", tests.size(), static_cast<long long>(fromS),
                    test.memoryMb, test.p99Ms, test.latestMs, test.idleLatestMs);
        std::fflush(stdout);
        // Records are named by the second.
        waitUntil([] { return false; }, 1100);
    }
    frame->close();
    delete frame.data();
    return judge(tests, truthPath, testMs, strict);
}
