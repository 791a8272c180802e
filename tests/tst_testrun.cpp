#include "app/journalformat.h"
#include "app/recordfile.h"
#include "app/testrun.h"
#include "ndi/ndimetatypes.h"
#include "tests/support/fakendi.h"
#include "tests/support/ownmemory.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QSemaphore>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <memory>

namespace {

const FakeFrame hd25 = FakeFrame::ofVideo(1920, 1080, 25, 1);
const FakeFrame errorFrame = FakeFrame::ofType(NDIlib_frame_type_error);

NdiSource sourceNamed(const char *name)
{
    return NdiSource(NDIlib_source_t{name, "10.0.0.1:5961"});
}

} // namespace

class TestTestRun final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void passesMeasurementsAndEndsOn();
    void stopsAllSources();
    void stopDeliversWhatWasMeasured();
    void picturesComeOnRequestFromTheChosenSource();
    void rowsCarryFrozenNames();
    void withoutRowsNothingIsWritten();
    void aNewTestHasNoRows();
    void rowsTakeNoMoreMemoryForALongName();
    void deletedWhileRunning();
    void deletedAfterAnEndThatNobodyHeard();
    void deletedByAnEventJustBeforeTheEnd();
    void theJournalIsFedWhileTheThreadIsBusy();
};

void TestTestRun::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    registerNdiMetaTypes();
}

void TestTestRun::passesMeasurementsAndEndsOn()
{
    FakeNdi ndi;
    ndi.setScript({hd25, hd25, errorFrame});
    TestRun run;
    QSignalSpy frames(&run, &TestRun::frameReceived);
    QSignalSpy ends(&run, &TestRun::sourceFinished);
    run.begin({QStringLiteral("A"), QStringLiteral("B")});
    QVERIFY(!run.isRunning());
    run.startSource(sourceNamed("B"), 1, 2, 3);
    QVERIFY(run.isRunning());
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(ends.at(0).at(0).toInt(), 1);
    QCOMPARE(frames.count(), 4);
    QVERIFY(run.isRunning()); // until it is told to forget
    run.forget(7);
    QVERIFY(run.isRunning());
    run.forget(1);
    QVERIFY(!run.isRunning());
}

void TestTestRun::stopsAllSources()
{
    FakeNdi ndi;
    TestRun run;
    QSignalSpy ends(&run, &TestRun::sourceFinished);
    run.begin({});
    run.startSource(sourceNamed("A"), 0, 1, 0);
    run.startSource(sourceNamed("B"), 1, 1, 1);
    QTRY_COMPARE(ndi.counts().created, 2);
    run.stopReceivers();
    QTRY_COMPARE(ends.count(), 2);
    QCOMPARE(ndi.counts().destroyed, 2);
    run.forget(0);
    run.forget(1);
    QVERIFY(!run.isRunning());
}

void TestTestRun::stopDeliversWhatWasMeasured()
{
    FakeNdi ndi;
    ndi.setScript({hd25, hd25, hd25, errorFrame});
    TestRun run;
    QSignalSpy frames(&run, &TestRun::frameReceived);
    QSignalSpy ends(&run, &TestRun::sourceFinished);
    run.begin({QStringLiteral("A"), QStringLiteral("B")});
    run.startSource(sourceNamed("A"), 0, 2, 0);
    run.startSource(sourceNamed("B"), 1, 2, 2);
    // This thread takes no events meanwhile, neither the measurements nor the ends of the receivers.
    while (ndi.counts().destroyed < 4)
        QThread::yieldCurrentThread();
    QCOMPARE(frames.count(), 0);
    run.stopReceivers();
    QCOMPARE(frames.count(), 12);
    QCOMPARE(ends.count(), 0); // the record comes first
    QTRY_COMPARE(ends.count(), 2);
}

