#include "app/journalformat.h"
#include "ndi/sharedlibrary.h"
#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/usagetext.h"

#include <QDir>
#include <QtTest>

#include <future>

namespace {

#ifdef Q_OS_WIN // the two systems search for libraries in different places
constexpr bool isWindows = true;
#else
constexpr bool isWindows = false;
#endif

const QByteArray banner("\n****************************************************\n"
                        "**\tTessaly NDI VEXA Command Line\t\t**\n"
                        "****************************************************\n\n");
const QByteArray checking("Checking NDI sources...\n\n");
const QByteArray runtimeLine("Loopback NDI runtime: made-up sources for tests and demonstrations\n");

QByteArray scenarioOf(const QByteArray &sources)
{
    return "{\"sources\":[" + sources + "]}";
}

struct EndlessSearch {
    qint64 lengthMs = 0;
    bool endedAsItShould = false;
    QByteArray standardError;
    QByteArray account;
};

/// A search whose list of sources never settles. Takes a minute.
EndlessSearch searchWithoutEnd()
{
    ProgramRun run({QStringLiteral("-findsources")});
    run.setScenario("{\"sources\":[{\"name\":\"STEADY\"},{\"name\":\"FLICKER\",\"churn\":{\"periodMs\":300}}]}");
    QElapsedTimer clock;
    clock.start();
    run.start();
    const bool ended = run.waitForFinished(90000);
    return {clock.elapsed(), ended && run.endedWith(1), run.standardError(), run.account()};
}

} // namespace

/// What the real program prints, byte for byte.
class TestConsoleTranscripts final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void transcript_data();
    void transcript();
    void noArgumentIsTheWindow();
    void missingRuntimeIsExplained_data();
    void missingRuntimeIsExplained();
    void runtimeInTheWorkingFolderIsNotLoaded();
    void runtimeOnTheSearchPathIsLoaded();
    void crashFolderIsMadeInTheWorkingFolder();
    void namesAreTheSameBytesEverywhere();
    void recoveredJournalsAreToldBehindTheBanner_data();
    void recoveredJournalsAreToldBehindTheBanner();
    void aListThatNeverSettlesEndsAfterAMinute();

private:
    std::future<EndlessSearch> m_endless; // its minute passes beside the other tests
};

void TestConsoleTranscripts::initTestCase()
{
    m_endless = std::async(std::launch::async, searchWithoutEnd);
}

void TestConsoleTranscripts::transcript_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("scenario");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *title, const char *line, const QByteArray &scenario, const QByteArray &expected) {
        QTest::newRow(title) << QString::fromUtf8(line).split(QLatin1Char('|')) << scenario << banner + expected;
    };
    const QByteArray badTime("Invalidated time parameter.\n");
    const QByteArray badReceivers("Invalidated receivers parameter.\n");
    const QByteArray searched = checking + runtimeLine;
    const QByteArray cam = scenarioOf("{\"name\":\"CAM 1\"}");
    row("help", "-help", cam, usageText);
    row("an unknown argument", "--version", cam, usageText);
    row("an empty argument", "", cam, usageText);
    row("a test in other letter case", "-TEST|CAM 1", cam, usageText);
    row("time 0", "-test|CAM 1|-time|0", cam, badTime + usageText);
    row("time 6", "-test|CAM 1|-time|6", cam, badTime + usageText);
    row("time is no number", "-test|CAM 1|-time|abc", cam, badTime + usageText);
    row("receivers 0", "-test|CAM 1|-receivers|0", cam, badReceivers + usageText);
    row("receivers 9", "-test|CAM 1|-receivers|9", cam, badReceivers + usageText);
    row("both bad", "-test|CAM 1|-time|6|-receivers|9", cam, badTime + usageText);
    row("test without a name", "-test", cam, searched + "Not found NDI source []\n" + usageText);
    row("unknown source", "-test|CAM 2", cam, searched + "Not found NDI source [CAM 2]\n" + usageText);
    row("source in other letter case", "-test|cam 1", cam, searched + "Not found NDI source [cam 1]\n" + usageText);
    row("placeholders in a name", "-test|%1 %s%n", cam, searched + "Not found NDI source [%1 %s%n]\n" + usageText);
    row("the loopback's own sources", "-findsources", QByteArray(),
        searched
            + "NDI Sources : 4\n[1] LOOPBACK (1080p59.94)\n[2] LOOPBACK (2160p25)\n[3] LOOPBACK (720p50)\n"
              "[4] LOOPBACK (1080p29.97 jittery)\n");
    row("no sources", "-findsources", scenarioOf(""),
        searched + "Can not find NDI sources\nCan not find NDI sources\n");
    row("three sources with awkward names", "-findsources",
        scenarioOf("{\"name\":\"%1 %s%n\"},{\"name\":\"a,\\\"b\\\"\"},{\"name\":\"東京 🎥\"}"),
        searched + "NDI Sources : 3\n[1] %1 %s%n\n[2] a,\"b\"\n[3] 東京 🎥\n");
    row("a source that appears within the search", "-findsources",
        scenarioOf("{\"name\":\"EARLY\"},{\"name\":\"LATE\",\"appearMs\":1500}"),
        searched + "NDI Sources : 2\n[1] EARLY\n[2] LATE\n");
    row("a source that appears after the list has settled", "-findsources",
        scenarioOf("{\"name\":\"EARLY\"},{\"name\":\"TOO LATE\",\"appearMs\":6000}"),
        searched + "NDI Sources : 1\n[1] EARLY\n");
    row("a runtime without a finder", "-findsources", "{\"finderFails\":true,\"sources\":[]}",
        searched + "Can not init NDI instance\n");
    row("a number of sources that cannot be true", "-findsources",
        "{\"discoveryMs\":0,\"claimedSources\":4294967295,\"sources\":[{\"name\":\"ONE\"},{\"name\":\"TWO\"}]}",
        searched
            + "vexa.ndi: The NDI runtime reports 4294967295 sources; only the readable ones are listed, at most "
              "100000\n"
              "NDI Sources : 2\n[1] ONE\n[2] TWO\n");
    QByteArray many = "NDI Sources : 2000\n";
    for (int i = 1; i <= 2000; ++i)
        many += '[' + QByteArray::number(i) + "] CAM " + QByteArray::number(i) + '\n';
    row("two thousand sources", "-findsources", scenarioOf("{\"name\":\"CAM %1\",\"repeat\":2000}"), searched + many);
}

