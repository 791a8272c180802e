#include "resources/vexaresources.h"
#include "tests/support/testhome.h"
#include "tests/support/windowcase.h"

#include <QMetaMethod>
#include <QSignalSpy>

/// What is usable and what is shown in every state of the window, and how each state ends.
class TestNdiWindowStates final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void controls_data();
    void controls();
    void orderOfSignalsAndSlots();
    void allReceiversOfSeveralSourcesFail();
    void samplesWithoutTime();
    void keyInBenchmarkMode();
    void closing_data();
    void closing();

private:
    TestHome m_home;
};

namespace {

/// Brings the window into a state; every step of the way is awaited.
class Way {
public:
    Way(WindowCase &test, QStringList steps) : m_test(test), m_steps(std::move(steps)) {}

    void go()
    {
        for (const QString &step : qAsConst(m_steps))
            take(step);
    }

private:
    void take(const QString &step)
    {
        const Ui::NDIWindow &ui = m_test.ui();
        if (step == QLatin1String("single"))
            m_test.choose(ui.singleOption);
        else if (step == QLatin1String("multiple"))
            m_test.choose(ui.multiOption);
        else if (step == QLatin1String("analysis"))
            m_test.choose(ui.analysisOption);
        else if (step == QLatin1String("benchmark"))
            m_test.choose(ui.benchmarkOption);
        else if (step == QLatin1String("tick"))
            m_test.check(0)->setChecked(true);
        else if (step == QLatin1String("details"))
            ui.btn_expanding->click();
        else if (step == QLatin1String("start"))
            start();
        else if (step == QLatin1String("stop"))
            m_test.press();
        else if (step == QLatin1String("time out"))
            m_test.window->stopTest();
        else if (step == QLatin1String("sample"))
            m_test.window->gotVideoDataRate(QTime(10, 0), 6.5);
        else if (step == QLatin1String("analysis ends"))
            m_test.window->finishAnalysis();
        else if (step == QLatin1String("idle"))
            QTRY_VERIFY(m_test.isIdle());
        else
            QFAIL(qPrintable(step));
    }
    void start()
    {
        QSignalSpy frames(m_test.window.get(), &NDIWindow::frameRender);
        m_test.ndi.setScript(framesWithoutEnd());
        m_test.press();
        if (!m_test.ui().analysisOption->isChecked())
            QTRY_VERIFY(frames.count() > 3);
    }

    WindowCase &m_test;
    QStringList m_steps;
};

} // namespace

void TestNdiWindowStates::initTestCase()
{
    initVexaResources();
    QVERIFY(m_home.use());
    QVERIFY(m_home.enter()); // the analysis writes its command file there
}

void TestNdiWindowStates::cleanup()
{
    QFile::remove(recordPath());
}

