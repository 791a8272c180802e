#include "probes/loadtrack.h"

#include "tests/load/scriptedreader.h"
#include "tests/support/testbase.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

namespace {

using Samples = QVector<QPair<int, int>>; // processor, graphics

constexpr std::chrono::milliseconds noPause(0);

/// Runs the loop in this thread and clears the flag with the last of `count` samples.
Samples samplesOf(LoadTrack &track, int count)
{
    Samples samples;
    const auto connection = QObject::connect(&track, &LoadTrack::gpuCpuLoad, &track, [&](int cpuLoad, int gpuLoad) {
        samples.append({cpuLoad, gpuLoad});
        track.running = samples.size() < count;
    });
    track.running = true;
    track.start();
    QObject::disconnect(connection);
    return samples;
}

} // namespace

class TestLoadTrack final : public TestBase {
    Q_OBJECT

private slots:
    void startsStopped();
    void notRunningOnlyTerminates();
    void oneSamplePerCycle();
    void figuresThatCannotBeToldAreZero();
    void pausesBeforeEachCycle();
    void stopDuringASlowCycleSendsOneMoreSample();
    void canBeStartedAgain();
    void platformFiguresAreInRange();
    void secondReaderGoesOnFromTheFirst();
};

void TestLoadTrack::startsStopped()
{
    const LoadTrack track;
    QVERIFY(!track.running);
    QVERIFY(!track.parent());
}

void TestLoadTrack::notRunningOnlyTerminates()
{
    LoadTrack track(std::make_unique<ScriptedReader>(), std::chrono::hours(1));
    QSignalSpy samples(&track, &LoadTrack::gpuCpuLoad);
    QSignalSpy ends(&track, &LoadTrack::terminate);
    track.start();
    QCOMPARE(samples.count(), 0);
    QCOMPARE(ends.count(), 1);
}

void TestLoadTrack::oneSamplePerCycle()
{
    auto reader = std::make_unique<ScriptedReader>();
    QStringList order;
    int cycle = 0;
    reader->processor = [&]() -> std::optional<int> {
        order.append(QStringLiteral("processor"));
        return cycle == 0 ? std::nullopt : std::optional<int>(10 * cycle);
    };
    reader->graphics = [&](const LoadAbort &) -> std::optional<int> {
        order.append(QStringLiteral("graphics"));
        return 130 + cycle++;
    };
    LoadTrack track(std::move(reader), noPause);
    connect(&track, &LoadTrack::gpuCpuLoad, &track, [&order] { order.append(QStringLiteral("sample")); });
    connect(&track, &LoadTrack::terminate, &track, [&order] { order.append(QStringLiteral("end")); });
    QCOMPARE(samplesOf(track, 3), (Samples{{0, 130}, {10, 131}, {20, 132}}));
    const QStringList cycleOrder{QStringLiteral("processor"), QStringLiteral("graphics"), QStringLiteral("sample")};
    QCOMPARE(order, cycleOrder + cycleOrder + cycleOrder + QStringList(QStringLiteral("end")));
}

void TestLoadTrack::figuresThatCannotBeToldAreZero()
{
    LoadTrack track(std::make_unique<ScriptedReader>(), noPause);
    QCOMPARE(samplesOf(track, 2), (Samples{{0, 0}, {0, 0}}));
}

void TestLoadTrack::pausesBeforeEachCycle()
{
    LoadTrack track(std::make_unique<ScriptedReader>(), std::chrono::milliseconds(30));
    QElapsedTimer time;
    time.start();
    samplesOf(track, 2);
    QVERIFY2(time.elapsed() >= 59, qPrintable(QString::number(time.elapsed())));
}

void TestLoadTrack::stopDuringASlowCycleSendsOneMoreSample()
{
    QSemaphore inside;
    QSemaphore mayGoOn;
    auto reader = std::make_unique<ScriptedReader>();
    reader->graphics = [&](const LoadAbort &) -> std::optional<int> {
        inside.release();
        mayGoOn.acquire();
        return 12;
    };
    LoadTrack track(std::move(reader), noPause);
    QThread thread;
    QStringList order; // written on the thread, read when it is gone
    connect(&thread, &QThread::started, &track, &LoadTrack::start);
    connect(
        &track, &LoadTrack::gpuCpuLoad, &track, [&order](int, int gpuLoad) { order.append(QString::number(gpuLoad)); },
        Qt::DirectConnection);
    connect(
        &track, &LoadTrack::terminate, &track, [&order] { order.append(QStringLiteral("end")); }, Qt::DirectConnection);
    connect(&track, &LoadTrack::terminate, &thread, &QThread::quit);
    track.moveToThread(&thread);
    track.running = true;
    thread.start(QThread::InheritPriority);
    inside.acquire();
    track.running = false;
    QVERIFY(!thread.wait(50)); // the cycle is not cut short
    mayGoOn.release();
    QTRY_VERIFY(thread.isFinished());
    QVERIFY(thread.wait());
    QCOMPARE(order, (QStringList{QStringLiteral("12"), QStringLiteral("end")}));
}

void TestLoadTrack::canBeStartedAgain()
{
    LoadTrack track(std::make_unique<ScriptedReader>(), noPause);
    QSignalSpy ends(&track, &LoadTrack::terminate);
    QCOMPARE(samplesOf(track, 1).size(), 1);
    QCOMPARE(samplesOf(track, 2).size(), 2);
    QCOMPARE(ends.count(), 2);
}

void TestLoadTrack::platformFiguresAreInRange()
{
    LoadTrack track(makeLoadReader(), std::chrono::milliseconds(20));
    const Samples samples = samplesOf(track, 3);
    QCOMPARE(samples.size(), 3);
    QCOMPARE(samples.first().first, 0);
    for (const QPair<int, int> &sample : samples) {
        QVERIFY2(sample.first >= 0 && sample.first <= 100, qPrintable(QString::number(sample.first)));
        QVERIFY2(sample.second >= 0, qPrintable(QString::number(sample.second)));
    }
}

void TestLoadTrack::secondReaderGoesOnFromTheFirst()
{
    makeLoadReader()->processorPercent();
    const std::unique_ptr<LoadReader> second = makeLoadReader();
    QThread::msleep(30); // some ticks of the system's clock
    QVERIFY(second->processorPercent());
}

QTEST_GUILESS_MAIN(TestLoadTrack)
#include "tst_loadtrack.moc"