void TestConsoleTranscripts::transcript()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, scenario);
    QFETCH(QByteArray, expected);
    ProgramRun run(arguments);
    if (!scenario.isEmpty())
        run.setScenario(scenario);
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QCOMPARE(run.standardError(), expected);
    QCOMPARE(run.standardOutput(), QByteArray());
    QVERIFY2(run.endedWith(1), run.account());
}

void TestConsoleTranscripts::noArgumentIsTheWindow()
{
    ProgramRun run({});
    run.start();
    // The window's life: without OpenGL, as here, it goes no further.
    QVERIFY2(run.waitForError("This machine doesn't support OpenGL."), run.account());
    QCOMPARE(run.process().state(), QProcess::Running);
    QVERIFY2(!run.standardError().contains("****"), run.account());
    QVERIFY2(!run.standardError().contains("Loopback"), run.account()); // the runtime was not opened
}

void TestConsoleTranscripts::missingRuntimeIsExplained_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("finding") << QStringList{QStringLiteral("-findsources")}
                             << QByteArray(checking + "Can not init NDI instance\n") << QByteArray();
    QTest::newRow("testing") << QStringList{QStringLiteral("-test"), QStringLiteral("CAM")}
                             << QByteArray(checking + "Not found NDI source [CAM]\n") << usageText;
}

void TestConsoleTranscripts::missingRuntimeIsExplained()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    ProgramRun run(arguments);
    const QString folder = run.folder() + QLatin1String("/no-runtime-here");
    run.setRuntimeFolder(folder);
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QByteArray text = run.standardError();
    QVERIFY2(text.startsWith(banner + before), run.account());
    text.remove(0, banner.size() + before.size());
    QVERIFY2(text.endsWith(after), run.account());
    text.chop(after.size());
    QCOMPARE(text.count('\n'), 1);
    QVERIFY2(text.startsWith("No usable NDI runtime was found"), text);
    QVERIFY2(text.contains(QDir::toNativeSeparators(folder).toUtf8()), text);
    QVERIFY2(run.endedWith(1), run.account());
}

void TestConsoleTranscripts::runtimeInTheWorkingFolderIsNotLoaded()
{
    ProgramRun run({QStringLiteral("-findsources")});
    run.setRuntimeFolder(QString());
    const QString name = runtimeFileNames().constFirst();
    QVERIFY(QDir(run.folder()).mkdir(QStringLiteral("below")));
    for (const char *folder : {"/", "/below/"})
        QVERIFY(QFile::copy(ProgramRun::loopbackFolder() + QLatin1Char('/') + name,
                            run.folder() + QLatin1String(folder) + name));
    if (isWindows)
        run.setVariable(QStringLiteral("PATH"), QStringLiteral(".;;below;") + qEnvironmentVariable("PATH"));
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(!run.standardError().contains(runtimeLine), run.account());
    QVERIFY2(run.standardError().contains("\nNo usable NDI runtime was found"), run.account());
    QVERIFY2(run.endedWith(1), run.account());
}

