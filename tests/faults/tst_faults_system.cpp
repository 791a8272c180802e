#include "tests/support/processcontrol.h"
#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

const QStringList oneTest{QStringLiteral("-test"), QStringLiteral("STAGE"), QStringLiteral("-receivers"),
                          QStringLiteral("2")};
// A long queue: whatever the machine does to the runtime, the loss of a frame is the program's fault.
const QByteArray stage =
    R"({"queueFrames":100,"sources":[{"name":"STAGE","width":640,"height":360,"rateN":50,"rateD":1}]})";
const QByteArray notCreated = "Finished to test. But not created the recorded file(csv) by some reason!!!";

/// A test under way, with its first rows.
class TestUnderWay final : public ProgramRun {
public:
    TestUnderWay() : ProgramRun(oneTest)
    {
        setScenario(stage);
        keepTruth();
    }
    bool begin()
    {
        start();
        return waitForDots(50);
    }
    bool end()
    {
        interrupt(Interrupt::Interrupt);
        return waitForFinished() && endedWith(1);
    }
};

/// Shell lines that give the records a file system of their own of this many bytes.
QString smallDocuments(int bytes)
{
    return QStringLiteral("mkdir -p \"$HOME/Documents\" && mount -t tmpfs -o size=%1 tmpfs \"$HOME/Documents\" && ")
        .arg(bytes);
}

/// Runs the program at the end of a line of shell, in which it is "$@", as root of a name space of its own, where
/// mounting is allowed.
void startThroughShell(ProgramRun *run, const QString &line)
{
    run->startThrough(QStringLiteral("unshare"),
                      {geteuid() == 0 ? QStringLiteral("-m") : QStringLiteral("-rm"), QStringLiteral("bash"),
                       QStringLiteral("-c"), line, QStringLiteral("shell")});
}

} // namespace

/// What the system around the program may do to it, on the program from the console.
class TestFaultsSystem final : public TestBase {
    Q_OBJECT

private slots:
    void runtimeOfNoUse_data();
    void runtimeOfNoUse();
    void runtimeThatRefuses();
    void documentsThatTakeNothing_data();
    void documentsThatTakeNothing();
    void documentsFullInTheMiddle();
    void noHome_data();
    void noHome();
    void eightEndTogether();
    void clockThatJumps_data();
    void clockThatJumps();
    void stoppedForTenSeconds();
    void outputStalledForFiveSeconds();
    void endedInEveryState();
};

void TestFaultsSystem::runtimeOfNoUse_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("reason");
    QByteArray narrow(QByteArray("\x7f"
                                 "ELF\x01\x01\x01")
                      + QByteArray(9, '\0') + QByteArray("\x03\x00\x03\x00\x01\x00\x00\x00", 8) + QByteArray(28, '\0'));
    QTest::newRow("missing") << QByteArray() << QByteArray("libndi.so.6 (missing)");
    QTest::newRow("a text file") << QByteArray("hello\n") << QByteArray("libndi.so.6 (not a library)");
    QTest::newRow("for 32 bits") << narrow << QByteArray("libndi.so.6 (wrong architecture)");
    QTest::newRow("lacks a function") << QByteArray("link") << QByteArray("lacks the function NDIlib_recv_capture_v2");
}

void TestFaultsSystem::runtimeOfNoUse()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, reason);
    const QTemporaryDir folder;
    const QString library = folder.filePath(QStringLiteral("libndi.so.6"));
    if (content == "link") {
        QVERIFY(QFile::link(QStringLiteral(VEXA_INCOMPLETE_RUNTIME), library));
    } else if (!content.isEmpty()) {
        QFile file(library);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    ProgramRun run(oneTest);
    run.setRuntimeFolder(folder.path());
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    const QByteArray said = run.standardError();
    QVERIFY2(said.contains("Not found NDI source [STAGE]\nNo usable NDI runtime was found;"), run.account());
    QVERIFY2(said.contains(reason), run.account());
}

void TestFaultsSystem::runtimeThatRefuses()
{
    // The console program does not ask the runtime about the processor: its sources decide.
    ProgramRun run({QStringLiteral("-findsources")});
    run.setScenario(R"({"initialize":false,"finderFails":true})");
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY2(run.standardError().contains("Can not init NDI instance\n"), run.account());
}

