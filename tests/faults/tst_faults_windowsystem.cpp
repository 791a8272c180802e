#include "tests/faults/drivenwindow.h"
#include "tests/support/testbase.h"
#include "tests/support/testrecord.h"

#include <QDateTime>
#include <QFileInfo>
#include <QtTest>

#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <unistd.h>

namespace {

using Key = DrivenWindow::Key;

const QByteArray stage = R"({"queueFrames":1000,"discoveryMs":0,"discoveryBatch":100,"sources":[)"
                         R"({"name":"STAGE","width":640,"height":360,"rateN":25,"rateD":1}]})";
constexpr int measuredMs = 1500;

/// A window with one source, and two receivers chosen once it is open.
class StageWindow : public DrivenWindow {
public:
    StageWindow() { setScenario(stage); }
    /// Through a line of shell, in which the program is "$@", as root of a name space of its own, where mounting is
    /// allowed.
    void throughShell(const QString &line)
    {
        startThrough(QStringLiteral("unshare"),
                     {geteuid() == 0 ? QStringLiteral("-m") : QStringLiteral("-rm"), QStringLiteral("bash"),
                      QStringLiteral("-c"), line, QStringLiteral("shell")});
    }
    bool begins(int times = 1)
    {
        startOrStop();
        return hasStarted("single, 2 receivers", times);
    }
    bool ends(int times = 1)
    {
        startOrStop();
        return hasEnded(times);
    }
    /// What is in its only record.
    TestRecord record() const
    {
        TestRecord none;
        none.problem = QStringLiteral("%1 records").arg(records().size());
        return records().size() == 1 ? TestRecord::read(records().constFirst()) : none;
    }
};

/// The documents take nothing.
struct Documents {
    const char *name;
    QString preparation; ///< shell
    int rate = 25;       ///< of the source
    std::unique_ptr<StageWindow> window;
};

/// Shell lines that give the records a file system of their own of this many bytes.
QString smallDocuments(int bytes)
{
    return QStringLiteral("mkdir -p \"$HOME/Documents\" && mount -t tmpfs -o size=%1 tmpfs \"$HOME/Documents\" && ")
        .arg(bytes);
}

} // namespace

/// What the system around the program may do to it, on the program with its window.
class TestFaultsWindowSystem final : public TestBase {
    Q_OBJECT

private slots:
    void runtimesOfNoUse();
    void documentsThatTakeNothing();
    void noHome();
    void clockThatJumps();
    void stoppedForTenSeconds();
    void closedInEveryState();
};

/// The program says why, and can be left.
void TestFaultsWindowSystem::runtimesOfNoUse()
{
    const QTemporaryDir folder;
    const QString narrow = folder.filePath(QStringLiteral("narrow"));
    const QString incomplete = folder.filePath(QStringLiteral("incomplete"));
    QVERIFY(QDir().mkpath(narrow) && QDir().mkpath(incomplete));
    QFile library(narrow + QStringLiteral("/libndi.so.6")); // the head of one for 32 bits
    QVERIFY(library.open(QIODevice::WriteOnly));
    library.write(QByteArray("\x7f"
                             "ELF\x01\x01\x01")
                  + QByteArray(9, '\0') + QByteArray("\x03\x00\x03\x00\x01\x00\x00\x00", 8) + QByteArray(28, '\0'));
    library.close();
    QVERIFY(QFile::link(QStringLiteral(VEXA_INCOMPLETE_RUNTIME), incomplete + QStringLiteral("/libndi.so.6")));
    for (const auto &[runtime, reason] :
         {std::pair(narrow, "(wrong architecture)"), std::pair(incomplete, "lacks the function")}) {
        DrivenWindow window;
        window.setRuntimeFolder(runtime);
        window.start();
        QVERIFY2(window.hasSaid(reason), window.account());
        std::optional<windowdriver::OtherWindow> box;
        QTRY_VERIFY_WITH_TIMEOUT((box = window.find(QStringLiteral("NDI RUNTIME"))), 20000);
        const auto pressUntilItEnds = [&window, &box] {
            windowdriver::pressKey(*box, Key::Escape);
            return window.process().state() == QProcess::NotRunning;
        };
        QVERIFY2(QTest::qWaitFor(pressUntilItEnds, 20000), window.account());
        QVERIFY2(window.endedWith(0), window.account());
    }
}

