#include "loopback/truthreader.h"
#include "tests/faults/stagewindow.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <csignal>
#include <functional>
#include <map>
#include <memory>

namespace {

using Key = DrivenWindow::Key;

constexpr int fewestFrames = 200; ///< handed over before a test counts as under way
constexpr int fewestRows = 1;     ///< a busy window may still have to take most of them up
constexpr int patienceMs = 1000;  ///< so long is looked whether something that must not happen does

/// What is wrong with what a window that has ended has left behind; nothing when there are so many whole records and no
/// journal.
QByteArray leftBehind(const StageWindow &window, int records)
{
    if (window.records().size() != records)
        return ": " + QByteArray::number(window.records().size()) + " records";
    for (const QString &path : window.records()) {
        const TestRecord record = TestRecord::read(path);
        if (!record.problem.isEmpty())
            return ": " + record.problem.toUtf8();
        if (record.rows.size() < fewestRows)
            return ": " + QByteArray::number(record.rows.size()) + " rows";
    }
    const QDir journals(window.home() + QStringLiteral("/journal"));
    return journals.entryList(QDir::Files).isEmpty() ? "" : ": a journal";
}

bool opened(StageWindow *window)
{
    if (!window->isOpen(1))
        return false;
    window->chooseTwoReceivers();
    return true;
}

bool tests(StageWindow *window)
{
    if (!opened(window) || !window->begins())
        return false;
    return QTest::qWaitFor(
        [window] {
            const auto events = loopback::readTruth(window->truthPath().toStdString());
            return loopback::countTruth(events, "video") > fewestFrames;
        },
        20000);
}

bool hasTested(StageWindow *window)
{
    return tests(window) && window->ends();
}

/// A tool that says nothing and does not end.
bool makeAnalysisTool(StageWindow *window)
{
    QFile tool(window->folder() + QStringLiteral("/NDIAnalysis"));
    if (!tool.open(QIODevice::WriteOnly)
        || tool.write("#!/bin/sh\necho $$ >\"$TOOL_FOLDER/running\"\nexec sleep 1000\n") < 0)
        return false;
    window->setVariable(QStringLiteral("PATH"), window->folder() + QStringLiteral(":/usr/bin:/bin"));
    window->setVariable(QStringLiteral("TOOL_FOLDER"), window->folder());
    return tool.setPermissions(tool.permissions() | QFile::ExeOwner);
}

/// A dialog that keeps the rest of the window from being used.
struct Modal {
    QByteArray name;
    QString title;
    std::function<bool(StageWindow *)> open; ///< from a window that was just shown; true when the dialog is asked for
    int records = 0;
    bool needsTool = false;
};

std::vector<Modal> modals()
{
    const QString revision = QStringLiteral("REVISION MODE");
    return {{"file to export to", QStringLiteral("Export Data"),
             [](StageWindow *window) {
                 const bool isMeasured = hasTested(window);
                 window->press({Key::CtrlS});
                 return isMeasured;
             },
             1},
            {"question before the import", revision,
             [](StageWindow *window) {
                 const bool isMeasured = hasTested(window);
                 window->press({Key::CtrlO});
                 return isMeasured;
             },
             1},
            {"file to import", QStringLiteral("Import Data"),
             [revision](StageWindow *window) {
                 if (!window->isOpen(1))
                     return false;
                 window->press({Key::CtrlO});
                 return window->answer(Key::Return, revision);
             }},
            {"benchmark", QStringLiteral("Dialog"),
             [](StageWindow *window) {
                 if (!window->isOpen(1))
                     return false;
                 window->press({Key::Tab, Key::Right, Key::Right, Key::Right, Key::Space, Key::Tab, Key::Space});
                 return true;
             },
             0, true},
            {"message", QStringLiteral("FAIL"), [](StageWindow *window) {
                 if (!window->isOpen(1))
                     return false;
                 window->press({Key::Tab, Key::Right, Key::Right, Key::Space}); // ANALYSIS without its tool
                 return true;
             }}};
}

/// A window for each dialog, with the dialog open.
std::vector<std::unique_ptr<StageWindow>> windowsWithDialogs(const std::vector<Modal> &all, QByteArray *problem)
{
    std::vector<std::unique_ptr<StageWindow>> windows;
    for (const Modal &modal : all) {
        windows.push_back(std::make_unique<StageWindow>());
        windows.back()->setVariable(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
        if (modal.needsTool && !makeAnalysisTool(windows.back().get()))
            *problem += "no tool";
        windows.back()->start();
    }
    for (std::size_t i = 0; i < all.size(); ++i) { // all, before any has a key: a window that opens takes the keyboard
        if (!windows[i]->isShown())
            *problem += all[i].name + ": " + windows[i]->account();
    }
    if (!problem->isEmpty())
        return windows;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!all[i].open(windows[i].get()) || !windows[i]->hasOpened(all[i].title))
            *problem += all[i].name + ": " + windows[i]->account();
    }
    return windows;
}

} // namespace

/// The program with its window, asked to end in whatever state it is.
class TestFaultsWindowClosing final : public TestBase {
    Q_OBJECT

private slots:
    void closedInEveryState_data();
    void closedInEveryState();
    void terminatedWithADialogOpen();
    void closedBehindADialog();
};

