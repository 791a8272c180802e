#include "loopback/truthreader.h"
#include "tests/support/processcontrol.h"
#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/testrecord.h"
#include "tests/support/truthwait.h"

#include <QtTest>

#include <deque>
#include <memory>

using Interrupt = ProgramRun::Interrupt;
Q_DECLARE_METATYPE(ProgramRun::Interrupt)

namespace {

const QStringList eightReceivers{QStringLiteral("-test"), QStringLiteral("LOOPBACK (720p50)"),
                                 QStringLiteral("-receivers"), QStringLiteral("8")};

#if defined(Q_OS_WIN) // what reaches one run of many
constexpr Interrupt targeted = Interrupt::Break;
#else
constexpr Interrupt targeted = Interrupt::Interrupt;
#endif

} // namespace

/// The ways out of the real program.
class TestConsoleEndings final : public TestBase {
    Q_OBJECT

private slots:
    void interruptWritesTheRecord_data();
    void interruptWritesTheRecord();
    void interruptBeforeTheTestEndsAtOnce();
    void receiversThatFailLeaveTheirJournal();
    void aSilentSourceLeavesAnEmptyRecord();
    void recordThatCannotBeMadeIsTold();
    void twoHundredStartsAndEnds();
};

void TestConsoleEndings::interruptWritesTheRecord_data()
{
    QTest::addColumn<Interrupt>("kind");
    QTest::newRow("Ctrl-C") << Interrupt::Interrupt;
#if defined(Q_OS_WIN) // the platforms differ in what they can ask
    QTest::newRow("Ctrl-Break") << Interrupt::Break;
#else
    QTest::newRow("termination") << Interrupt::Terminate;
    QTest::newRow("hang-up") << Interrupt::HangUp;
#endif
}

void TestConsoleEndings::interruptWritesTheRecord()
{
    QFETCH(Interrupt, kind);
    if (!canInterruptProcesses())
        QSKIP("no program can interrupt another here; windows_interrupt does it from outside");
    ProgramRun run(eightReceivers);
    run.start();
    QVERIFY2(run.waitForDots(200), run.account());
    run.interrupt(kind);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    const QByteArray text = run.standardError();
    QVERIFY2(text.contains("Start Testing...\n\nCompleted to test!!!\n\nCreated the recorded file("), run.account());
    const TestRecord record = TestRecord::read(run.recordPath());
    QCOMPARE(record.problem, QString());
    QVERIFY(record.rows.size() >= 200);
    QCOMPARE(run.standardOutput(), QByteArray(record.rows.size(), '.'));
}

void TestConsoleEndings::interruptBeforeTheTestEndsAtOnce()
{
    if (!canInterruptProcesses())
        QSKIP("no program can interrupt another here");
    ProgramRun run(eightReceivers);
    run.start();
    QVERIFY2(run.waitForError("Checking NDI sources..."), run.account());
    run.interrupt(Interrupt::Interrupt);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY2(!run.standardError().contains("Start Testing"), run.account());
}

void TestConsoleEndings::receiversThatFailLeaveTheirJournal()
{
    ProgramRun run({QStringLiteral("-test"), QStringLiteral("CAM"), QStringLiteral("-receivers"), QStringLiteral("4"),
                    QStringLiteral("-time"), QStringLiteral("5")});
    run.setScenario("{\"sources\":[{\"name\":\"FIRST\"},{\"name\":\"CAM\",\"rateN\":50,\"rateD\":1,"
                    "\"events\":[{\"kind\":\"error\",\"atFrame\":150}]}]}");
    run.keepTruth();
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY2(run.standardError().endsWith("Start Testing...\n"
                                          "Receiver [1] has been closed.\n"
                                          "All Receivers have been closed.\n"),
             run.account());
    QCOMPARE(run.journals().size(), 1);
    const TestRecord record = TestRecord::read(run.recoverRecord());
    QCOMPARE(record.problem, QString());
    QCOMPARE(run.journals(), QStringList());
    const std::vector<loopback::TruthRecord> events = loopback::readTruth(run.truthPath().toStdString());
    QCOMPARE(int(loopback::countTruth(events, "error")), 4);
    QCOMPARE(record.rows.size(), int(loopback::countTruth(events, "video")));
    QVERIFY(record.rows.size() > 4);
    QCOMPARE(run.standardOutput(), QByteArray(record.rows.size(), '.'));
}

