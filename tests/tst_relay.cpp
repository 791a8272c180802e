#include "tests/standin_analysis/hostilenames.h"
#include "tests/standin_analysis/standincontrol.h"
#include "tests/standin_analysis/testfolder.h"
#include "tests/support/processcontrol.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QtTest>

#include <memory>

namespace {

#ifdef Q_OS_WIN // the two systems differ in what a tool gets as its output, and in how processes end
constexpr bool isWindows = true;
#else
constexpr bool isWindows = false;
#endif

constexpr int waitMs = 30000;
const QString commandFileName = QStringLiteral("NDIAnalysis.bat");

QByteArray everyByte()
{
    QByteArray bytes;
    for (int value = 0; value < 256; ++value)
        bytes += char(value);
    return bytes;
}

/// The relay in a working folder of its own, ready for stand-ins to connect. Keeps what it says.
class RelayRun final {
public:
    RelayRun();
    ~RelayRun();
    RelayRun(const RelayRun &) = delete;
    RelayRun &operator=(const RelayRun &) = delete;

    bool writeFile(const QString &name, const QByteArray &text);
    void startWith(const QStringList &arguments) { relay.start(StandinControl::relayPath(), arguments); }
    /// On a file that names the stand-in; waits until that has connected.
    bool start(const QByteArray &source = "MACHINE (Camera 1)");
    bool waitForOutput(const QByteArray &text);
    bool waitForEnd();
    /// Whether it ended by itself, with this status.
    bool endedWith(int status) const;
    QString folder() const { return m_folder.path(); }
    QStringList files() const;

    StandinControl tools;
    QProcess relay;
    QByteArray output;
    QByteArray errors;

private:
    TestFolder m_folder;
};

RelayRun::RelayRun()
{
    relay.setWorkingDirectory(m_folder.path());
    QObject::connect(&relay, &QProcess::readyReadStandardOutput, &relay,
                     [this] { output += relay.readAllStandardOutput(); });
    QObject::connect(&relay, &QProcess::readyReadStandardError, &relay,
                     [this] { errors += relay.readAllStandardError(); });
}

RelayRun::~RelayRun()
{
    relay.disconnect();
    relay.kill();
    relay.waitForFinished();
}

bool RelayRun::writeFile(const QString &name, const QByteArray &text)
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size()
           && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool RelayRun::start(const QByteArray &source)
{
    if (!writeFile(commandFileName, StandinControl::commandFile(source)))
        return false;
    startWith({commandFileName});
    return tools.waitForTools();
}

bool RelayRun::waitForOutput(const QByteArray &text)
{
    return QTest::qWaitFor([this, &text] { return output.contains(text); }, waitMs);
}

bool RelayRun::waitForEnd()
{
    return QTest::qWaitFor([this] { return relay.state() == QProcess::NotRunning; }, waitMs);
}

bool RelayRun::endedWith(int status) const
{
    return relay.exitStatus() == QProcess::NormalExit && relay.exitCode() == status;
}

QStringList RelayRun::files() const
{
    return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

/// The relay program by itself, with the stand-in as the tool.
class TestRelay final : public TestBase {
    Q_OBJECT

private slots:
    void argumentsArriveUnchanged_data();
    void argumentsArriveUnchanged();
    void outputArrivesWhileTheToolRuns();
    void outputThatTheToolDoesNotFlushArrives();
    void bytesPassUnchanged();
    void byteByByte();
    void nothingIsLostWhenTheToolEndsRightAfterABurst();
    void nothingIsLostWhenTheReaderIsSlow();
    void noOutputAtAll();
    void exitStatus_data();
    void exitStatus();
    void standardErrorStaysApart();
    void aKilledToolEndsTheRelay();
    void killedRelayTakesItsToolAlong();
    void requestsToEndTakeTheToolAlong_data();
    void requestsToEndTakeTheToolAlong();
    void closedOutputEndsTheTool();
    void whatTheToolLeavesBehindEndsWithIt();
    void strangersDoNotKeepTheRelay_data();
    void strangersDoNotKeepTheRelay();
    void wrongArguments_data();
    void wrongArguments();
    void unusableFiles_data();
    void unusableFiles();
    void filesOfOthersAreRefused_data();
    void filesOfOthersAreRefused();
    void toolsThatCannotBeStarted_data();
    void toolsThatCannotBeStarted();

private:
    static void compareBytes(const QByteArray &actual, const QByteArray &expected);
};

void TestRelay::compareBytes(const QByteArray &actual, const QByteArray &expected)
{
    QCOMPARE(actual.size(), expected.size());
    QVERIFY(actual == expected);
}

void TestRelay::argumentsArriveUnchanged_data()
{
    QTest::addColumn<QByteArray>("name");
    const QByteArrayList names = hostileNames();
    for (int i = 0; i < names.size(); ++i)
        QTest::addRow("name %d", i) << names.at(i);
    QTest::newRow("longer than an old command line") << QByteArray(9000, 'x');
}

void TestRelay::argumentsArriveUnchanged()
{
    RelayRun run;
    QFETCH(QByteArray, name);
    QVERIFY(run.start(name));
    QCOMPARE(run.tools.arguments(), (QByteArrayList{"/source:" + name, "/time:70"}));
    run.tools.tell("exit 0");
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(0));
    QCOMPARE(run.output + run.errors, QByteArray());
    QCOMPARE(run.files(), QStringList{commandFileName});
}

void TestRelay::outputArrivesWhileTheToolRuns()
{
    RelayRun run;
    QVERIFY(run.start());
    QCOMPARE(run.tools.hasTerminal(), !isWindows);
    run.tools.tell("out", "first\n");
    QVERIFY(run.waitForOutput("first\n"));
    run.tools.tell("out", "not a whole line");
    QVERIFY(run.waitForOutput("not a whole line"));
    QCOMPARE(run.relay.state(), QProcess::Running);
    run.tools.tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.output, QByteArray("first\nnot a whole line"));
}