void TestFaultsWindowClosing::closedInEveryState_data()
{
    QTest::addColumn<bool>("isTerminated");
    QTest::newRow("by the desktop") << false;
    QTest::newRow("by a request for termination") << true;
}

/// It ends with success within seconds, and what was measured is in a record.
void TestFaultsWindowClosing::closedInEveryState()
{
    QFETCH(bool, isTerminated);
    struct State {
        QByteArray scenario = StageWindow::stage();
        std::function<bool(StageWindow *)> reach;
        int records = 0;
        std::unique_ptr<StageWindow> window = std::make_unique<StageWindow>();
    };
    std::map<QByteArray, State> states;
    states["searching"].scenario = R"({"discoveryMs":3600000,"sources":[{"name":"LATE"}]})";
    states["searching"].reach = [](StageWindow *window) { return window->isShown(); };
    states["idle"].reach = opened;
    states["asking for formats"].scenario =
        R"({"discoveryMs":0,"discoveryBatch":100,"sources":[{"name":"S %1","repeat":50,"startMs":3600000}]})";
    states["asking for formats"].reach = [](StageWindow *window) { return window->isOpen(50); };
    states["testing"].reach = tests;
    states["testing"].records = 1;
    states["stopping"].reach = [](StageWindow *window) {
        const bool isTesting = tests(window);
        window->startOrStop();
        return isTesting;
    };
    states["stopping"].records = 1;
    states["after a test"].reach = hasTested;
    states["after a test"].records = 1;
    states["testing in silence"].scenario =
        R"({"discoveryMs":0,"discoveryBatch":100,"sources":[{"name":"MUTE","startMs":3600000}]})";
    states["testing in silence"].reach = [](StageWindow *window) { return opened(window) && window->begins(); };
    states["analysis waiting"].reach = [](StageWindow *window) {
        if (!window->isOpen(1))
            return false;
        window->press({Key::Tab, Key::Right, Key::Right, Key::Space, Key::CtrlReturn});
        return window->hasSaid("vexa.window: analysis started\n")
               && QTest::qWaitFor([window] { return QFile::exists(window->folder() + QStringLiteral("/running")); },
                                  20000);
    };
    for (auto &[name, state] : states) {
        state.window->setScenario(state.scenario);
        state.window->setVariable(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
        if (name == "analysis waiting")
            QVERIFY(makeAnalysisTool(state.window.get()));
        state.window->start();
    }
    for (auto &[name, state] : states) // all, before any has a key: a window that opens takes the keyboard
        QVERIFY2(state.window->isShown(), (name + ": " + state.window->account()).constData());
    for (auto &[name, state] : states) {
        QVERIFY2(state.reach(state.window.get()), (name + ": " + state.window->account()).constData());
        if (isTerminated)
            state.window->interrupt(ProgramRun::Interrupt::Terminate);
        else
            state.window->askToClose();
        QVERIFY2(state.window->stops() && state.window->endedWith(0),
                 (name + ": " + state.window->account()).constData());
        QCOMPARE(name + leftBehind(*state.window, state.records), name);
    }
    QFile running(states["analysis waiting"].window->folder() + QStringLiteral("/running"));
    QVERIFY(running.open(QIODevice::ReadOnly));
    const auto toolProcess = static_cast<pid_t>(running.readAll().trimmed().toInt());
    QVERIFY(toolProcess > 1);
    QTRY_VERIFY(kill(toolProcess, 0) != 0); // the tool does not outlive the program
}

/// The dialog goes with the program, and nothing is lost.
void TestFaultsWindowClosing::terminatedWithADialogOpen()
{
    const std::vector<Modal> all = modals();
    QByteArray problem;
    const auto windows = windowsWithDialogs(all, &problem);
    QCOMPARE(problem, QByteArray());
    for (const auto &window : windows)
        window->interrupt(ProgramRun::Interrupt::Terminate);
    for (std::size_t i = 0; i < all.size(); ++i) {
        StageWindow &window = *windows[i];
        QVERIFY2(window.stops() && window.endedWith(0), (all[i].name + ": " + window.account()).constData());
        QCOMPARE(all[i].name + leftBehind(window, all[i].records), all[i].name);
    }
}

/// A window behind a dialog does not heed the desktop. It does once the dialog is answered, as if it had never been.
void TestFaultsWindowClosing::closedBehindADialog()
{
    const std::vector<Modal> all = modals();
    QByteArray problem;
    const auto windows = windowsWithDialogs(all, &problem);
    QCOMPARE(problem, QByteArray());
    for (const auto &window : windows)
        window->askToClose();
    QTest::qWait(patienceMs);
    for (std::size_t i = 0; i < all.size(); ++i) {
        StageWindow &window = *windows[i];
        QVERIFY2(!window.hasStopped() && window.find(all[i].title) && window.isShown(),
                 (all[i].name + ": " + window.account()).constData());
        QVERIFY2(window.answer(Key::Escape, all[i].title), (all[i].name + ": " + window.account()).constData());
        QVERIFY2(!window.hasStopped(), (all[i].name + ": " + window.account()).constData());
        QVERIFY2(window.closes(), (all[i].name + ": " + window.account()).constData());
        QCOMPARE(all[i].name + leftBehind(window, all[i].records), all[i].name);
    }
}

QTEST_GUILESS_MAIN(TestFaultsWindowClosing)

#include "tst_faults_windowclosing.moc"