/// The window says nothing about it, but goes on, and the journal keeps what was measured.
void TestFaultsWindowSystem::documentsThatTakeNothing()
{
    std::vector<Documents> all(4);
    all[0].name = "a file in the folder's place";
    all[0].preparation = QStringLiteral("echo mine >\"$HOME/Documents\"; exec \"$@\"");
    all[1].name = "unwritable"; // not even root may make a folder there
    all[1].preparation = QStringLiteral("HOME=/proc exec \"$@\"");
    all[2].name = "full disk";
    all[2].preparation = smallDocuments(8192)
                         + QStringLiteral("! head -c 100000 /dev/zero 2>&- >\"$HOME/Documents/full\" && exec \"$@\"");
    all[3].name = "full in the middle of the record";
    all[3].preparation = smallDocuments(8192) + QStringLiteral("exec \"$@\"");
    all[3].rate = 100;
    for (Documents &one : all) {
        one.window = std::make_unique<StageWindow>();
        one.window->setScenario(QByteArray(stage).replace("\"rateN\":25", "\"rateN\":" + QByteArray::number(one.rate)));
        one.window->throughShell(one.preparation);
        one.window->start();
    }
    for (Documents &one : all) {
        QVERIFY2(one.window->isOpen(1), one.window->account());
        one.window->chooseTwoReceivers();
    }
    for (int run = 1; run <= 2; ++run) { // it can still be used
        for (Documents &one : all)
            QVERIFY2(one.window->begins(run), one.window->account());
        QTest::qWait(measuredMs);
        for (Documents &one : all)
            QVERIFY2(one.window->ends(run), one.window->account());
    }
    for (Documents &one : all) {
        QVERIFY2(one.window->closes(), one.window->account());
        QVERIFY2(one.window->records().isEmpty(), one.name);
        const QDir journals(one.window->home() + QStringLiteral("/journal"));
        QCOMPARE(journals.entryList(QDir::Files).size(), 2);
        for (const QFileInfo &journal : journals.entryInfoList(QDir::Files))
            QVERIFY2(journal.size() > 500, qPrintable(journal.filePath()));
    }
}

void TestFaultsWindowSystem::noHome()
{
    StageWindow window;
    window.setVariable(QStringLiteral("HOME"), QString());
    window.setVariable(QStringLiteral("XDG_CONFIG_HOME"), QString());
    window.start();
    QVERIFY2(window.isOpen(1), window.account());
    window.chooseTwoReceivers();
    QVERIFY2(window.begins(), window.account());
    QTest::qWait(measuredMs);
    QVERIFY2(window.ends(), window.account());
    QVERIFY2(window.closes(), window.account());
    // Either a record at the place that it names, or a journal.
    static const QByteArray before("last record '");
    const QByteArray said = window.standardError();
    const int start = said.indexOf(before) + before.size();
    const QString path = QString::fromUtf8(said.mid(start, said.indexOf('\'', start) - start));
    if (path.isEmpty()) {
        QCOMPARE(QDir(window.home() + QStringLiteral("/journal")).entryList(QDir::Files).size(), 1);
    } else {
        QCOMPARE(TestRecord::read(path).problem, QString());
        QVERIFY(QFile::remove(path));
    }
}

