#include "tests/faults/stagewindow.h"
#include "tests/support/testbase.h"
#include "tests/support/testrecord.h"
#include "tests/support/truthcheck.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QtTest>

#include <array>
#include <csignal>
#include <memory>

namespace {

using Key = DrivenWindow::Key;

constexpr int measuredMs = 1500;
constexpr int framesBefore = 25;     ///< of each receiver, until something happens to the program
constexpr int framesAfterwards = 75; ///< of each receiver after it, at the pace of the source
constexpr int fillingFrames = 200;   ///< of each receiver: their rows are more than the small documents take

/// The documents take nothing.
struct Documents {
    const char *name;
    QString preparation; ///< shell
    std::unique_ptr<StageWindow> window;
};

/// What the runtime has handed over in this test of the window, from 1, to the receiver that got less of the two; the
/// first receiver of all asks for the format.
int framesOf(const StageWindow &window, int test = 1)
{
    const QVector<ReceiverTruth> all = truthOfReceivers(loopback::readTruth(window.truthPath().toStdString()));
    if (all.size() <= 2 * test)
        return 0;
    return qMin(all.at(2 * test - 1).frames.size(), all.at(2 * test).frames.size());
}

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
    void runtimeThatRefuses();
    void documentsThatTakeNothing();
    void noHome();
    void clockThatJumps();
    void stoppedForTenSeconds();
};

/// The program says why, and can be left.
void TestFaultsWindowSystem::runtimesOfNoUse()
{
    struct Runtime {
        QByteArray content; ///< of the library; none: there is no library
        QByteArray reason;
        QString boxTitle = QStringLiteral("NDI RUNTIME");
        QTemporaryDir folder = {};
        DrivenWindow window = {};
    };
    const QByteArray narrow = QByteArray("\x7f"
                                         "ELF\x01\x01\x01")
                              + QByteArray(9, '\0') + QByteArray("\x03\x00\x03\x00\x01\x00\x00\x00", 8)
                              + QByteArray(28, '\0'); // the head of one for 32 bits
    std::array<Runtime, 4> runtimes{Runtime{QByteArray(), "libndi.so.6 (missing)"},
                                    Runtime{"hello\n", "libndi.so.6 (not a library)"},
                                    Runtime{narrow, "libndi.so.6 (wrong architecture)"},
                                    Runtime{"link", "lacks the function NDIlib_recv_capture_v2"}};
    for (Runtime &runtime : runtimes) {
        const QString library = runtime.folder.filePath(QStringLiteral("libndi.so.6"));
        if (runtime.content == "link") {
            QVERIFY(QFile::link(QStringLiteral(VEXA_INCOMPLETE_RUNTIME), library));
        } else if (!runtime.content.isEmpty()) {
            QFile file(library);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(runtime.content);
        }
        runtime.window.setRuntimeFolder(runtime.folder.path());
        runtime.window.start();
    }
    for (Runtime &runtime : runtimes) {
        QVERIFY2(runtime.window.hasSaid(runtime.reason), runtime.window.account());
        QVERIFY2(runtime.window.isLeftBy(Key::Escape, runtime.boxTitle), runtime.window.account());
        QVERIFY2(runtime.window.endedWith(0), runtime.window.account());
    }
}

