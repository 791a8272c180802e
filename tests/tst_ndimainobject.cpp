#include "app/journalformat.h"
#include "app/ndimainobject.h"
#include "app/recordfile.h"
#include "tests/support/fakendi.h"
#include "tests/support/testbase.h"
#include "tests/support/testhome.h"
#include "tests/support/testrecord.h"
#include "tests/support/usagetext.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <mutex>

namespace {

const FakeFrame errorFrame = FakeFrame::ofType(NDIlib_frame_type_error);
const FakeFrame hd25 = FakeFrame::ofVideo(1920, 1080, 25, 1);

class CollectingConsole final : public ConsoleWriter {
public:
    void writeLine(const QByteArray &line) override
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        m_text += line + '\n';
    }
    void writeDot() override
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        ++m_dots;
    }
    void flushDots() override
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        m_shownDots = m_dots;
    }
    bool isTerminal() const override { return isShownOnTerminal; }
    QByteArray text() const
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        return m_text;
    }
    int dots() const
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        return m_dots;
    }
    int shownDots() const
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        return m_shownDots;
    }

    bool isShownOnTerminal = false;

private:
    mutable std::mutex m_mutex; // guards the others
    QByteArray m_text;
    int m_dots = 0;
    int m_shownDots = 0;
};

QByteArray createdLine()
{
    return "Created the recorded file(" + recordPath().toUtf8() + ") for your testing!!!!!\n\n";
}

} // namespace

class TestNDIMainObject final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void usage();
    void sourcesAreNumbered();
    void noSourcesAreSaidTwice();
    void findingWithoutPrinting();
    void noFinder();
    void resultCodesInPlaceOfACount_data();
    void resultCodesInPlaceOfACount();
    void badParameters_data();
    void badParameters();
    void unknownSource_data();
    void unknownSource();
    void timerEndsTheTest();
    void rowsAreWhatWasReceived();
    void framesWithoutSizeAreIgnored();
    void receiversThatEndEarlyLeaveTheirJournal();
    void receiversThatEndWithoutAFrameLeaveNone();
    void stopIsTakenOnce();
    void aSecondTestStartsAfresh();
    void destructionWaitsForTheReceivers();
    void withAParentItRunsOnTheParentsThread();
    void stopRecordsWhatStillWaits();
    void lastDotsAreShownWithoutAnother();
    void controlsInNamesStayOffTheTerminal_data();
    void controlsInNamesStayOffTheTerminal();

private:
    void stop(NDIMainObject *object);
    void readRecord(TestRecord *record);
    /// Rows of the only journal that a test has left, which is removed; -1 when there is none, -2 when there are more.
    int takeJournal() const;

    TestHome m_home;
    QStringList m_made;
};

void TestNDIMainObject::initTestCase()
{
    QVERIFY(m_home.use());
    qputenv("VEXA_JOURNAL_FOLDER", m_home.filePath(QStringLiteral("journal")).toUtf8());
}

void TestNDIMainObject::cleanupTestCase()
{
    for (const QString &path : qAsConst(m_made))
        QFile::remove(path);
}

void TestNDIMainObject::readRecord(TestRecord *record)
{
    m_made.append(recordPath());
    *record = TestRecord::read(recordPath());
}

void TestNDIMainObject::stop(NDIMainObject *object)
{
    QMetaObject::invokeMethod(
        object, [object] { object->stopTest(); }, Qt::BlockingQueuedConnection);
}

int TestNDIMainObject::takeJournal() const
{
    const QDir folder(m_home.filePath(QStringLiteral("journal")));
    const QStringList files = folder.entryList(QDir::Files);
    if (files.size() != 1)
        return files.isEmpty() ? -1 : -2;
    QFile file(folder.filePath(files.first()));
    if (!file.open(QIODevice::ReadOnly))
        return -2;
    const int rows = int(JournalReader(file.readAll()).rowCount());
    return file.remove() ? rows : -2;
}

void TestNDIMainObject::usage()
{
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(object.printUsage());
    QCOMPARE(console.text(), usageText);
}

void TestNDIMainObject::sourcesAreNumbered()
{
    FakeNdi ndi;
    ndi.setSourceLists({{}, {"ONE"}, {"ONE", "%1 %s%n", "DREI (\xc3\xbc)"}});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(!object.findSources(true));
    QCOMPARE(console.text(), QByteArray("Checking NDI sources...\n\n"
                                        "NDI Sources : 3\n"
                                        "[1] ONE\n"
                                        "[2] %1 %s%n\n"
                                        "[3] DREI (\xc3\xbc)\n"));
    QCOMPARE(ndi.counts().findersDestroyed, 0); // the list must stay readable
}