void TestTestRun::picturesComeOnRequestFromTheChosenSource()
{
    FakeNdi ndi;
    uint8_t pixels[128] = {};
    FakeFrame frame = FakeFrame::ofVideo(16, 4, 25, 1);
    frame.video.p_data = pixels;
    ndi.setScript(std::vector<FakeFrame>(100000, frame));
    ndi.setOnCapture([](int) { QThread::msleep(1); });
    TestRun run;
    QVector<int> pictures; // by source index
    connect(&run, &TestRun::frameData, this, [&pictures](int sourceIndex, int, int, int, uint8_t *pData) {
        delete[] pData;
        pictures.append(sourceIndex);
    });
    int framesSeen = 0; // of the source that pictures are expected of
    connect(&run, &TestRun::frameReceived, this,
            [&framesSeen](double, int, int, double, int, int, int, int, int sourceIndex) {
                framesSeen += sourceIndex == 1 ? 1 : 0;
            });
    const auto seesMoreFrames = [&framesSeen] {
        const int enough = framesSeen + 20;
        return QTest::qWaitFor([&framesSeen, enough] { return framesSeen >= enough; }, 20000);
    };
    run.begin({QStringLiteral("A"), QStringLiteral("B")});
    run.startSource(sourceNamed("A"), 0, 2, 0);
    run.startSource(sourceNamed("B"), 1, 2, 2);
    run.requestPicture();
    QVERIFY(seesMoreFrames());
    QCOMPARE(pictures, QVector<int>()); // no source is chosen
    run.setPictureSource(1);
    QTRY_COMPARE(pictures, QVector<int>({1}));
    QVERIFY(seesMoreFrames());
    QCOMPARE(pictures, QVector<int>({1})); // nothing was requested since
    run.requestPicture();
    QTRY_COMPARE(pictures, QVector<int>({1, 1}));
    run.setPictureSource(FrameCopyBudget::noSource);
    run.requestPicture();
    QVERIFY(seesMoreFrames());
    QCOMPARE(pictures, QVector<int>({1, 1}));
}

void TestTestRun::rowsCarryFrozenNames()
{
    TestRun run;
    run.begin({QStringLiteral("First, \"quoted\""), QStringLiteral("Second")});
    run.addRow(59.94, 1000, 59.0, 1920, 1080, 16, 1, 0);
    run.addRow(60.0, 1016, 59.0, 1920, 1080, 16, 0, 1);
    run.addRow(60.0, 1033, 59.0, 1920, 1080, 17, 9, 2); // no such source: no name
    QVERIFY(run.hasRows());
    QVERIFY(run.writeRecordIfAny());
    QVERIFY(!run.hasRows());
    QFile file(recordPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(file.readAll()),
             QStringLiteral("%1\nSecond,1920,1080,59,1000,1,59.94,16\nFirst, \"quoted\",1920,1080,59,1016,2,60,16\n"
                            ",1920,1080,59,1033,3,60,17\n")
                 .arg(recordHeader()));
    QVERIFY(file.remove());
}

void TestTestRun::withoutRowsNothingIsWritten()
{
    TestRun run;
    run.begin({QStringLiteral("A")});
    run.addRow(60.0, 16, 59.0, 0, 0, 16, 0, 0); // no picture
    QVERIFY(!run.hasRows());
    const QString before = recordPath();
    QVERIFY(run.writeRecordIfAny());
    QCOMPARE(recordPath(), before);
}

void TestTestRun::aNewTestHasNoRows()
{
    TestRun run;
    run.begin({QStringLiteral("A")});
    run.addRow(59.94, 1000, 59.0, 1920, 1080, 16, 0, 0);
    run.begin({QStringLiteral("A")});
    QVERIFY(!run.hasRows());
}

void TestTestRun::rowsTakeNoMoreMemoryForALongName()
{
    const double before = ownMemoryMb();
    if (before == 0.0)
        QSKIP("the system does not tell how much memory the process has");
    TestRun run;
    run.begin({QString(50000, QLatin1Char('x'))});
    for (int i = 0; i < 10000; ++i)
        run.addRow(59.94, i, 59.0, 1920, 1080, 16, 0, 0);
    const double grownMb = ownMemoryMb() - before; // as texts they would take 1000 MB
    QVERIFY2(grownMb < 50, qPrintable(QString::number(grownMb)));
    run.clearRows();
}

void TestTestRun::deletedWhileRunning()
{
    FakeNdi ndi;
    {
        TestRun run;
        run.begin({});
        run.startSource(sourceNamed("A"), 0, 4, 0);
        QTRY_VERIFY(ndi.counts().created > 0);
    }
    QCOMPARE(ndi.counts().created, ndi.counts().destroyed);
}