void TestFaultsWindowSystem::clockThatJumps()
{
    struct Jump {
        QByteArray by;
        std::unique_ptr<StageWindow> window = std::make_unique<StageWindow>();
        bool set(const QByteArray &offset) const
        {
            QFile file(window->folder() + QStringLiteral("/clock"));
            return file.open(QIODevice::WriteOnly) && file.write(offset + "\n") > 0;
        }
    };
    std::vector<Jump> jumps(2);
    jumps[0].by = "-3600";
    jumps[1].by = "+3600";
    for (Jump &jump : jumps) {
        QVERIFY(jump.set("+0"));
        StageWindow &window = *jump.window;
        window.setVariable(QStringLiteral("LD_PRELOAD"),
                           QStringLiteral("/usr/lib/x86_64-linux-gnu/faketime/libfaketimeMT.so.1"));
        // The address sanitizer wants to be loaded first.
        window.setVariable(QStringLiteral("ASAN_OPTIONS"),
                           qEnvironmentVariable("ASAN_OPTIONS") + QStringLiteral(":verify_asan_link_order=0"));
        window.setVariable(QStringLiteral("FAKETIME_TIMESTAMP_FILE"), window.folder() + QStringLiteral("/clock"));
        window.setVariable(QStringLiteral("FAKETIME_NO_CACHE"), QStringLiteral("1"));
        window.setVariable(QStringLiteral("FAKETIME_DONT_FAKE_MONOTONIC"), QStringLiteral("1"));
        window.start();
    }
    for (Jump &jump : jumps) {
        QVERIFY2(jump.window->isOpen(1), jump.window->account());
        jump.window->chooseTwoReceivers();
        QVERIFY2(jump.window->begins(), jump.window->account());
    }
    QTest::qWait(measuredMs);
    for (Jump &jump : jumps)
        QVERIFY(jump.set(jump.by));
    QTest::qWait(3000); // of measuring by the new time
    for (Jump &jump : jumps) {
        QVERIFY2(jump.window->ends(), jump.window->account());
        QVERIFY2(jump.window->closes(), jump.window->account());
        const TestRecord record = jump.window->record();
        QCOMPARE(record.problem, QString());
        QVERIFY(record.rows.size() > 180); // two receivers at 25, and none of 4.5 s is missing
        for (const TestRecordRow &row : record.rows)
            QVERIFY2(row.intervalMs >= 0 && row.intervalMs < 1000 && row.timeMs < 60000,
                     qPrintable(QString::number(row.intervalMs)));
        // The jump was seen: the record is named by the new time.
        const QFileInfo file(jump.window->records().constFirst());
        const QDateTime named =
            QDateTime::fromString(file.completeBaseName(), QStringLiteral("'vexa_'yyyy_MM_dd_HHmmss"));
        const qint64 differenceS = file.lastModified().secsTo(named) - jump.by.toInt();
        QVERIFY2(named.isValid() && qAbs(differenceS) <= 60, qPrintable(file.fileName()));
    }
}

void TestFaultsWindowSystem::stoppedForTenSeconds()
{
    StageWindow window;
    window.start();
    QVERIFY2(window.isOpen(1), window.account());
    window.chooseTwoReceivers();
    QVERIFY2(window.begins(), window.account());
    QTest::qWait(measuredMs);
    const auto process = static_cast<pid_t>(window.process().processId());
    QVERIFY(kill(process, SIGSTOP) == 0);
    QTest::qWait(10000);
    QVERIFY(kill(process, SIGCONT) == 0);
    QTest::qWait(2500);
    QVERIFY2(window.ends(), window.account());
    QVERIFY2(window.closes(), window.account());
    const TestRecord record = window.record();
    QCOMPARE(record.problem, QString());
    for (int receiver = 1; receiver <= 2; ++receiver) {
        int longest = 0;
        const QVector<TestRecordRow> rows = record.rowsOf(receiver);
        for (const TestRecordRow &row : rows)
            longest = qMax(longest, row.intervalMs);
        QVERIFY2(longest >= 9500 && longest < 12000, qPrintable(QString::number(longest)));
        QVERIFY(rows.last().timeMs > 13000);
        QVERIFY2(qAbs(rows.last().fps - 25) < 2, qPrintable(QString::number(rows.last().fps))); // it has recovered
    }
}

