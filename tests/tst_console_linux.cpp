#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/testrecord.h"
#include "tests/support/truthwait.h"

#include <QtTest>

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

using Interrupt = ProgramRun::Interrupt;

namespace {

const QStringList eightReceivers{QStringLiteral("-test"), QStringLiteral("LOOPBACK (720p50)"),
                                 QStringLiteral("-receivers"), QStringLiteral("8")};

/// Runs the program through a line of shell, in which it is "$@".
void startThroughShell(ProgramRun *run, const char *line)
{
    run->startThrough(QStringLiteral("bash"),
                      {QStringLiteral("-c"), QString::fromLatin1(line), QStringLiteral("shell")});
    run->start();
}

/// Waits until the runtime has given out 400 frames more: half a second of a test with eight receivers.
bool waitForMoreVideo(const ProgramRun &run)
{
    const auto soFar = loopback::countTruth(loopback::readTruth(run.truthPath().toStdString()), "video");
    return waitForTruth(run.truthPath(), "video", int(soFar) + 400);
}

} // namespace

/// What a Linux shell can do to the program's streams, limits and signals.
class TestConsoleLinux final : public TestBase {
    Q_OBJECT

private slots:
    void aReaderThatGoesAwayChangesNothing();
    void closedStreamsAreNoHarm();
    void outputThatFailsIsNoHarm();
    void aWriteCutShortIsAFailure_data();
    void aWriteCutShortIsAFailure();
    void ignoredSignalsStayIgnored_data();
    void ignoredSignalsStayIgnored();
    void controlsInNamesStayOffTheTerminal();
    void aSecondInterruptEndsAtOnce();
    void anEnvironmentThatSilencesLogsSilencesNothing();
};

void TestConsoleLinux::aReaderThatGoesAwayChangesNothing()
{
    ProgramRun run(eightReceivers);
    run.keepTruth();
    startThroughShell(&run, "(echo $BASHPID >program.pid; exec \"$@\") | (head -c 5; exec <&-; : >reader.gone);"
                            "exit ${PIPESTATUS[0]}");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(run.folder() + QLatin1String("/reader.gone")), 30000);
    QVERIFY2(waitForMoreVideo(run), run.account());
    QFile idFile(run.folder() + QLatin1String("/program.pid"));
    QVERIFY(idFile.open(QIODevice::ReadOnly));
    const pid_t program = idFile.readAll().trimmed().toInt();
    QVERIFY(program > 1);
    QCOMPARE(kill(program, SIGINT), 0);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY(TestRecord::read(run.recordPath()).rows.size() > 100);
}

void TestConsoleLinux::closedStreamsAreNoHarm()
{
    ProgramRun run(eightReceivers);
    run.keepTruth();
    startThroughShell(&run, "exec \"$@\" <&- >&- 2>&-");
    QVERIFY2(waitForMoreVideo(run), run.account());
    run.interrupt(Interrupt::Interrupt);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    const QDir records(run.home() + QLatin1String("/Documents/Tessaly/Vexa"));
    const QStringList files = records.entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    const TestRecord record = TestRecord::read(records.filePath(files.first()));
    QCOMPARE(record.problem, QString()); // no dot and no line has gone astray
    QVERIFY(record.rows.size() > 100);
}

void TestConsoleLinux::outputThatFailsIsNoHarm()
{
    ProgramRun run(eightReceivers);
    run.keepTruth();
    startThroughShell(&run, "exec \"$@\" >/dev/full");
    QVERIFY2(waitForMoreVideo(run), run.account());
    run.interrupt(Interrupt::Interrupt);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY(TestRecord::read(run.recordPath()).rows.size() > 100);
}

void TestConsoleLinux::aWriteCutShortIsAFailure_data()
{
    QTest::addColumn<int>("limitBytes"); ///< of any file
    QTest::addColumn<int>("nameLength"); ///< of the source: a long one makes the record longer than the journal
    QTest::addColumn<int>("parts");      ///< pieces of the record that are kept
    QTest::addColumn<int>("journals");
    // The header has 118 bytes.
    QTest::newRow("no byte") << 0 << 10 << 0 << 0;
    QTest::newRow("a part of the header") << 100 << 10 << 0 << 0;
    QTest::newRow("a part of the rows") << 700 << 10 << 1 << 0;
    QTest::newRow("a part of the rows, but the journal has them all") << 60000 << 1000 << 0 << 1;
}

