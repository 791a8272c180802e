#include "tests/crash_runs/crashruns.h"
#include "tests/support/testbase.h"

/// The real program crashes in its window life: on the main thread, on that of the search, and on the thread of a
/// receiver that looks at a source's format. The dumps are kept for the test crashnames.
class TestCrashWindow final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void crashLeavesADump_data() { m_runs->addRows(); }
    void crashLeavesADump();
    void cleanupTestCase() { m_runs.reset(); }

private:
    std::unique_ptr<CrashRuns> m_runs;
};

void TestCrashWindow::initTestCase()
{
    m_runs = std::make_unique<CrashRuns>(QStringLiteral("window"), QStringList());
    for (const char *kind : {"nullWrite", "abort", "stackOverflow", "pureVirtual"})
        m_runs->add(kind, "initialize");
    for (const char *kind : {"nullWrite", "stackOverflow"})
        m_runs->add(kind, "capture");
    m_runs->add("stackOverflow", "wait");
}

void TestCrashWindow::crashLeavesADump()
{
    QFETCH(int, index);
    m_runs->check(index, QStringLiteral(VEXA_CRASH_DUMPS));
}

QTEST_GUILESS_MAIN(TestCrashWindow)
#include "tst_crashwindow.moc"
