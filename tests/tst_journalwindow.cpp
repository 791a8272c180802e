#include "app/journalrecovery.h"
#include "app/recordfile.h"
#include "mainwindow/ndiwindow.h"
#include "ndi/ndilib.h"
#include "resources/vexaresources.h"
#include "tests/support/killedtest.h"
#include "tests/support/testbase.h"
#include "tests/support/testhome.h"
#include "tests/support/truthwait.h"
#include "ui_ndiwindow.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <cstdio>

namespace {

constexpr int receiverCount = 4;

/// The window with a test that goes on until somebody kills the process. A dot on standard output for each
/// measurement that it has shown; after stallAfter of them its thread does nothing any more.
int runVictim(int argc, char *argv[], int stallAfter)
{
    QApplication application(argc, argv);
    initVexaResources();
    if (!NDIlib_initialize())
        return 2;
    NDIWindow window;
    window.show();
    int shown = 0;
    QObject::connect(&window, &NDIWindow::frameRender, &window, [&shown, stallAfter] {
        std::fputc('.', stdout);
        std::fflush(stdout);
        while (++shown >= stallAfter)
            QThread::sleep(1);
    });
    QTimer start;
    QObject::connect(&start, &QTimer::timeout, &window, [&window, &start] {
        if (window.form().sourceList->count() == 0)
            return;
        start.stop();
        window.form().threadCount->setCurrentIndex(receiverCount - 1);
        window.form().btn_test->click();
    });
    start.start(20);
    return QApplication::exec();
}

} // namespace

/// The window killed in the middle of a test.
class TestJournalWindow final : public TestBase {
    Q_OBJECT

private slots:
    void killed_data();
    void killed();

private:
    TestHome m_home;
};

void TestJournalWindow::killed_data()
{
    QTest::addColumn<int>("stallAfter");
    QTest::addColumn<int>("dots");
    QTest::addColumn<int>("frames"); ///< that the receivers have had by then
    QTest::newRow("at work") << 1000000 << 150 << 0;
    QTest::newRow("at work, later") << 1000000 << 400 << 425;
    QTest::newRow("its thread stuck") << 50 << 50 << 700; // more than two seconds of them
}

void TestJournalWindow::killed()
{
    QFETCH(int, stallAfter);
    QFETCH(int, dots);
    QFETCH(int, frames);
    const QString truthPath = m_home.filePath(QStringLiteral("truth%1").arg(dots));
    QFile scenario(m_home.filePath(QStringLiteral("scenario.json")));
    QVERIFY(scenario.open(QIODevice::WriteOnly));
    scenario.write(R"({"discoveryMs": 0, "sources": [{"name": "CAM", "width": 320, "height": 180,)"
                   R"( "rateN": 60, "rateD": 1}]})");
    scenario.close();
    // For the victim, and for the recovery here.
    QVERIFY(m_home.use());
    qputenv("VEXA_JOURNAL_FOLDER", m_home.filePath(QStringLiteral("journal")).toUtf8());
    qputenv("NDI_RUNTIME_DIR_V6", QFileInfo(QStringLiteral(VEXA_LOOPBACK_DIR)).absoluteFilePath().toUtf8());
    qputenv("VEXA_LOOPBACK_SCENARIO", scenario.fileName().toUtf8());
    qputenv("VEXA_LOOPBACK_TRUTH", truthPath.toUtf8());

    QProcess victim;
    victim.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--victim"), QString::number(stallAfter)});
    QByteArray output;
    const auto read = [&victim, &output] {
        output += victim.readAllStandardOutput();
        return output.count('.');
    };
    QTRY_VERIFY_WITH_TIMEOUT(read() >= dots || victim.state() == QProcess::NotRunning, 60000);
    QVERIFY(waitForTruth(truthPath, "video", frames)); // the receivers go on
    QCOMPARE(victim.state(), QProcess::Running);
    victim.kill();
    QVERIFY(victim.waitForFinished());

    const QVector<RecoveredJournal> recovered = recoverJournalsIn(m_home.filePath(QStringLiteral("journal")));
    QCOMPARE(recovered.size(), 1);
    const TestRecord record = TestRecord::read(recovered.first().recordPath);
    QFile::remove(recovered.first().recordPath);
    QCOMPARE(problemOfKilledTest(record, truthPath, receiverCount), QString());
    QCOMPARE(record.rows.first().sourceName, QByteArray("CAM"));
    if (stallAfter == dots) // what stood in the queue of the stuck thread
        QVERIFY(record.rows.size() > dots + receiverCount * 60);
}

int main(int argc, char *argv[])
{
    if (argc == 3 && qstrcmp(argv[1], "--victim") == 0)
        return runVictim(argc, argv, QByteArray(argv[2]).toInt());
    QCoreApplication application(argc, argv);
    TestJournalWindow test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_journalwindow.moc"