void TestNDIMainObject::noSourcesAreSaidTwice()
{
    FakeNdi ndi;
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(!object.findSources(true));
    QCOMPARE(console.text(), QByteArray("Checking NDI sources...\n\n"
                                        "Can not find NDI sources\n"
                                        "Can not find NDI sources\n"));
}

void TestNDIMainObject::findingWithoutPrinting()
{
    FakeNdi ndi;
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(!object.findSources(false));
    QCOMPARE(console.text(), QByteArray("Checking NDI sources...\n\n"));
}

void TestNDIMainObject::noFinder()
{
    FakeNdi ndi;
    ndi.setFinderFails(true);
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(!object.findSources(true));
    QCOMPARE(console.text(), QByteArray("Checking NDI sources...\n\nCan not init NDI instance\n"));
    QCOMPARE(ndi.counts().waits, 0);
}

void TestNDIMainObject::resultCodesInPlaceOfACount_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("no finder") << 10000 << QByteArray("Can not init NDI instance\n");
    QTest::newRow("no source appeared") << 10001 << QByteArray("Can not find NDI sources\n");
    QTest::newRow("none") << 0 << QByteArray("Can not find NDI sources\n");
}

void TestNDIMainObject::resultCodesInPlaceOfACount()
{
    QFETCH(int, count);
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    object.printSources(nullptr, count);
    QTEST(console.text(), "expected");
}

void TestNDIMainObject::badParameters_data()
{
    const QByteArray badTime("Invalidated time parameter.\n");
    const QByteArray badReceivers("Invalidated receivers parameter.\n");
    QTest::addColumn<int>("minutes");
    QTest::addColumn<int>("receivers");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("time 0") << 0 << 1 << badTime;
    QTest::newRow("time 6") << 6 << 1 << badTime;
    QTest::newRow("time -1") << -1 << 1 << badTime;
    QTest::newRow("receivers 0") << 1 << 0 << badReceivers;
    QTest::newRow("receivers 9") << 5 << 9 << badReceivers;
    QTest::newRow("both: the time is told") << 0 << 0 << badTime;
}

void TestNDIMainObject::badParameters()
{
    QFETCH(int, minutes);
    QFETCH(int, receivers);
    FakeNdi ndi;
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(!object.startTest(QStringLiteral("CAM"), minutes, receivers));
    QTEST(console.text(), "expected");
    QCOMPARE(ndi.counts().findersCreated, 0);
}

void TestNDIMainObject::unknownSource_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("another name") << QStringLiteral("CAM 2");
    QTest::newRow("other letter case") << QStringLiteral("cam 1");
    QTest::newRow("a part of the name") << QStringLiteral("CAM");
    QTest::newRow("more than the name") << QStringLiteral("CAM 1 ");
    QTest::newRow("no name") << QString();
    QTest::newRow("a placeholder") << QStringLiteral("%1 %2");
}

void TestNDIMainObject::unknownSource()
{
    QFETCH(QString, name);
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM 1"}});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(!object.startTest(name, 1, 1));
    QCOMPARE(console.text(), "Checking NDI sources...\n\nNot found NDI source [" + name.toLatin1() + "]\n");
    QCOMPARE(ndi.counts().created, 0);
}

void TestNDIMainObject::timerEndsTheTest()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"OTHER", "CAM 1"}});
    ndi.setScript({hd25, hd25, hd25});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    object.setMinuteMs(150);
    QSignalSpy ends(&object, &NDIMainObject::quitApplication);
    QVERIFY(object.startTest(QStringLiteral("CAM 1"), 2, 4));
    const QByteArray opening("Checking NDI sources...\n\n"
                             "NDI Source : CAM 1\n"
                             "Time : 2 min(s)\n"
                             "Number of Receiver : 4\n\n"
                             "Start Testing...\n");
    QCOMPARE(console.text(), opening);
    QVERIFY(ends.wait());
    TestRecord record;
    readRecord(&record);
    QCOMPARE(console.text(), opening + "\nCompleted to test!!!\n\n" + createdLine());
    QCOMPARE(record.problem, QString());
    QCOMPARE(record.header, recordHeader().toUtf8());
    QCOMPARE(record.rows.size(), 12);
    QCOMPARE(console.dots(), 12);
    QCOMPARE(ndi.lastSourceName(), QByteArray("CAM 1"));
    QCOMPARE(ends.count(), 1);
}