void TestConsoleTranscripts::runtimeOnTheSearchPathIsLoaded()
{
    const QString folder = QDir::toNativeSeparators(ProgramRun::loopbackFolder());
    ProgramRun run({QStringLiteral("-findsources")});
    run.setRuntimeFolder(QString());
    if (isWindows)
        run.setVariable(QStringLiteral("PATH"),
                        QStringLiteral(".;C:\\no such folder;\"%1\";").arg(folder) + qEnvironmentVariable("PATH"));
    else
        run.setVariable(QStringLiteral("LD_LIBRARY_PATH"), folder);
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.standardError().contains(runtimeLine + "NDI Sources : 4\n"), run.account());
}

void TestConsoleTranscripts::crashFolderIsMadeInTheWorkingFolder()
{
    ProgramRun run({QStringLiteral("-help")});
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY(QDir(run.folder() + QLatin1String("/crashes")).exists());
}

void TestConsoleTranscripts::namesAreTheSameBytesEverywhere()
{
    const QByteArray name("BÜHNE (東京 🎥), \"%1\"");
    ProgramRun run({QStringLiteral("-test"), QString::fromUtf8(name)});
    run.setScenario(
        "{\"sources\":[{\"name\":\"BÜHNE (東京 🎥), \\\"%1\\\"\",\"events\":[{\"kind\":\"error\",\"atFrame\":5}]}]}");
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.standardError().contains("NDI Source : " + name + '\n'), run.account());
    QFile record(run.recoverRecord()); // its receiver has failed
    QVERIFY2(record.open(QIODevice::ReadOnly), run.account());
    const QList<QByteArray> lines = record.readAll().split('\n');
    QCOMPARE(lines.size(), 1 + 5 + 1);
    QVERIFY2(lines.at(1).startsWith(name + ','), lines.at(1));
}

void TestConsoleTranscripts::recoveredJournalsAreToldBehindTheBanner_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<bool>("isTold");
    QTest::addColumn<QByteArray>("rest");
    const QByteArray found = checking + runtimeLine + "NDI Sources : 1\n[1] CAM\n";
    QTest::newRow("search") << QStringLiteral("-findsources") << true << found;
    QTest::newRow("test") << QStringLiteral("-test|no such source") << true
                          << checking + runtimeLine + "Not found NDI source [no such source]\n" + usageText;
    QTest::newRow("refused test") << QStringLiteral("-test|CAM|-time|0") << true
                                  << "Invalidated time parameter.\n" + usageText;
    QTest::newRow("help") << QStringLiteral("-help") << false << usageText;
    QTest::newRow("help beside a test") << QStringLiteral("-test|CAM|-help") << false << usageText;
    QTest::newRow("neither") << QStringLiteral("CAM") << false << usageText;
}

void TestConsoleTranscripts::recoveredJournalsAreToldBehindTheBanner()
{
    QFETCH(QString, arguments);
    QFETCH(bool, isTold);
    QFETCH(QByteArray, rest);
    ProgramRun run(arguments.split(QLatin1Char('|')));
    run.setScenario(scenarioOf("{\"name\":\"CAM\"}"));
    JournalEncoder encoder;
    QByteArray block;
    const QByteArray start = encoder.start({{999999999, 1}, QDateTime::currentDateTime(), {QStringLiteral("CAM")}});
    encoder.rows({{59.94, 59.0, 16, 1920, 1080, 16, 0, 0}}, 0, &block);
    QVERIFY(QDir().mkpath(run.home() + QLatin1String("/journal")));
    QFile journal(run.home() + QLatin1String("/journal/1.journal"));
    QVERIFY(journal.open(QIODevice::WriteOnly));
    journal.write(start + block);
    journal.close();
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QByteArray said = run.standardError();
    QVERIFY2(said.startsWith(banner), said);
    said.remove(0, banner.size());
    if (isTold) {
        const int end = said.indexOf('\n') + 1;
        const QByteArray line = said.left(end);
        said.remove(0, end);
        const QByteArray before = "Recovered the record of an interrupted test (";
        QVERIFY2(line.startsWith(before) && line.endsWith("), 1 rows.\n"), line);
        QVERIFY(QFile::remove(QString::fromUtf8(line.mid(before.size(), line.lastIndexOf(')') - before.size()))));
    }
    QCOMPARE(said, rest);
    QCOMPARE(run.journals().size(), isTold ? 0 : 1);
}

void TestConsoleTranscripts::aListThatNeverSettlesEndsAfterAMinute()
{
    const EndlessSearch search = m_endless.get();
    QVERIFY2(search.lengthMs >= 60000 && search.lengthMs < 70000, qPrintable(QString::number(search.lengthMs)));
    QVERIFY2(search.standardError.contains("[1] STEADY\n"), search.account);
    QVERIFY2(search.endedAsItShould, search.account);
}

QTEST_GUILESS_MAIN(TestConsoleTranscripts)
#include "tst_console_transcripts.moc"