void TestRelay::outputThatTheToolDoesNotFlushArrives()
{
    RelayRun run;
    if (isWindows)
        QSKIP("the tool gets a pipe there");
    QVERIFY(run.start());
    run.tools.tell("print", "held back where there is no terminal\n");
    QVERIFY(run.waitForOutput("held back where there is no terminal\n"));
    QCOMPARE(run.relay.state(), QProcess::Running);
}

void TestRelay::bytesPassUnchanged()
{
    RelayRun run;
    QVERIFY(run.start());
    const QByteArray bytes = everyByte() + "\r\n\n\r\x04\x04\x1a\x03" + everyByte();
    run.tools.tell("out", bytes);
    run.tools.tell("exit 0");
    QVERIFY(run.waitForEnd());
    compareBytes(run.output, bytes);
    QCOMPARE(run.errors, QByteArray());
}

void TestRelay::byteByByte()
{
    RelayRun run;
    QVERIFY(run.start());
    const QByteArray bytes = "12:01:02.345: Video data rate (MBps) Avg=6.5\r\n\xe6\x9d\xb1\n";
    run.tools.tell("slow 1", bytes);
    run.tools.tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.output, bytes);
}

void TestRelay::nothingIsLostWhenTheToolEndsRightAfterABurst()
{
    RelayRun run;
    QVERIFY(run.start());
    const QByteArray bytes = everyByte().repeated(32) + "end of block\n";
    run.tools.tell("repeat 300", bytes);
    run.tools.tell("exit 0");
    QVERIFY(run.waitForEnd());
    compareBytes(run.output, bytes.repeated(300));
}

void TestRelay::nothingIsLostWhenTheReaderIsSlow()
{
    RelayRun run;
    QProcess reader; // one more stand-in
    run.relay.setStandardOutputProcess(&reader);
    QVERIFY(run.start());
    reader.start(StandinControl::toolPath(), QStringList());
    QVERIFY(run.tools.waitForTools(2));
    const QByteArray bytes = everyByte().repeated(16);
    run.tools.tell("repeat 500", bytes); // more than the pipes between them hold
    QVERIFY(!QTest::qWaitFor([&run] { return run.tools.isDone(); }, 300));
    run.tools.tell("exit 3");
    run.tools.tell("copy", 1);
    run.tools.tell("exit 0", 1);
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(3));
    QVERIFY(run.tools.waitUntilGone());
    QVERIFY(reader.state() == QProcess::NotRunning || reader.waitForFinished(waitMs));
    compareBytes(reader.readAllStandardOutput(), bytes.repeated(500));
}

void TestRelay::noOutputAtAll()
{
    RelayRun run;
    qunsetenv("STANDIN_ANALYSIS_PORT");
    QVERIFY(run.writeFile(commandFileName, StandinControl::commandFile("x")));
    run.startWith({commandFileName});
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(0));
    QCOMPARE(run.output + run.errors, QByteArray());
}

void TestRelay::exitStatus_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {0, 1, 3, 125, 127, 255})
        QTest::addRow("%d", status) << status;
    if (isWindows)
        QTest::newRow("more than a byte") << 70000;
}

void TestRelay::exitStatus()
{
    RelayRun run;
    QFETCH(int, status);
    QVERIFY(run.start());
    run.tools.tell("out", "last words");
    run.tools.tell("exit " + QByteArray::number(status));
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(status));
    QCOMPARE(run.output, QByteArray("last words"));
}