/// It ends with success within seconds, and what was measured is in a record.
void TestFaultsWindowSystem::closedInEveryState()
{
    struct State {
        QByteArray scenario = stage;
        std::function<bool(StageWindow *)> reach;
        int records = 0;
        std::unique_ptr<StageWindow> window = std::make_unique<StageWindow>();
        bool byInterrupt = false; ///< a message keeps the window from being closed by the user
    };
    const auto open = [](StageWindow *window) {
        if (!window->isOpen(1))
            return false;
        window->chooseTwoReceivers();
        return true;
    };
    std::map<QByteArray, State> states;
    states["searching"].scenario = R"({"discoveryMs":3600000,"sources":[{"name":"LATE"}]})";
    states["searching"].reach = [](StageWindow *window) { return window->isShown(); };
    states["idle"].reach = open;
    states["asking for formats"].scenario =
        R"({"discoveryMs":0,"discoveryBatch":100,"sources":[{"name":"S %1","repeat":50,"startMs":3600000}]})";
    states["asking for formats"].reach = [](StageWindow *window) { return window->isOpen(50); };
    states["testing"].reach = [&open](StageWindow *window) {
        if (!open(window) || !window->begins())
            return false;
        QTest::qWait(measuredMs);
        return true;
    };
    states["testing"].records = 1;
    states["stopping"].reach = [&states](StageWindow *window) {
        const bool isTesting = states["testing"].reach(window);
        window->startOrStop();
        return isTesting;
    };
    states["stopping"].records = 1;
    states["after a test"].reach = [&states](StageWindow *window) {
        return states["testing"].reach(window) && window->ends();
    };
    states["after a test"].records = 1;
    states["testing in silence"].scenario =
        R"({"discoveryMs":0,"discoveryBatch":100,"sources":[{"name":"MUTE","startMs":3600000}]})";
    states["testing in silence"].reach = [&open](StageWindow *window) { return open(window) && window->begins(); };
    states["message open"].reach = [](StageWindow *window) {
        if (!window->isOpen(1))
            return false;
        // ANALYSIS without its tool.
        window->press({Key::Tab, Key::Right, Key::Right, Key::Space});
        return QTest::qWaitFor([window] { return windowdriver::windowsOf(window->process().processId()).size() > 1; },
                               10000);
    };
    states["message open"].byInterrupt = true;

    states["analysis waiting"].reach = [](StageWindow *window) {
        if (!window->isOpen(1))
            return false;
        window->press({Key::Tab, Key::Right, Key::Right, Key::Space, Key::CtrlReturn});
        return window->hasSaid("vexa.window: analysis started\n")
               && QTest::qWaitFor([window] { return QFile::exists(window->folder() + QStringLiteral("/running")); },
                                  20000);
    };
    // A tool that says nothing.
    QFile tool(states["analysis waiting"].window->folder() + QStringLiteral("/NDIAnalysis"));
    QVERIFY(tool.open(QIODevice::WriteOnly));
    tool.write("#!/bin/sh\necho $$ >\"$TOOL_FOLDER/running\"\nexec sleep 1000\n");
    tool.close();
    QVERIFY(tool.setPermissions(tool.permissions() | QFile::ExeOwner));

    for (auto &[name, state] : states) {
        state.window->setScenario(state.scenario);
        const QString folder = name == "analysis waiting" ? state.window->folder() + QLatin1Char(':') : QString();
        state.window->setVariable(QStringLiteral("PATH"), folder + QStringLiteral("/usr/bin:/bin"));
        state.window->setVariable(QStringLiteral("TOOL_FOLDER"), state.window->folder());
        state.window->start();
    }
    for (auto &[name, state] : states) {
        QVERIFY2(state.reach(state.window.get()), (name + ": " + state.window->account()).constData());
        if (state.byInterrupt) {
            state.window->interrupt(ProgramRun::Interrupt::Terminate);
            QVERIFY2(QTest::qWaitFor([&run = state.window] { return run->process().state() == QProcess::NotRunning; },
                                     10000),
                     (name + ": " + state.window->account()).constData());
            QVERIFY2(state.window->endedWith(0), (name + ": " + state.window->account()).constData());
        } else {
            QVERIFY2(state.window->closes(), (name + ": " + state.window->account()).constData());
        }
        QVERIFY2(state.window->records().size() == state.records, name);
        for (const QString &path : state.window->records()) {
            const TestRecord record = TestRecord::read(path);
            QCOMPARE(record.problem, QString());
            QVERIFY2(record.rows.size() > 40, name);
        }
        QVERIFY(QDir(state.window->home() + QStringLiteral("/journal")).entryList(QDir::Files).isEmpty());
    }
    QFile running(states["analysis waiting"].window->folder() + QStringLiteral("/running"));
    QVERIFY(running.open(QIODevice::ReadOnly));
    const auto toolProcess = static_cast<pid_t>(running.readAll().trimmed().toInt());
    QVERIFY(toolProcess > 1);
    QTRY_VERIFY(kill(toolProcess, 0) != 0); // the tool does not outlive the program
}

QTEST_GUILESS_MAIN(TestFaultsWindowSystem)

#include "tst_faults_windowsystem.moc"