void TestFaultsSystem::documentsThatTakeNothing_data()
{
    QTest::addColumn<QString>("preparation");
    QTest::newRow("a file in the folder's place") << QStringLiteral("echo mine >\"$HOME/Documents\"; exec \"$@\"");
    // A place where nobody may make a folder, not even root.
    QTest::newRow("unwritable") << QStringLiteral("HOME=/proc exec \"$@\"");
    QTest::newRow("full disk") << smallDocuments(8192)
                                      + QStringLiteral("! head -c 100000 /dev/zero 2>&- >\"$HOME/Documents/full\" && "
                                                       "exec \"$@\"");
}

void TestFaultsSystem::documentsThatTakeNothing()
{
    QFETCH(QString, preparation);
    TestUnderWay run;
    startThroughShell(&run, preparation);
    QVERIFY2(run.begin(), run.account());
    QVERIFY2(run.end(), run.account());
    QVERIFY2(run.standardError().contains(notCreated), run.account());
    QVERIFY2(!run.standardError().contains("Created the recorded file"), run.account());
}

void TestFaultsSystem::documentsFullInTheMiddle()
{
    TestUnderWay run;
    startThroughShell(&run, smallDocuments(8192) + QStringLiteral("exec \"$@\""));
    run.start();
    QVERIFY2(run.waitForDots(400), run.account()); // more rows than the disk takes
    QVERIFY2(run.end(), run.account());
    QVERIFY2(run.standardError().contains(notCreated), run.account());
}

void TestFaultsSystem::noHome_data()
{
    QTest::addColumn<QString>("home");
    QTest::addColumn<bool>("namesJournals");
    QTest::newRow("not set") << QString() << true;
    QTest::newRow("empty") << QStringLiteral("") << true;
    QTest::newRow("the root of the file system") << QStringLiteral("/") << true;
    QTest::newRow("not set, nor is a folder for journals") << QString() << false;
}

void TestFaultsSystem::noHome()
{
    QFETCH(QString, home);
    QFETCH(bool, namesJournals);
    const auto filesAtTheRoot = [] {
        return QDir(QStringLiteral("/Documents/Tessaly/Vexa")).entryList(QDir::Files)
               + QDir(QStringLiteral("/.cache")).entryList({QStringLiteral("TessalyNDIVexa")});
    };
    const QStringList before = filesAtTheRoot();
    TestUnderWay run;
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        run.setVariable(QString::fromLatin1(variable), QString());
    run.setVariable(QStringLiteral("HOME"), home);
    if (!namesJournals)
        run.setVariable(QStringLiteral("VEXA_JOURNAL_FOLDER"), QString());
    QVERIFY2(run.begin(), run.account());
    QVERIFY2(run.end(), run.account());
    QVERIFY2(run.standardError().contains(notCreated), run.account());
    QCOMPARE(run.journals().size(), namesJournals ? 1 : 0);
    QCOMPARE(filesAtTheRoot(), before);
}

/// They share their folders, and are asked to end in the same moment.
void TestFaultsSystem::eightEndTogether()
{
    std::vector<std::unique_ptr<ProgramRun>> runs;
    for (int i = 0; i < 8; ++i) {
        const QByteArray name = "CAM " + QByteArray::number(i);
        runs.push_back(std::make_unique<ProgramRun>(QStringList{QStringLiteral("-test"), QString::fromUtf8(name)}));
        ProgramRun &run = *runs.back();
        run.setScenario(QByteArray(stage).replace("STAGE", name));
        run.setVariable(QStringLiteral("HOME"), runs.front()->home());
        run.setVariable(QStringLiteral("XDG_CONFIG_HOME"), runs.front()->home());
        run.setVariable(QStringLiteral("VEXA_JOURNAL_FOLDER"), runs.front()->home() + QStringLiteral("/journal"));
        run.start();
    }
    for (const auto &run : runs)
        QVERIFY2(run->waitForDots(50), run->account());
    while (QTime::currentTime().msec() > 100)
        QTest::qWait(10);
    for (const auto &run : runs)
        run->interrupt(ProgramRun::Interrupt::Interrupt);
    QStringList names;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        ProgramRun &run = *runs[i];
        QVERIFY2(run.waitForFinished() && run.endedWith(1), run.account());
        const TestRecord record = TestRecord::read(run.recordPath());
        QCOMPARE(record.problem, QString());
        QCOMPARE(record.header.left(16), QByteArray("NDI Source Name,"));
        QCOMPARE(record.rows.size(), run.standardOutput().size());
        for (const TestRecordRow &row : record.rows)
            QCOMPARE(row.sourceName, "CAM " + QByteArray::number(int(i)));
        names.append(QFileInfo(run.recordPath()).fileName());
    }
    names.sort();
    const QDir records(runs.front()->home() + QStringLiteral("/Documents/Tessaly/Vexa"));
    QCOMPARE(records.entryList(QDir::Files, QDir::Name), names); // each once, and nothing else
    QCOMPARE(runs.front()->journals(), QStringList());
}