void TestRelay::standardErrorStaysApart()
{
    RelayRun run;
    QVERIFY(run.start());
    run.tools.tell("err", "a complaint\n");
    run.tools.tell("out", "a line\n");
    run.tools.tell("err", QByteArray(300000, 'e'));
    run.tools.tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.output, QByteArray("a line\n"));
    compareBytes(run.errors, "a complaint\n" + QByteArray(300000, 'e'));
}

void TestRelay::aKilledToolEndsTheRelay()
{
    RelayRun run;
    if (isWindows)
        QSKIP("ended there, a tool has an exit status like any other");
    QVERIFY(run.start());
    run.tools.tell("out", "last words");
    run.tools.tell("die");
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(128 + 9));
    QCOMPARE(run.output, QByteArray("last words"));
}

void TestRelay::killedRelayTakesItsToolAlong()
{
    RelayRun run;
    QVERIFY(run.start());
    run.relay.kill();
    QVERIFY(run.waitForEnd());
    QVERIFY(run.tools.waitUntilGone());
}

void TestRelay::requestsToEndTakeTheToolAlong_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("status");
    QTest::newRow("terminate") << int(ProgramRun::Interrupt::Terminate) << 128 + 15;
    QTest::newRow("interrupt") << int(ProgramRun::Interrupt::Interrupt) << 128 + 2;
    QTest::newRow("hang up") << int(ProgramRun::Interrupt::HangUp) << 128 + 1;
}

void TestRelay::requestsToEndTakeTheToolAlong()
{
    RelayRun run;
    if (isWindows)
        QSKIP("a program is killed there, and its job with it");
    QFETCH(int, kind);
    QVERIFY(run.start());
    interruptProcess(run.relay.processId(), ProgramRun::Interrupt(kind));
    QVERIFY(run.waitForEnd());
    QVERIFY(run.tools.waitUntilGone());
    QFETCH(int, status);
    QVERIFY(run.endedWith(status));
}

void TestRelay::closedOutputEndsTheTool()
{
    RelayRun run;
    QProcess reader; // one more stand-in, which reads nothing
    run.relay.setStandardOutputProcess(&reader);
    QVERIFY(run.start());
    reader.start(StandinControl::toolPath(), QStringList());
    QVERIFY(run.tools.waitForTools(2));
    if (isWindows) // where it is noticed at the next output
        run.tools.tell("forever", "line\n");
    reader.kill();
    QVERIFY(reader.waitForFinished());
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(128 + 13));
    QVERIFY(run.tools.waitUntilGone());
}

void TestRelay::whatTheToolLeavesBehindEndsWithIt()
{
    RelayRun run;
    QVERIFY(run.start());
    run.tools.tell("another");
    QVERIFY(run.tools.waitForTools(2));
    run.tools.tell("exit 4");
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(4));
    QVERIFY(run.tools.waitUntilGone());
}

void TestRelay::strangersDoNotKeepTheRelay_data()
{
    QTest::addColumn<QByteArray>("order");
    QTest::newRow("one that is silent") << QByteArray();
    QTest::newRow("one that prints without end") << QByteArray("forever");
}

void TestRelay::strangersDoNotKeepTheRelay()
{
    if (isWindows)
        QSKIP("whatever the tool starts is in its job there");
    QFETCH(QByteArray, order);
    RelayRun run;
    QVERIFY(run.start());
    run.tools.tell("stranger");
    QVERIFY(run.tools.waitForTools(2));
    run.tools.tell("out", "last words");
    QVERIFY(run.waitForOutput("last words"));
    if (!order.isEmpty())
        run.tools.tell(order, "x", 1);
    run.tools.tell("exit 5");
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(5));
    run.tools.tell("exit 0", 1);
    QVERIFY(run.tools.waitUntilGone());
}

void TestRelay::wrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("none") << QStringList();
    QTest::newRow("two") << QStringList{commandFileName, commandFileName};
}

void TestRelay::wrongArguments()
{
    RelayRun run;
    QFETCH(QStringList, arguments);
    QVERIFY(run.writeFile(commandFileName, StandinControl::commandFile("x")));
    run.startWith(arguments);
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(125));
    QCOMPARE(run.errors.simplified(), QByteArray("pipe_stdout: one argument is needed, the name of a command file"));
}

void TestRelay::unusableFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("message");
    const QByteArray head = "pipe_stdout: 'NDIAnalysis.bat' is not a command for the analysis tool: ";
    QTest::newRow("no such file") << QStringLiteral("other.bat") << QByteArray("x")
                                  << QByteArray("pipe_stdout: cannot read 'other.bat'");
    QTest::newRow("a folder") << QStringLiteral(".") << QByteArray("x") << QByteArray("pipe_stdout: cannot read '.'");
    QTest::newRow("empty") << commandFileName << QByteArray() << QByteArray(head + "it is empty");
    QTest::newRow("too long") << commandFileName << QByteArray(1000000, 'x') << QByteArray(head + "it is too long");
    QTest::newRow("a command for an interpreter")
        << commandFileName << QByteArray("echo hit > canary")
        << QByteArray(head + "it does not begin with the tool's path in quotation marks");
    QTest::newRow("one more command behind")
        << commandFileName << QByteArray(StandinControl::commandFile("x") + "\necho hit > canary")
        << QByteArray(head + "/time: is not followed by digits alone");
}