void TestConsoleLinux::aWriteCutShortIsAFailure()
{
    QFETCH(int, limitBytes);
    QFETCH(int, nameLength);
    QFETCH(int, parts);
    QFETCH(int, journals);
    const QByteArray name(nameLength, 'x');
    ProgramRun run(
        {QStringLiteral("-test"), QString::fromLatin1(name), QStringLiteral("-receivers"), QStringLiteral("8")});
    run.setScenario("{\"sources\":[{\"name\":\"" + name + "\",\"rateN\":50,\"rateD\":1}]}");
    startThroughShell(&run, ("exec prlimit --fsize=" + QByteArray::number(limitBytes) + " \"$@\"").constData());
    QVERIFY2(run.waitForDots(200), run.account());
    run.interrupt(Interrupt::Interrupt);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY2(run.standardError().endsWith("\nFinished to test. But not created the recorded file(csv) by some "
                                          "reason!!!\n\n"),
             run.account());
    const QFileInfoList files = QDir(run.home() + QLatin1String("/Documents/Tessaly/Vexa")).entryInfoList(QDir::Files);
    QCOMPARE(files.size(), parts);
    for (const QFileInfo &file : files) {
        QVERIFY2(file.fileName().endsWith(QLatin1String(".csv.part")), qPrintable(file.fileName()));
        const TestRecord part = TestRecord::read(file.filePath());
        QCOMPARE(part.problem, QString()); // whole lines
        QVERIFY(!part.rows.isEmpty());
    }
    QCOMPARE(run.journals().size(), journals);
    const QString recovered = run.recoverRecord();
    QCOMPARE(recovered.isEmpty(), journals == 0);
    if (journals > 0)
        QCOMPARE(TestRecord::read(recovered).rows.size(), run.standardOutput().size());
}

void TestConsoleLinux::ignoredSignalsStayIgnored_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("signal");
    QTest::newRow("hang-up under nohup") << QByteArray("exec nohup \"$@\"") << int(Interrupt::HangUp);
    QTest::newRow("interrupt, as in a script's background job")
        << QByteArray("trap '' INT; exec \"$@\"") << int(Interrupt::Interrupt);
}

void TestConsoleLinux::ignoredSignalsStayIgnored()
{
    QFETCH(QByteArray, line);
    QFETCH(int, signal);
    ProgramRun run(eightReceivers);
    startThroughShell(&run, line);
    QVERIFY2(run.waitForDots(50), run.account());
    run.interrupt(Interrupt(signal));
    const int dots = run.standardOutput().size();
    QVERIFY2(run.waitForDots(dots + 400), run.account());
    run.interrupt(Interrupt::Terminate);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY(!run.recordPath().isEmpty());
}

void TestConsoleLinux::controlsInNamesStayOffTheTerminal()
{
    const QByteArray scenario(R"({"sources": [{"name": "A\u001b[2J\u009b31m \u00c4"}]})");
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const int kept = open(ptsname(terminal), O_RDWR | O_NOCTTY); // else reading fails once the program has ended
    QVERIFY(kept >= 0);
    QByteArray intoPipe;
    for (const bool onTerminal : {true, false}) {
        ProgramRun run({QStringLiteral("-findsources")});
        run.setScenario(scenario);
        if (onTerminal)
            run.process().setStandardErrorFile(QString::fromLocal8Bit(ptsname(terminal)), QIODevice::Append);
        run.start();
        QVERIFY2(run.waitForFinished(), run.account());
        intoPipe = run.standardError();
    }
    QByteArray shown(65536, '\0');
    shown.resize(int(qMax(read(terminal, shown.data(), std::size_t(shown.size())), ssize_t(0))));
    close(kept);
    close(terminal);
    QVERIFY2(shown.contains("[1] A?[2J?31m \xc3\x84\r\n"), shown);
    QVERIFY2(intoPipe.contains("[1] A\x1b[2J\xc2\x9b"
                               "31m \xc3\x84\n"),
             intoPipe);
}

void TestConsoleLinux::aSecondInterruptEndsAtOnce()
{
    // Nobody reads the dots and the pipe is full, so the first interrupt waits for ever.
    int ends[2] = {-1, -1};
    QCOMPARE(pipe2(ends, O_CLOEXEC), 0);
    QVERIFY(fcntl(ends[1], F_SETPIPE_SZ, 4096) > 0);
    QCOMPARE(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    const QByteArray filling(4096, 'x');
    while (write(ends[1], filling.constData(), std::size_t(filling.size())) > 0) {
    }
    QCOMPARE(fcntl(ends[1], F_SETFL, 0), 0);
    ProgramRun run(eightReceivers);
    run.process().setStandardOutputFile(QStringLiteral("/proc/self/fd/%1").arg(ends[1]), QIODevice::Append);
    run.keepTruth();
    run.start();
    QVERIFY2(run.waitForError("Start Testing..."), run.account());
    QVERIFY2(waitForMoreVideo(run), run.account());
    run.interrupt(Interrupt::Interrupt);
    QVERIFY2(!run.waitForFinished(500), run.account());
    run.interrupt(Interrupt::Terminate);
    QVERIFY2(run.waitForFinished(20000), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    QVERIFY2(run.recordPath().isEmpty(), run.account());
    close(ends[0]);
    close(ends[1]);
}

void TestConsoleLinux::anEnvironmentThatSilencesLogsSilencesNothing()
{
    ProgramRun run({QStringLiteral("-findsources")});
    run.setVariable(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("*=false"));
    run.setVariable(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("[%{type}] %{message}"));
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.standardError().contains("\nNDI Sources : 4\n[1] LOOPBACK (1080p59.94)\n"), run.account());
}

QTEST_GUILESS_MAIN(TestConsoleLinux)
#include "tst_console_linux.moc"