void TestFaultsSystem::clockThatJumps_data()
{
    QTest::addColumn<QByteArray>("jump");
    QTest::newRow("an hour back") << QByteArray("-3600");
    QTest::newRow("an hour forward") << QByteArray("+3600");
}

void TestFaultsSystem::clockThatJumps()
{
    QFETCH(QByteArray, jump);
    const QTemporaryDir folder;
    const QString clock = folder.filePath(QStringLiteral("clock"));
    const auto setClock = [&clock](const QByteArray &offset) {
        QFile file(clock);
        return file.open(QIODevice::WriteOnly) && file.write(offset + "\n") > 0;
    };
    QVERIFY(setClock("+0"));
    TestUnderWay run;
    run.setVariable(QStringLiteral("LD_PRELOAD"),
                    QStringLiteral("/usr/lib/x86_64-linux-gnu/faketime/libfaketimeMT.so.1"));
    // The address sanitizer wants to be loaded first.
    run.setVariable(QStringLiteral("ASAN_OPTIONS"),
                    qEnvironmentVariable("ASAN_OPTIONS") + QStringLiteral(":verify_asan_link_order=0"));
    run.setVariable(QStringLiteral("FAKETIME_TIMESTAMP_FILE"), clock);
    run.setVariable(QStringLiteral("FAKETIME_NO_CACHE"), QStringLiteral("1"));
    run.setVariable(QStringLiteral("FAKETIME_DONT_FAKE_MONOTONIC"), QStringLiteral("1"));
    QVERIFY2(run.begin(), run.account());
    QVERIFY(setClock(jump));
    QVERIFY2(run.waitForDots(300), run.account());
    QVERIFY2(run.end(), run.account());
    const TestRecord record = TestRecord::read(run.recordPath());
    QCOMPARE(record.problem, QString());
    QVERIFY(record.rows.size() >= 300);
    for (const TestRecordRow &row : record.rows)
        QVERIFY2(row.intervalMs >= 0 && row.intervalMs < 1000 && row.timeMs < 60000,
                 qPrintable(QString::number(row.intervalMs)));
    // The jump was seen: the record is named by the new time.
    const QFileInfo file(run.recordPath());
    const QDateTime named = QDateTime::fromString(file.completeBaseName(), QStringLiteral("'vexa_'yyyy_MM_dd_HHmmss"));
    const qint64 differenceS = file.lastModified().secsTo(named) - jump.toInt();
    QVERIFY2(named.isValid() && qAbs(differenceS) <= 60, qPrintable(file.fileName()));
}

void TestFaultsSystem::stoppedForTenSeconds()
{
    TestUnderWay run;
    QVERIFY2(run.begin(), run.account());
    const auto process = static_cast<pid_t>(run.process().processId());
    QVERIFY(kill(process, SIGSTOP) == 0);
    QTest::qWait(10000);
    const int dotsWhileStopped = run.standardOutput().size();
    QVERIFY(kill(process, SIGCONT) == 0);
    QVERIFY2(run.waitForDots(dotsWhileStopped + 400), run.account()); // the two full queues, and as many more
    QVERIFY2(run.end(), run.account());
    const TestRecord record = TestRecord::read(run.recordPath());
    QCOMPARE(record.problem, QString());
    for (int receiver = 1; receiver <= 2; ++receiver) {
        int longest = 0;
        const QVector<TestRecordRow> rows = record.rowsOf(receiver);
        for (const TestRecordRow &row : rows)
            longest = qMax(longest, row.intervalMs);
        QVERIFY2(longest >= 9500 && longest < 12000, qPrintable(QString::number(longest)));
        QVERIFY(medianRate(rows, 50) > 30); // the rate has recovered
    }
}

