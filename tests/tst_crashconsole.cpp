#include "tests/crash_runs/crashruns.h"
#include "tests/support/testbase.h"

#ifdef Q_OS_UNIX // signals, links and limits
#include <csignal>
#endif

/// The real program crashes in its console life: on the main thread, and on the thread of a receiver. The dumps are
/// kept for the test crashnames.
class TestCrashConsole final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void crashLeavesADump_data() { m_runs->addRows(); }
    void crashLeavesADump();
    void noCrashLeavesNothing();
    void withoutAFolderThereIsNoDump();
    void folderBehindALinkGetsNoDump();
    void dumpThatCannotBeWrittenIsTold();
    void signalFromOutsideLeavesADump();
    void cleanupTestCase() { m_runs.reset(); }

private:
    static QStringList testArguments() { return {QStringLiteral("-test"), QStringLiteral("LOOPBACK (720p50)")}; }

    std::unique_ptr<CrashRuns> m_runs;
};

void TestCrashConsole::initTestCase()
{
    m_runs = std::make_unique<CrashRuns>(QStringLiteral("console"), testArguments());
    for (const char *kind : {"nullWrite", "abort", "stackOverflow", "pureVirtual"})
        m_runs->add(kind, "wait");
    for (const char *kind : {"nullWrite", "stackOverflow"})
        m_runs->add(kind, "capture");
}

void TestCrashConsole::crashLeavesADump()
{
    QFETCH(int, index);
    m_runs->check(index, QStringLiteral(VEXA_CRASH_DUMPS));
}

void TestCrashConsole::noCrashLeavesNothing()
{
    ProgramRun run({QStringLiteral("-help")});
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QCOMPARE(run.process().exitStatus(), QProcess::NormalExit);
    const QString folder = run.folder() + QStringLiteral("/crashes");
    QVERIFY(QDir(folder).exists());
    QCOMPARE(entriesOf(folder), QStringList());
    QVERIFY2(!run.standardError().contains("minidump"), run.account());
}

void TestCrashConsole::withoutAFolderThereIsNoDump()
{
    ProgramRun run(testArguments());
    const QString inTheWay = run.folder() + QStringLiteral("/crashes");
    QFile file(inTheWay);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    run.setScenario(crashScenario("nullWrite", "wait"));
    run.start();
    QVERIFY2(run.waitForFinished(100000), run.account());
    QCOMPARE(run.process().exitStatus(), QProcess::CrashExit);
    QCOMPARE(run.process().exitCode(), crashEnding("nullWrite"));
    QVERIFY2(run.standardError().contains("Failed to set dump path which not exists: "), run.account());
    QVERIFY2(!run.standardError().contains("minidump, dump path"), run.account());
    QVERIFY(QFileInfo(inTheWay).isFile());
}

void TestCrashConsole::folderBehindALinkGetsNoDump()
{
#ifdef Q_OS_UNIX
    ProgramRun run(testArguments());
    QVERIFY(QDir(run.folder()).mkdir(QStringLiteral("elsewhere")));
    QVERIFY(QFile::link(QStringLiteral("elsewhere"), run.folder() + QStringLiteral("/crashes")));
    run.setScenario(crashScenario("nullWrite", "wait"));
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QCOMPARE(run.process().exitStatus(), QProcess::CrashExit);
    const QByteArray told = "Failed to set dump path which is a link: " + QDir(run.folder()).canonicalPath().toUtf8();
    QVERIFY2(run.standardError().contains(told + "/crashes\n"), run.account());
    QVERIFY2(!run.standardError().contains("minidump"), run.account());
    QCOMPARE(entriesOf(run.folder() + QStringLiteral("/elsewhere")), QStringList());
#else
    QSKIP("only an administrator makes links there");
#endif
}

void TestCrashConsole::dumpThatCannotBeWrittenIsTold()
{
#ifdef Q_OS_UNIX
    ProgramRun run(testArguments());
    run.startThrough(QStringLiteral("prlimit"), {QStringLiteral("--fsize=100")});
    run.setScenario(crashScenario("nullWrite", "wait"));
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QCOMPARE(run.process().exitStatus(), QProcess::CrashExit);
    QCOMPARE(run.process().exitCode(), SIGSEGV);
    const QByteArray told = "Failed to write minidump, dump path: " + QDir(run.folder()).canonicalPath().toUtf8();
    QVERIFY2(run.standardError().contains(told + "/crashes/"), run.account());
#else
    QSKIP("Windows has no limit for the size of files");
#endif
}

void TestCrashConsole::signalFromOutsideLeavesADump()
{
#ifdef Q_OS_UNIX
    ProgramRun run(testArguments());
    run.start();
    QVERIFY2(run.waitForDots(20), run.account());
    QCOMPARE(kill(pid_t(run.process().processId()), SIGSEGV), 0);
    QVERIFY2(run.waitForFinished(), run.account());
    QCOMPARE(run.process().exitStatus(), QProcess::CrashExit);
    QCOMPARE(run.process().exitCode(), SIGSEGV);
    QVERIFY2(run.standardError().contains("Succeed to write minidump, dump path: "), run.account());
    QCOMPARE(entriesOf(run.folder() + QStringLiteral("/crashes")).size(), 1);
#else
    QSKIP("there are no such signals on Windows");
#endif
}

QTEST_GUILESS_MAIN(TestCrashConsole)
#include "tst_crashconsole.moc"