void TestTestRun::deletedAfterAnEndThatNobodyHeard()
{
    FakeNdi ndi;
    ndi.setScript({hd25, errorFrame});
    {
        TestRun run;
        QSignalSpy ends(&run, &TestRun::sourceFinished);
        run.begin({QStringLiteral("A")});
        run.startSource(sourceNamed("A"), 0, 2, 0);
        QTRY_COMPARE(ends.count(), 1);
        QVERIFY(run.isRunning());
    } // must not wait for another end
    QCOMPARE(ndi.counts().created, ndi.counts().destroyed);
}

/// The report of the end is in the queue already, right behind the event that deletes.
void TestTestRun::deletedByAnEventJustBeforeTheEnd()
{
    FakeNdi ndi;
    ndi.setScript({errorFrame});
    QSemaphore end;
    std::atomic<QThread *> receiverThread{nullptr};
    ndi.setOnCapture([&end, &receiverThread](int) {
        receiverThread = QThread::currentThread();
        end.acquire();
    });
    auto run = std::make_unique<TestRun>();
    run->begin({});
    run->startSource(sourceNamed("A"), 0, 1, 0);
    QTRY_VERIFY(receiverThread != nullptr);
    QObject context; // takes the event along when this function is left early
    QMetaObject::invokeMethod(
        &context, [&run] { run.reset(); }, Qt::QueuedConnection);
    end.release();
    QVERIFY(receiverThread.load()->wait(20000));

    bool hadToBeWoken = false;
    QTimer waking;
    connect(&waking, &QTimer::timeout, this, [this, &hadToBeWoken] {
        hadToBeWoken = true;
        QMetaObject::invokeMethod(
            this, [] {}, Qt::QueuedConnection);
    });
    waking.start(10000);
    QCoreApplication::processEvents();
    QVERIFY(!run);
    QVERIFY(!hadToBeWoken);
    QCOMPARE(ndi.counts().created, ndi.counts().destroyed);
}

void TestTestRun::theJournalIsFedWhileTheThreadIsBusy()
{
    constexpr int frameCount = 20;
    constexpr int receiverCount = 4;
    const QTemporaryDir folder;
    qputenv("VEXA_JOURNAL_FOLDER", folder.path().toUtf8());
    FakeNdi ndi;
    ndi.setScript(std::vector<FakeFrame>(frameCount, hd25));
    TestRun run;
    QSignalSpy frames(&run, &TestRun::frameReceived);
    run.begin({QStringLiteral("A"), QStringLiteral("B")});
    run.startSource(sourceNamed("B"), 1, receiverCount, 2);
    QElapsedTimer clock;
    clock.start();
    QVector<Measurement> rows;
    while (rows.size() < frameCount * receiverCount && clock.elapsed() < 20000) { // without an event loop
        QThread::msleep(20);
        const QStringList names = QDir(folder.path()).entryList(QDir::Files);
        if (QFileInfo(folder.filePath(names.value(0))).size() < frameCount * receiverCount * journalRowBytes)
            continue;
#if defined(Q_OS_WIN) // nobody can open the file there while it is written
        break;
#endif
        QFile file(folder.filePath(names.value(0)));
        rows.clear();
        if (!file.open(QIODevice::ReadOnly))
            continue;
        JournalReader reader(file.readAll());
        for (Measurement row; reader.nextRow(&row);)
            rows.append(row);
    }
    qputenv("VEXA_JOURNAL_FOLDER", "off");
    QVERIFY(clock.elapsed() < 20000);
    QCOMPARE(frames.count(), 0);
#if !defined(Q_OS_WIN)
    QCOMPARE(rows.size(), frameCount * receiverCount);
#endif
    for (const Measurement &row : qAsConst(rows)) {
        QCOMPARE(row.sourceIndex, 1);
        QVERIFY(row.graph >= 2 && row.graph < 2 + receiverCount);
        QCOMPARE(row.width, 1920);
        QCOMPARE(row.defaultFps, 25.0);
    }
    run.clearRows();
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 0);
}

QTEST_GUILESS_MAIN(TestTestRun)
#include "tst_testrun.moc"