void TestNDIMainObject::rowsAreWhatWasReceived()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"B\xc3\x9cHNE (1)"}});
    ndi.setScript({hd25, FakeFrame::ofVideo(1280, 720, 60000, 1001)});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(object.startTest(QString::fromLatin1("B\xc3\x9cHNE (1)"), 1, 1));
    QTRY_COMPARE(console.dots(), 2);
    stop(&object);
    TestRecord record;
    readRecord(&record);
    QCOMPARE(record.rows.size(), 2);
    QCOMPARE(record.rows.at(0).sourceName, QByteArray("B\xc3\x9cHNE (1)"));
    QCOMPARE(record.rows.at(0).width, 1920);
    QCOMPARE(record.rows.at(0).height, 1080);
    QCOMPARE(record.rows.at(0).defaultFps, 25.0);
    QCOMPARE(record.rows.at(0).receiver, 1);
    QCOMPARE(record.rows.at(0).intervalMs, 0);
    QCOMPARE(record.rows.at(1).width, 1280);
    QCOMPARE(record.rows.at(1).height, 720);
    QCOMPARE(record.rows.at(1).defaultFps, 59.0);
}

void TestNDIMainObject::framesWithoutSizeAreIgnored()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}});
    const FakeFrame noWidth = FakeFrame::ofVideo(0, 1080, 25, 1);
    ndi.setScript({FakeFrame::ofVideo(0, 0, 25, 1), hd25, FakeFrame::ofVideo(0, 0, 25, 1), noWidth});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(object.startTest(QStringLiteral("CAM"), 1, 1));
    QTRY_COMPARE(console.dots(), 2);
    stop(&object);
    TestRecord record;
    readRecord(&record);
    QCOMPARE(record.rows.size(), 2); // only both together are no size
    QCOMPARE(record.rows.at(1).width, 0);
    QCOMPARE(console.dots(), 2);
}

void TestNDIMainObject::receiversThatEndEarlyLeaveTheirJournal()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"A", "B", "CAM"}});
    ndi.setScript({hd25, hd25, errorFrame});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QSignalSpy ends(&object, &NDIMainObject::quitApplication);
    const QString before = recordPath();
    QVERIFY(object.startTest(QStringLiteral("CAM"), 5, 8));
    QTRY_COMPARE(ends.count(), 1);
    QVERIFY2(console.text().endsWith("Start Testing...\n"
                                     "Receiver [2] has been closed.\n"
                                     "All Receivers have been closed.\n"),
             console.text());
    stop(&object); // as when the time is up in the same moment
    QCOMPARE(ends.count(), 1);
    QCOMPARE(recordPath(), before);
    QCOMPARE(takeJournal(), 16);
}

void TestNDIMainObject::receiversThatEndWithoutAFrameLeaveNone()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}});
    ndi.setScript({errorFrame});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QSignalSpy ends(&object, &NDIMainObject::quitApplication);
    QVERIFY(object.startTest(QStringLiteral("CAM"), 1, 2));
    QTRY_COMPARE(ends.count(), 1);
    QVERIFY2(console.text().endsWith("Start Testing...\n"
                                     "Receiver [0] has been closed.\n"
                                     "All Receivers have been closed.\n"),
             console.text());
    QCOMPARE(takeJournal(), -1);
}

void TestNDIMainObject::stopIsTakenOnce()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QSignalSpy ends(&object, &NDIMainObject::quitApplication);
    QVERIFY(object.startTest(QStringLiteral("CAM"), 1, 1));
    // As when the user presses Ctrl-C in the moment in which the time is up.
    QMetaObject::invokeMethod(
        &object,
        [&object] {
            object.stopTest();
            object.stopTest();
        },
        Qt::BlockingQueuedConnection);
    m_made.append(recordPath());
    QCOMPARE(console.text().count("Completed to test!!!"), 1);
    QCOMPARE(console.text().count("Created the recorded file("), 1);
    QCOMPARE(ends.count(), 1);
    QFile record(recordPath());
    QVERIFY(record.open(QIODevice::ReadOnly));
    QCOMPARE(record.readAll(), recordHeader().toUtf8() + "\n\n"); // a test without a frame leaves a record too
}

void TestNDIMainObject::aSecondTestStartsAfresh()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}, {"CAM"}});
    ndi.setScript({hd25, errorFrame});
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QSignalSpy ends(&object, &NDIMainObject::quitApplication);
    for (int test = 1; test <= 2; ++test) {
        QVERIFY(object.startTest(QStringLiteral("CAM"), 1, 1));
        QTRY_COMPARE(ends.count(), test);
        QCOMPARE(takeJournal(), 1);
    }
}