void TestConsoleEndings::aSilentSourceLeavesAnEmptyRecord()
{
    if (!canInterruptProcesses())
        QSKIP("no program can interrupt another here");
    ProgramRun run({QStringLiteral("-test"), QStringLiteral("SILENT")});
    run.setScenario("{\"sources\":[{\"name\":\"SILENT\",\"startMs\":600000}]}");
    run.keepTruth();
    run.start();
    QVERIFY2(run.waitForError("Start Testing..."), run.account());
    QVERIFY2(waitForTruth(run.truthPath(), "create", 1), run.account());
    // The interrupt is taken as the end of the test only once it runs; a moment later it certainly does.
    QVERIFY2(!run.waitForFinished(500), run.account());
    run.interrupt(Interrupt::Interrupt);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QFile record(run.recordPath());
    QVERIFY2(record.open(QIODevice::ReadOnly), run.account());
    QCOMPARE(record.readAll(), QByteArray("NDI Source Name, Frame Width, Frame Height, Default FPS, Time(ms), "
                                          "Receiver Index, Received FPS, Received Frame Length\n\n"));
}

void TestConsoleEndings::recordThatCannotBeMadeIsTold()
{
#if defined(Q_OS_WIN) // a variable cannot move the documents folder there
    QSKIP("the documents folder is the user's own");
#endif
    ProgramRun run(eightReceivers);
    QVERIFY(QDir().mkpath(run.home() + QLatin1String("/Documents")));
    QFile inTheWay(run.home() + QLatin1String("/Documents/Tessaly"));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    run.start();
    QVERIFY2(run.waitForDots(400), run.account());
    run.interrupt(Interrupt::Interrupt);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY2(run.standardError().endsWith("Start Testing...\n"
                                          "\nFinished to test. But not created the recorded file(csv) by some "
                                          "reason!!!\n\n"),
             run.account());
}

void TestConsoleEndings::twoHundredStartsAndEnds()
{
    // Half are interrupted after so many frames, half end by themselves in the same spread of moments;
    // all of them where nothing can interrupt. That is Wine, where a start takes long: each moment twice, no more.
    const int runs = canInterruptProcesses() ? 200 : 80;
    constexpr std::size_t atTheSameTime = 12;
    constexpr int spread = 40;
    constexpr int firstError = 30;
    constexpr int secondError = 60; // frames after the first, for a receiver that connects too late for that one
    const auto makeRun = [](int number) {
        const bool endsByItself = number % 2 == 0 || !canInterruptProcesses();
        const int frames = (number / 2) % spread;
        auto run = std::make_unique<ProgramRun>(QStringList{QStringLiteral("-test"), QStringLiteral("CAM"),
                                                            QStringLiteral("-receivers"), QStringLiteral("8")});
        QByteArray events;
        const auto errorAt = [](int frame) {
            return "{\"kind\":\"error\",\"atFrame\":" + QByteArray::number(frame) + "}";
        };
        if (endsByItself)
            events = errorAt(firstError + frames) + "," + errorAt(firstError + frames + secondError);
        run->setScenario("{\"sources\":[{\"name\":\"CAM\",\"width\":320,\"height\":180,\"rateN\":60,\"rateD\":1,"
                         "\"events\":["
                         + events + "]}]}");
        run->start();
        return run;
    };
    struct Running {
        int number = 0;
        std::unique_ptr<ProgramRun> run;
    };
    std::deque<Running> running;
    int started = 0;
    while (started < runs || !running.empty()) {
        while (started < runs && running.size() < atTheSameTime) {
            running.push_back({started, makeRun(started)});
            ++started;
        }
        const Running oldest = std::move(running.front());
        running.pop_front();
        ProgramRun &run = *oldest.run;
        if (oldest.number % 2 != 0 && canInterruptProcesses()) {
            QVERIFY2(run.waitForError("Start Testing..."), run.account());
            QVERIFY2(run.waitForDots((oldest.number / 2) % spread * 8), run.account());
            run.interrupt(targeted);
        }
        QVERIFY2(run.waitForFinished(90000), run.account());
        QVERIFY2(run.endedWith(1), run.account());
    }
}

QTEST_GUILESS_MAIN(TestConsoleEndings)
#include "tst_console_endings.moc"