void TestNdiWindowStates::controls_data()
{
    QTest::addColumn<QStringList>("steps"); // the way there
    QTest::addColumn<QStringList>("controls");
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("isWaiting"); // the spinner is in the place of the progress
    const auto add = [](const char *state, const char *steps, const char *controls, const char *button,
                        bool isWaiting = false) {
        QTest::newRow(state) << QString::fromLatin1(steps).split(QLatin1Char(',')) << words(controls)
                             << QString::fromLatin1(button) << isWaiting;
    };
    const char *const noPreview =
        "test time single multiple analysis benchmark refresh import export import1 export1 source receivers";
    const char *const noBenchmark =
        "test time single multiple analysis refresh import export import1 export1 source receivers preview";
    const char *const inSingle = "test single source receivers preview";
    const char *const inMultiple = "test multiple source receivers preview";
    const char *const inAnalysis = "analysis source receivers";
    add("single, idle", "single", allControls, "TEST");
    add("multiple, idle", "multiple", allControls, "TEST");
    add("multiple, details", "multiple,tick,details", allControls, "TEST");
    add("analysis, idle", "analysis", noPreview, "TEST");
    add("benchmark", "benchmark", allControls, "TEST");
    add("single after analysis", "analysis,single", allControls, "TEST");
    add("benchmark after analysis", "analysis,benchmark", allControls, "TEST");
    add("single, running", "single,start", inSingle, "STOP");
    add("single, stopped by the user", "single,start,stop", "test single benchmark source receivers preview", "STOP");
    add("single, pressed again while stopping", "single,start,stop,stop",
        "test single benchmark source receivers preview", "STOP");
    add("single, time is over", "single,start,time out", inSingle, "STOP");
    add("single, after the user's stop", "single,start,stop,idle", allControls, "TEST");
    add("single, after its time", "single,start,time out,idle", noBenchmark, "TEST");
    add("single, benchmark comes back with the user's stop", "single,start,time out,idle,start,stop,idle", allControls,
        "TEST");
    add("single, benchmark comes back with an analysis",
        "single,start,time out,idle,analysis,start,sample,analysis ends,single", allControls, "TEST");
    add("multiple, running", "multiple,tick,start", inMultiple, "STOP");
    add("multiple, running with details", "multiple,tick,details,start", inMultiple, "STOP");
    add("multiple, stopped by the user", "multiple,tick,start,stop", "test multiple benchmark source receivers preview",
        "STOP");
    add("multiple, after the user's stop", "multiple,tick,start,stop,idle", allControls, "TEST");
    add("multiple, after its time", "multiple,tick,start,time out,idle", noBenchmark, "TEST");
    add("analysis, waiting", "analysis,start", inAnalysis, "STOP", true);
    add("analysis, running", "analysis,start,sample", inAnalysis, "STOP");
    add("analysis, after its time", "analysis,start,sample,analysis ends", noPreview, "TEST");
    add("analysis, no samples", "analysis,start,idle", noPreview, "TEST");
}

void TestNdiWindowStates::controls()
{
    QFETCH(QStringList, steps);
    WindowCase test(2, 60000, true);
    QVERIFY(test.isReady(2));
    Way(test, steps).go();
    QTEST(usable(test.ui()), "controls");
    QTEST(test.ui().btn_test->text(), "button");
    QFETCH(bool, isWaiting);
    QCOMPARE(!test.ui().waiting_spinner->isHidden(), isWaiting);
    QCOMPARE(test.ui().progress_viewer->isHidden(), isWaiting);
}

void TestNdiWindowStates::orderOfSignalsAndSlots()
{
    const QMetaObject &meta = NDIWindow::staticMetaObject;
    QStringList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names.append(QString::fromLatin1(meta.method(i).methodSignature()));
    const QStringList expected{QStringLiteral("closeWindow()"),
                               QStringLiteral("frameRender(int,int,double)"),
                               QStringLiteral("pingRender(int,int,double)"),
                               QStringLiteral("dataRateRender(int,int,double)"),
                               QStringLiteral("videoSizeRender(int,int,double,double,double)"),
                               QStringLiteral("fpsSetMetaInfo(int,int,int)"),
                               QStringLiteral("dataRateSetMetaInfo(int,int,int)"),
                               QStringLiteral("pingSetMetaInfo(int,int,int)"),
                               QStringLiteral("setGraphLabel(int,QString)"),
                               QStringLiteral("click_btn_dev()"),
                               QStringLiteral("click_btn_network()"),
                               QStringLiteral("click_btn_system()"),
                               QStringLiteral("refreshSource()"),
                               QStringLiteral("getNDISource(const NDIlib_source_t*,int)"),
                               QStringLiteral("findThreadFinished()"),
                               QStringLiteral("startStopTest()"),
                               QStringLiteral("startBenchmark()"),
                               QStringLiteral("sourceTestFinished(int)"),
                               QStringLiteral("sourceFrameReceived(double,int,int,double,int,int,int,int,int,int)"),
                               QStringLiteral("TimeUpdated()"),
                               QStringLiteral("requestClose()"),
                               QStringLiteral("trackFinished()"),
                               QStringLiteral("importData()"),
                               QStringLiteral("exportData()"),
                               QStringLiteral("gotVideoDataRate(QTime,double)"),
                               QStringLiteral("gotVideoSize(QTime,double,double,double)"),
                               QStringLiteral("finishAnalysis()"),
                               QStringLiteral("stopTest()")};
    QCOMPARE(names, expected);
}