void TestNDIMainObject::destructionWaitsForTheReceivers()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}});
    {
        CollectingConsole console;
        NDIMainObject object;
        object.setConsole(&console);
        QVERIFY(object.startTest(QStringLiteral("CAM"), 1, 8));
    }
    QCOMPARE(ndi.counts().created, 8);
    QCOMPARE(ndi.counts().destroyed, 8);
}

void TestNDIMainObject::withAParentItRunsOnTheParentsThread()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}, {"CAM"}});
    ndi.setScript({hd25, hd25, errorFrame});
    CollectingConsole console;
    QObject parent;
    auto *const object = new NDIMainObject(&parent);
    object->setConsole(&console);
    QSignalSpy ends(object, &NDIMainObject::quitApplication);
    QVERIFY(object->startTest(QStringLiteral("CAM"), 1, 2));
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(console.dots(), 4);
    ndi.setScript({});
    QVERIFY(object->startTest(QStringLiteral("CAM"), 1, 2)); // deleted while it runs
}

/// Measurements that wait in the queue of a busy thread count as much as those that it has taken.
void TestNDIMainObject::stopRecordsWhatStillWaits()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}});
    constexpr int frames = 50;
    ndi.setScript(std::vector<FakeFrame>(frames, hd25));
    QSemaphore mayCapture;
    ndi.setOnCapture([&mayCapture](int number) {
        if (number < frames)
            mayCapture.acquire();
    });
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(object.startTest(QStringLiteral("CAM"), 1, 1));
    QMetaObject::invokeMethod(
        &object,
        [&] {
            mayCapture.release(frames);
            while (ndi.counts().videoFreed < frames)
                QThread::yieldCurrentThread();
            object.stopTest();
        },
        Qt::BlockingQueuedConnection);
    TestRecord record;
    readRecord(&record);
    QCOMPARE(record.rows.size(), frames);
}

void TestNDIMainObject::lastDotsAreShownWithoutAnother()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"CAM"}});
    ndi.setScript({hd25, hd25, hd25}); // and then nothing
    CollectingConsole console;
    NDIMainObject object;
    object.setConsole(&console);
    QVERIFY(object.startTest(QStringLiteral("CAM"), 1, 1));
    QTRY_COMPARE(console.shownDots(), 3);
}

void TestNDIMainObject::controlsInNamesStayOffTheTerminal_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("onTerminal");
    QTest::newRow("plain") << QByteArray("CAM (1)") << QByteArray("CAM (1)");
    QTest::newRow("C0") << QByteArray("A\x01\x1b[2J\t\x1f B") << QByteArray("A??[2J?? B");
    QTest::newRow("DEL") << QByteArray("A\x7f~") << QByteArray("A?~");
    QTest::newRow("C1 in UTF-8: first, last, and the letter after")
        << QByteArray("\xc2\x80 \xc2\x9f \xc2\xa0") << QByteArray("? ? \xc2\xa0");
    QTest::newRow("C1 as a lone byte") << QByteArray("A\x9b"
                                                     "2J \x80 \x9f \xa0")
                                       << QByteArray("A?2J ? ? \xa0");
    QTest::newRow("letters whose later bytes look like C1")
        << QByteArray("\xc3\x9c \xe2\x82\xac \xf0\x9f\x8e\xa5") << QByteArray("\xc3\x9c \xe2\x82\xac \xf0\x9f\x8e\xa5");
    QTest::newRow("sequence cut short") << QByteArray("\xe2\x82") << QByteArray("\xe2?");
    QTest::newRow("overlong C1") << QByteArray("\xe0\x82\x9b \xf0\x80\x82\x9b") << QByteArray("\xe0?? \xf0???");
    QTest::newRow("surrogate, beyond the last character")
        << QByteArray("\xed\xa0\x80 \xf4\x90\x80\x80") << QByteArray("\xed\xa0? \xf4???");
}

void TestNDIMainObject::controlsInNamesStayOffTheTerminal()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, onTerminal);
    for (const bool terminal : {true, false}) {
        FakeNdi ndi;
        ndi.setSourceLists({{name}});
        CollectingConsole console;
        console.isShownOnTerminal = terminal;
        NDIMainObject object;
        object.setConsole(&console);
        object.findSources(true);
        QCOMPARE(console.text(),
                 "Checking NDI sources...\n\nNDI Sources : 1\n[1] " + (terminal ? onTerminal : name) + '\n');
        object.startTest(QString::fromLatin1(name + '!'), 1, 1);
        QVERIFY(console.text().endsWith("Not found NDI source [" + (terminal ? onTerminal : name) + "!]\n"));
    }
}

QTEST_GUILESS_MAIN(TestNDIMainObject)
#include "tst_ndimainobject.moc"