/// NDIlib_initialize() is false: the program says so and ends; closed in another way than by its button, the message
/// lets the window try, which says so, too.
void TestFaultsWindowSystem::runtimeThatRefuses()
{
    DrivenWindow confirmed;
    DrivenWindow closed;
    for (DrivenWindow *window : {&confirmed, &closed}) {
        window->setScenario(R"({"initialize":false})");
        window->start();
    }
    for (DrivenWindow *window : {&confirmed, &closed})
        QVERIFY2(window->hasSaid("This computer can't test NDI performance because the CPU is not sufficient.\n"),
                 window->account());
    QVERIFY2(confirmed.isLeftBy(Key::Return), confirmed.account());
    QVERIFY2(confirmed.endedWith(0), confirmed.account());
    QVERIFY2(closed.answer(Key::Escape), closed.account());
    QVERIFY2(closed.isLeftBy(Key::Return, QStringLiteral("Error")), closed.account());
    QVERIFY2(closed.endedWith(0), closed.account());
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
    for (Documents &one : all) {
        one.window = std::make_unique<StageWindow>();
        one.window->setScenario(StageWindow::stage().replace("\"rateN\":25", "\"rateN\":100"));
        one.window->throughShell(one.preparation);
        one.window->start();
    }
    for (Documents &one : all) // all, before any has a key: a window that opens takes the keyboard
        QVERIFY2(one.window->isOpen(1), one.window->account());
    for (Documents &one : all)
        one.window->chooseTwoReceivers();
    for (int run = 1; run <= 2; ++run) { // it can still be used
        for (Documents &one : all)
            QVERIFY2(one.window->begins(run), one.window->account());
        for (Documents &one : all)
            QTRY_VERIFY_WITH_TIMEOUT(framesOf(*one.window, run) >= fillingFrames, 30000);
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
    const QDir atTheRoot(QStringLiteral("/Documents/Tessaly/Vexa"));
    const QStringList before = atTheRoot.entryList(QDir::Files);
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
    QVERIFY2(window.hasSaid("last record ''"), window.account());
    QCOMPARE(QDir(window.home() + QStringLiteral("/journal")).entryList(QDir::Files).size(), 1);
    QCOMPARE(atTheRoot.entryList(QDir::Files), before);
}

void TestFaultsWindowSystem::clockThatJumps()
{
    struct Jump {
        QByteArray by;
        int framesBefore = 0; ///< of each receiver
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
    for (Jump &jump : jumps) // both, before either has a key
        QVERIFY2(jump.window->isOpen(1), jump.window->account());
    for (Jump &jump : jumps) {
        jump.window->chooseTwoReceivers();
        QVERIFY2(jump.window->begins(), jump.window->account());
    }
    for (Jump &jump : jumps) {
        QTRY_VERIFY(framesOf(*jump.window) >= framesBefore);
        jump.framesBefore = framesOf(*jump.window);
        QVERIFY(jump.set(jump.by));
    }
    for (Jump &jump : jumps) // by the new time
        QTRY_VERIFY(framesOf(*jump.window) >= jump.framesBefore + framesAfterwards);
    for (Jump &jump : jumps) {
        QVERIFY2(jump.window->ends(), jump.window->account());
        QVERIFY2(jump.window->closes(), jump.window->account());
        const TestRecord record = jump.window->record();
        QCOMPARE(record.problem, QString());
        // Two receivers; what the window had not taken up at the end need not be there.
        QVERIFY(record.rows.size() > 2 * (jump.framesBefore + framesAfterwards / 2));
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
    QTRY_VERIFY(framesOf(window) >= framesBefore);
    const auto process = static_cast<pid_t>(window.process().processId());
    QElapsedTimer stop;
    stop.start();
    QVERIFY(kill(process, SIGSTOP) == 0);
    const int frames = framesOf(window);
    QTest::qWait(10000);
    QVERIFY(kill(process, SIGCONT) == 0);
    const int stoppedMs = int(stop.elapsed());
    const int missedFrames = stoppedMs * 25 / 1000; // the runtime hands them over first, all at once
    QTRY_VERIFY(framesOf(window) >= frames + missedFrames + framesAfterwards);
    QVERIFY2(window.ends(), window.account());
    QVERIFY2(window.closes(), window.account());
    const TestRecord record = window.record();
    QCOMPARE(record.problem, QString());
    for (int receiver = 1; receiver <= 2; ++receiver) {
        int longest = 0;
        const QVector<TestRecordRow> rows = record.rowsOf(receiver);
        for (const TestRecordRow &row : rows)
            longest = qMax(longest, row.intervalMs);
        QVERIFY2(longest >= 9500 && longest < stoppedMs + 2000, qPrintable(QString::number(longest)));
        QVERIFY(rows.last().timeMs > 12000);
        QVERIFY2(qAbs(medianRate(rows, 25) - 25) < 8,
                 qPrintable(QString::number(medianRate(rows, 25)))); // it has recovered
    }
}

QTEST_GUILESS_MAIN(TestFaultsWindowSystem)

#include "tst_faults_windowsystem.moc"
