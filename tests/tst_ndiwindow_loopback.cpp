#include "charts/customplot.h"
#include "mainwindow/customheader.h"
#include "ndi/ndilib.h"
#include "resources/vexaresources.h"
#include "tests/support/testhome.h"
#include "tests/support/windowcase.h"

#include <QSignalSpy>

#include <algorithm>

namespace {

/// The same events again and again: a source's clock starts with the probe of its format, not with the test.
QByteArray repeated(const char *event, int everyFrames, int firstFrame)
{
    constexpr int frames = 60 * 120;
    QByteArrayList events;
    for (int frame = firstFrame; frame < frames; frame += everyFrames)
        events.append(QByteArray(event).replace("FRAME", QByteArray::number(frame)));
    return events.join(',');
}

QByteArray scenario()
{
    const QByteArray picture = R"("width": 640, "height": 360, "rateN": 60000, "rateD": 1001)";
    const QByteArray large = repeated(R"({"kind": "size", "atFrame": FRAME, "width": 1280, "height": 720})", 40, 20);
    const QByteArray small = repeated(R"({"kind": "size", "atFrame": FRAME, "width": 640, "height": 360})", 40, 40);
    return R"({"discoveryMs": 0, "discoveryBatch": 100, "sources": [)"
           R"({"name": "STEADY", )"
           + picture
           + "},"
             R"({"name": "SILENT", "startMs": 86400000},)"
             R"({"name": "ENDS", )"
           + picture + R"(, "events": [)" + repeated(R"({"kind": "error", "atFrame": FRAME})", 60, 30)
           + "]},"
             R"({"name": "GROWS", )"
           + picture + R"(, "events": [)" + large + "," + small
           + "]},"
             R"({"name": "EMPTY", )"
           + picture + R"(, "events": [)" + repeated(R"({"kind": "zeroSize", "atFrame": FRAME, "frames": 5})", 30, 10)
           + "]}]}";
}

constexpr int sources = 5;

/// A window on the loopback runtime.
class LoopbackWindow {
public:
    explicit LoopbackWindow(int minuteMs)
    {
        TestBase::expectWarning(QStringLiteral("Could not parse stylesheet"));
        expectScreenWarnings();
        NDIWindowParts parts = NDIWindowParts::ofThisMachine();
        parts.minuteMs = minuteMs;
        window = std::make_unique<NDIWindow>(parts);
        window->show();
    }
    const Ui::NDIWindow &ui() const { return window->form(); }
    bool isReady()
    {
        return QTest::qWaitFor([this] { return ui().sourceList->count() == sources; }, 20000);
    }
    bool isIdle() const { return ui().btn_test->text() == QStringLiteral("TEST") && ui().timeList->isEnabled(); }

    std::unique_ptr<NDIWindow> window;
};

/// The samples that a spy on frameRender() has seen, those of value 0 apart.
struct Samples {
    explicit Samples(const QSignalSpy &spy)
    {
        for (const QVariantList &one : spy) {
            const bool zero = one.at(2).toDouble() == 0.0;
            zeros += zero ? 1 : 0;
            measured += zero ? 0 : 1;
        }
    }
    int measured = 0;
    int zeros = 0;
};

} // namespace

/// The window with the loopback runtime behind it: everything but the network is real.
class TestNdiWindowLoopback final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void singleTests_data();
    void singleTests();
    void allSourcesAtOnce();

private:
    TestHome m_home;
};

void TestNdiWindowLoopback::initTestCase()
{
    initVexaResources();
    QVERIFY(m_home.use());
    QFile file(m_home.filePath(QStringLiteral("scenario.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(scenario());
    file.close();
    qputenv("VEXA_LOOPBACK_SCENARIO", file.fileName().toUtf8());
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    QVERIFY2(NDIlib_initialize(), qPrintable(ndiRuntimeProblem()));
}

void TestNdiWindowLoopback::singleTests_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QStringList>("sizes"); ///< that the record holds
    QTest::addColumn<bool>("zeros");
    QTest::addColumn<int>("minuteMs");
    const QString small = QStringLiteral("640,360");
    QTest::newRow("steady") << QStringLiteral("STEADY") << QStringList{small} << false << 1500;
    QTest::newRow("silent") << QStringLiteral("SILENT") << QStringList() << false << 700;
    QTest::newRow("ends with an error") << QStringLiteral("ENDS") << QStringList{small} << false << 60000;
    QTest::newRow("another size in the middle")
        << QStringLiteral("GROWS") << QStringList{small, QStringLiteral("1280,720")} << false << 1500;
    QTest::newRow("frames without picture") << QStringLiteral("EMPTY") << QStringList{small} << true << 1500;
}

void TestNdiWindowLoopback::singleTests()
{
    QFETCH(QString, source);
    QFETCH(QStringList, sizes);
    QFETCH(bool, zeros);
    QFETCH(int, minuteMs);
    LoopbackWindow test(minuteMs);
    QVERIFY(test.isReady());
    const Ui::NDIWindow &ui = test.ui();
    ui.sourceList->setCurrentText(source);
    QCOMPARE(ui.sourceList->currentText(), source);
    ui.threadCount->setCurrentIndex(1);
    const QString before = recordPath();
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    ui.btn_test->click();
    QCOMPARE(ui.btn_test->text(), QStringLiteral("STOP"));
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), 30000);

    const Samples samples(frames);
    QCOMPARE(samples.zeros > 0, zeros);
    QCOMPARE(int(ui.fpsPlot->plainPoints(0).size() + ui.fpsPlot->plainPoints(1).size()), frames.count());
    if (sizes.isEmpty()) {
        QCOMPARE(frames.count(), 0);
        QCOMPARE(recordPath(), before);
        return;
    }
    const bool mayBeEmpty = source == QLatin1String("ENDS"); // its error may come at once
    QVERIFY(samples.measured > 0 || mayBeEmpty);
    if (samples.measured == 0)
        return;
    const QStringList lines = recordLines();
    QCOMPARE(lines.size() - 2, samples.measured);
    int accounted = 0;
    for (const QString &size : sizes) {
        const int rows = lines.filter(QStringLiteral("%1,%2,59,").arg(source, size)).size();
        QVERIFY2(rows > 0, qPrintable(size));
        accounted += rows;
    }
    QCOMPARE(accounted, samples.measured);
    QVERIFY(QFile::remove(recordPath()));
}

void TestNdiWindowLoopback::allSourcesAtOnce()
{
    LoopbackWindow test(2000);
    QVERIFY(test.isReady());
    const Ui::NDIWindow &ui = test.ui();
    ui.multiOption->setChecked(true);
    emit ui.multiOption->clicked(true);
    qobject_cast<CustomHeader *>(ui.sourceTable->horizontalHeader())->toggle();
    QCOMPARE(ui.tblStatus->rowCount(), sources);
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    ui.btn_test->click();
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), 30000);
    const QStringList lines = recordLines();
    QCOMPARE(lines.size() - 2, Samples(frames).measured);
    for (const char *source : {"STEADY,", "GROWS,", "EMPTY,"})
        QVERIFY2(!lines.filter(QLatin1String(source)).isEmpty(), source);
    QVERIFY(lines.filter(QStringLiteral("SILENT,")).isEmpty());
    QVERIFY(QFile::remove(recordPath()));
}

QTEST_MAIN(TestNdiWindowLoopback)
#include "tst_ndiwindow_loopback.moc"