/// Nobody reads what it prints, which stalls the thread that takes the measurements. The receivers have threads of
/// their own.
void TestFaultsSystem::outputStalledForFiveSeconds()
{
    constexpr int pipeBytes = 4096;
    constexpr int dotsBefore = 100;
    constexpr int stallMs = 5000;
    constexpr int dotsAfterwards = 700; // those of the stall, and some more
    std::array<int, 2> ends{-1, -1};
    QCOMPARE(pipe2(ends.data(), O_CLOEXEC), 0);
    QVERIFY(fcntl(ends[1], F_SETPIPE_SZ, pipeBytes) > 0);
    const QByteArray filling(pipeBytes - dotsBefore, 'x');
    QCOMPARE(int(write(ends[1], filling.constData(), std::size_t(filling.size()))), filling.size());
    const auto waiting = [&ends] {
        int bytes = 0;
        return ioctl(ends[0], FIONREAD, &bytes) == 0 ? bytes : -1;
    };
    TestUnderWay run;
    run.process().setStandardOutputFile(QStringLiteral("/proc/self/fd/%1").arg(ends[1]), QIODevice::Append);
    run.start();
    // Dots come in groups; one that does not fit waits as a whole.
    QTRY_VERIFY_WITH_TIMEOUT(pipeBytes - waiting() < dotsBefore / 2, 30000);
    QTest::qWait(stallMs); // five times as many dots as there is room for
    QByteArray printed;
    const auto readsOn = [&] {
        QByteArray some(waiting(), '\0');
        some.resize(int(qMax(ssize_t(0), read(ends[0], some.data(), std::size_t(some.size())))));
        printed += some;
        return printed.count('.') >= dotsBefore + dotsAfterwards;
    };
    QTRY_VERIFY_WITH_TIMEOUT(readsOn(), 30000);
    QVERIFY2(run.end(), run.account());
    readsOn();
    for (const int end : ends)
        close(end);
    const TestRecord record = TestRecord::read(run.recordPath());
    QCOMPARE(record.problem, QString());
    QCOMPARE(printed.count('.'), record.rows.size());
    for (const TestRecordRow &row : record.rows)
        QVERIFY2(row.intervalMs < 1000, qPrintable(QString::number(row.intervalMs))); // they do not show the stall
    const auto events = loopback::readTruth(run.truthPath().toStdString());
    QCOMPARE(int(loopback::countTruth(events, "drop")), 0);
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(record, truthOfReceivers(events), &pairing), QString());
}

/// By each of the ways to ask for it; what was measured is in a record.
void TestFaultsSystem::endedInEveryState()
{
    using Interrupt = ProgramRun::Interrupt;
    struct Case {
        QByteArray state;
        Interrupt by;
        std::unique_ptr<ProgramRun> run = std::make_unique<ProgramRun>(oneTest);
    };
    std::vector<Case> cases;
    for (const char *state : {"searching", "testing in silence", "testing"}) {
        for (const Interrupt by : {Interrupt::Interrupt, Interrupt::Terminate, Interrupt::HangUp}) {
            cases.push_back({state, by});
            ProgramRun &run = *cases.back().run;
            QByteArray scenario = stage;
            if (cases.back().state == "testing in silence")
                scenario.replace("\"rateD\":1", "\"rateD\":1,\"startMs\":3600000");
            if (cases.back().state == "searching") // a list that never settles: the search lasts its whole minute
                scenario.replace("]}", R"(,{"name":"RESTLESS","churn":{"periodMs":500}}]})");
            run.setScenario(scenario);
            run.keepTruth();
            run.start();
        }
    }
    for (Case &one : cases) {
        if (one.state == "searching") {
            QVERIFY2(one.run->waitForError("Checking NDI sources..."), one.run->account());
            one.run->interrupt(one.by);
        }
    }
    for (Case &one : cases) {
        if (one.state == "testing in silence")
            QTRY_VERIFY_WITH_TIMEOUT(
                loopback::countTruth(loopback::readTruth(one.run->truthPath().toStdString()), "create") == 2, 30000);
        else if (one.state == "testing")
            QVERIFY2(one.run->waitForDots(100), one.run->account());
    }
    QTest::qWait(500); // an interrupt is the end of a test from a moment after its start
    for (Case &one : cases) {
        if (one.state != "searching") {
            QVERIFY2(one.run->process().state() == QProcess::Running, one.run->account());
            one.run->interrupt(one.by);
        }
    }
    for (Case &one : cases) {
        QVERIFY2(one.run->waitForFinished(30000) && one.run->endedWith(1), one.run->account());
        QCOMPARE(one.run->recordPath().isEmpty(), one.state == "searching");
        if (one.state == "testing in silence") {
            QVERIFY(QFileInfo(one.run->recordPath()).size() < 200); // the header
        } else if (one.state == "testing") {
            const TestRecord record = TestRecord::read(one.run->recordPath());
            QCOMPARE(record.problem, QString());
            QVERIFY(record.rows.size() >= 100);
        }
        const QDir journals(one.run->home() + QStringLiteral("/journal"));
        QVERIFY2(journals.entryList(QDir::Files).isEmpty(), one.state);
    }
}

QTEST_GUILESS_MAIN(TestFaultsSystem)

#include "tst_faults_system.moc"