void TestNdiWindowStates::allReceiversOfSeveralSourcesFail()
{
    WindowCase test(3);
    QVERIFY(test.isReady(3));
    test.choose(test.ui().multiOption);
    for (int row = 0; row < 3; ++row)
        test.check(row)->setChecked(true);
    test.ndi.setScript({hd60, hd60, errorFrame});
    test.press();
    QTRY_VERIFY(test.isIdle());
    QCOMPARE(recordLines().size() - 2, 6); // written although nobody stopped the test
    QVERIFY(!test.ui().benchmarkOption->isEnabled());
    QCOMPARE(test.ui().cmbPreviewSources->count(), 1);
    // And the window is good for another one.
    test.ndi.setScript({errorFrame});
    test.press();
    QCOMPARE(test.ui().btn_test->text(), QStringLiteral("STOP"));
    QTRY_VERIFY(test.isIdle());
}

void TestNdiWindowStates::samplesWithoutTime()
{
    WindowCase test(1, 2000, true);
    QVERIFY(test.isReady(1));
    test.choose(test.ui().analysisOption);
    test.press();
    QSignalSpy rates(test.window.get(), &NDIWindow::dataRateRender);
    test.window->gotVideoDataRate(QTime(), 6.5);
    // They count, and they do not begin the test anew each time.
    QTimer samples;
    connect(&samples, &QTimer::timeout, this, [&] {
        if (!test.isIdle())
            test.window->gotVideoDataRate(QTime(), 6.5);
    });
    samples.start(20);
    QTRY_VERIFY(test.isIdle());
    QVERIFY(rates.count() > 2);
    QCOMPARE(rates.takeFirst(), (QVariantList{0, 0, 6.5}));
}

void TestNdiWindowStates::keyInBenchmarkMode()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    QVERIFY(QTest::qWaitForWindowExposed(test.window.get()));
    QApplication::setActiveWindow(test.window.get());
    test.ui().btn_import->setProperty("selected", true);
    test.choose(test.ui().benchmarkOption);
    QTest::keyClick(test.window.get(), Qt::Key_Return, Qt::ControlModifier);
    // The button is not there: its key does nothing.
    QVERIFY(test.ui().btn_import->property("selected").toBool());
}

void TestNdiWindowStates::closing_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<bool>("recorded");
    const auto add = [](const char *state, const char *steps, bool recorded) {
        QTest::newRow(state) << QString::fromLatin1(steps).split(QLatin1Char(',')) << recorded;
    };
    add("multiple, idle", "multiple,tick,details", false);
    add("multiple, running", "multiple,tick,start", true);
    add("multiple, stopping", "multiple,tick,start,stop", true);
    add("single, time is over", "single,start,time out", true);
    add("single, after its time", "single,start,time out,idle", true);
    add("analysis, idle", "analysis", false);
    add("analysis, waiting", "analysis,start", false);
    add("analysis, running", "analysis,start,sample", false);
    add("analysis, after its time", "analysis,start,sample,analysis ends", false);
    add("benchmark", "benchmark", false);
}

void TestNdiWindowStates::closing()
{
    QFETCH(QStringList, steps);
    QFETCH(bool, recorded);
    WindowCase test(2, 60000, true);
    QVERIFY(test.isReady(2));
    QSignalSpy closed(test.window.get(), &NDIWindow::closeWindow);
    Way(test, steps).go();
    QElapsedTimer clock;
    clock.start();
    test.window->close();
    QCOMPARE(closed.count(), 1);
    QCOMPARE(QFile::exists(recordPath()), recorded);
    test.window.reset();
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed()))); // a promise
    QCOMPARE(test.ndi.counts().created, test.ndi.counts().destroyed);
    QCOMPARE(test.ndi.counts().findersCreated, test.ndi.counts().findersDestroyed);
    QCOMPARE(test.ndi.counts().libraryLeft, 1);
    QCOMPARE(test.ndi.counts().misuses, 0);
}

QTEST_MAIN(TestNdiWindowStates)
#include "tst_ndiwindow_states.moc"