void TestRelay::unusableFiles()
{
    RelayRun run;
    QFETCH(QString, name);
    QFETCH(QByteArray, text);
    QVERIFY(run.writeFile(commandFileName, text));
    run.startWith({name});
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(125));
    QCOMPARE(run.errors.count('\n'), 1);
    QTEST(run.errors.trimmed(), "message");
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.files(), QStringList{commandFileName});
}

void TestRelay::filesOfOthersAreRefused_data()
{
    QTest::addColumn<QString>("preparation"); ///< by a shell of Linux, in the working folder
    QTest::addColumn<QByteArray>("message");
    const QByteArray name = "pipe_stdout: 'NDIAnalysis.bat' ";
    if (!isWindows) // Wine follows links of Linux before a program sees them
        QTest::newRow("a link") << QStringLiteral("mv NDIAnalysis.bat other && ln -s other NDIAnalysis.bat")
                                << QByteArray(name + "is a link");
    QTest::newRow("a pipe") << QStringLiteral("rm NDIAnalysis.bat && mkfifo NDIAnalysis.bat")
                            << QByteArray("pipe_stdout: cannot read 'NDIAnalysis.bat'");
    QTest::newRow("another user's") << QStringLiteral("chown 65534 NDIAnalysis.bat")
                                    << QByteArray(name + "belongs to another user");
}

void TestRelay::filesOfOthersAreRefused()
{
    QFETCH(QString, preparation);
    RelayRun run;
    if (isWindows && !QFile::exists(QStringLiteral("Z:/bin/sh")))
        QSKIP("no shell of Linux to prepare the file");
    QVERIFY(run.writeFile(commandFileName, StandinControl::commandFile("x")));
    // Wine starts programs of Linux, but does not tell when they end.
    const QString line = preparation + QStringLiteral(" && touch done || touch impossible");
    QVERIFY(QProcess::startDetached(isWindows ? QStringLiteral("Z:/bin/sh") : QStringLiteral("/bin/sh"),
                                    {QStringLiteral("-c"), line}, run.folder()));
    QTRY_VERIFY_WITH_TIMEOUT(
        run.files().contains(QStringLiteral("done")) || run.files().contains(QStringLiteral("impossible")), waitMs);
    if (run.files().contains(QStringLiteral("impossible")))
        QSKIP("only the administrator can give a file away");
    run.startWith({commandFileName});
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(125));
    QTEST(run.errors.trimmed(), "message");
    QCOMPARE(run.output, QByteArray());
}

void TestRelay::toolsThatCannotBeStarted_data()
{
    QTest::addColumn<QByteArray>("tool");
    const QByteArray root = isWindows ? "c:\\" : "/";
    QTest::newRow("no such file") << QByteArray(root + "no/such/NDIAnalysis.exe");
    QTest::newRow("a name without a path") << QByteArray("NDIAnalysis.exe");
    QTest::newRow("a path from here") << QByteArray("./NDIAnalysis.exe");
    QTest::newRow("a folder") << root;
    QTest::newRow("the command file itself") << QByteArray("HERE/NDIAnalysis.bat");
    QTest::newRow("a script") << QByteArray("HERE/NDIAnalysis.cmd");
    QTest::newRow("no program at all") << QByteArray("HERE/NDIAnalysis.exe");
    QTest::newRow("control characters") << QByteArray(root + "a\nb\rc.exe");
}

void TestRelay::toolsThatCannotBeStarted()
{
    RelayRun run;
    QFETCH(QByteArray, tool);
    for (const char *name : {"NDIAnalysis.exe", "NDIAnalysis.cmd"}) {
        QVERIFY(run.writeFile(QLatin1String(name), "echo hit > canary\n"));
    }
    tool.replace("HERE", QDir::toNativeSeparators(run.folder()).toUtf8());
    QVERIFY(run.writeFile(commandFileName, '"' + tool + "\" /source:\"x\" /time:70"));
    run.startWith({commandFileName});
    QVERIFY(run.waitForEnd());
    QVERIFY(run.endedWith(127));
    QVERIFY2(run.errors.startsWith("pipe_stdout: ") && run.errors.count('\n') == 1, run.errors.constData());
    QCOMPARE(run.output, QByteArray());
    QVERIFY(!QFile::exists(run.folder() + QLatin1String("/canary")));
}

QTEST_GUILESS_MAIN(TestRelay)
#include "tst_relay.moc"
