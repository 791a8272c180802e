#include "probes/benchmarkdlg.h"
#include "tests/support/testbase.h"
#include "widgets/qprogressindicator.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <memory>

namespace {

const QString baseOfBarStyle =
    QStringLiteral("QProgressBar {background-color: #202020;color: #ffffff;border-style: outset;border-width: 2px;"
                   "border-color: #74c8ff;border-radius: 7px;font: 500 14px \"Kumbh Sans\";}");

QString barStyle(const QString &color)
{
    return baseOfBarStyle + QStringLiteral("QProgressBar::chunk {background-color: %1; }").arg(color);
}

template <class Widget>
Widget *find(const QDialog &dialog, const char *name)
{
    return dialog.findChild<Widget *>(QLatin1String(name));
}

QString textOf(const QDialog &dialog, const char *name)
{
    return find<QLabel>(dialog, name)->text();
}

/// Which of the three pages are to be seen.
QStringList pages(const QDialog &dialog)
{
    QStringList shown;
    for (const char *name : {"startWrapper", "progWrapper", "widBenchmarkInfo"}) {
        if (find<QWidget>(dialog, name)->isVisibleTo(&dialog))
            shown.append(QLatin1String(name));
    }
    return shown;
}

const QStringList startPage{QStringLiteral("startWrapper")};
const QStringList progressPage{QStringLiteral("progWrapper")};
const QStringList resultPage{QStringLiteral("widBenchmarkInfo")};

/// The stand-in beside this program, where the dialog looks first, and nothing on the search path.
class InstalledTool final {
public:
    explicit InstalledTool(const QByteArray &output) : m_pathBefore(qgetenv("PATH"))
    {
        QFile file(m_folder.filePath(QStringLiteral("output")));
        m_works = file.open(QIODevice::WriteOnly) && file.write(output) == output.size();
        qputenv("VEXA_STANDIN_OUTPUT", QDir::toNativeSeparators(file.fileName()).toLocal8Bit());
        qputenv("PATH", QDir::toNativeSeparators(m_folder.path()).toLocal8Bit());
        QFile::remove(path());
        m_works = m_works && QFile::copy(QStringLiteral(VEXA_STANDIN_BENCHMARK), path());
    }
    ~InstalledTool()
    {
        qputenv("PATH", m_pathBefore);
        qunsetenv("VEXA_STANDIN_OUTPUT");
        qunsetenv("VEXA_STANDIN_HANG");
        QFile::remove(path());
    }
    Q_DISABLE_COPY_MOVE(InstalledTool)

    bool works() const { return m_works; }
    static QString path() { return QDir(QCoreApplication::applicationDirPath()).filePath(benchmarkToolName()); }
    /// Away from beside the program, to a folder of the search path.
    bool moveToSearchPath() { return QFile::rename(path(), m_folder.filePath(benchmarkToolName())); }
    bool remove() { return QFile::remove(path()); }

private:
    QTemporaryDir m_folder;
    QByteArray m_pathBefore;
    bool m_works = false;
};

} // namespace

class TestBenchmarkDlg final : public TestBase {
    Q_OBJECT

private slots:
    void isMadeAsDescribed();
    void barsAtTheStart();
    void cores_data();
    void cores();
    void streams_data();
    void streams();
    void refusedValuesStayOnTheBars();
    void startShowsTheProgress();
    void startRunsTheToolAfterTheDelay();
    void runs_data();
    void runs();
    void toolOnTheSearchPath();
    void noToolGivesZeros();
    void hangingToolsReportSoFarIsShown();
    void closeButtonAndEscapeReject_data();
    void closeButtonAndEscapeReject();
    void closedBeforeTheRunItDoesNotRun();
    void goneBeforeTheRun();
    void enterStarts();
    void barsAreFilledFromBelow();
};

void TestBenchmarkDlg::isMadeAsDescribed()
{
    const BenchmarkDlg dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
    QCOMPARE(dialog.size(), QSize(654, 397));
    QCOMPARE(dialog.styleSheet(), QStringLiteral("QDialog{\n\tbackground-color: transparent;\n}"));
    QCOMPARE(dialog.windowFlags() & ~Qt::WindowType_Mask, Qt::WindowFlags(Qt::FramelessWindowHint));
    QVERIFY(dialog.isWindow());
    QCOMPARE(find<QWidget>(dialog, "widTitleBar")->styleSheet(),
             QStringLiteral("QWidget{\n\tbackground-color : #15cfbb;\n\tborder-top-left-radius: 5px; "
                            "border-top-right-radius: 5px;\n}"));
    QCOMPARE(find<QLabel>(dialog, "lblTitle")->styleSheet(),
             QStringLiteral("QLabel{\n\tfont: 600 16px \"Kumbh Sans\";\n\tcolor : #ffffff;\n}"));
    const auto *close = find<QToolButton>(dialog, "btnClose");
    QVERIFY(close->text().isEmpty());
    QCOMPARE(close->accessibleName(), QStringLiteral("Close"));
    for (const char *image : {":/images/quit-vexa.png", ":/images/quit-vexa-hover.png", ":/images/quit-vexa-gray.png"})
        QVERIFY2(close->styleSheet().contains(QLatin1String(image)), image);
    QVERIFY(find<QWidget>(dialog, "widBodyWrapper")->styleSheet().contains(QStringLiteral("#202020")));
    const QString notice = QStringLiteral("PLEASE NOTE. Your computer will be temporarily unresponsive while the NDI "
                                          "Benchmark test completes.");
    QCOMPARE(textOf(dialog, "lblTitle"), QStringLiteral("BENCHMARK BOX"));
    QCOMPARE(textOf(dialog, "lblText_4"), notice);
    QCOMPARE(textOf(dialog, "lblText_5"), notice);
    QCOMPARE(textOf(dialog, "lblText_3"), QStringLiteral("TESTING IN PROGRESS ..."));
    QCOMPARE(textOf(dialog, "lblText"), QStringLiteral("CPU"));
    QCOMPARE(textOf(dialog, "lblText_2"), QStringLiteral("FPS"));
    QCOMPARE(textOf(dialog, "lblCoresValue"), QStringLiteral("16 Cores"));
    QCOMPARE(textOf(dialog, "lblFPSValue"), QStringLiteral("38 Streams of 1080p"));
    QCOMPARE(find<QAbstractButton>(dialog, "btn_test")->text(), QStringLiteral("Start"));
    const QString start = find<QAbstractButton>(dialog, "btn_test")->styleSheet();
    for (const char *part :
         {"bold 16px \"Kumbh Sans\"", "background-color: #15cfbb", "color: white", "border-radius: 15px"})
        QVERIFY2(start.contains(QLatin1String(part)), part);
    const auto *spinner = find<QProgressIndicator>(dialog, "waiting_spinner");
    QVERIFY(spinner->isAnimated());
    QCOMPARE(spinner->color(), QColor(21, 207, 187));
    QCOMPARE(pages(dialog), startPage);
}

void TestBenchmarkDlg::barsAtTheStart()
{
    const BenchmarkDlg dialog;
    for (const char *name : {"perCPU", "perFPS"}) {
        const auto *bar = find<QProgressBar>(dialog, name);
        QCOMPARE(bar->orientation(), Qt::Vertical);
        QCOMPARE(bar->value(), 0);
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->alignment(), Qt::AlignCenter);
        QCOMPARE(bar->format(), QStringLiteral("%v"));
        QVERIFY(bar->isTextVisible());
    }
    QCOMPARE(find<QProgressBar>(dialog, "perCPU")->maximum(), 24);
    QCOMPARE(find<QProgressBar>(dialog, "perFPS")->maximum(), 100);
}

void TestBenchmarkDlg::cores_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("onTheBar");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << 0 << QStringLiteral("0 Cores");
    QTest::newRow("16") << 16 << 16 << QStringLiteral("16 Cores");
    QTest::newRow("the most that the bar has") << 24 << 24 << QStringLiteral("24 Cores");
    QTest::newRow("one more is refused") << 25 << 0 << QStringLiteral("25 Cores");
    QTest::newRow("no grouping of digits") << 1024 << 0 << QStringLiteral("1024 Cores");
    QTest::newRow("negative") << -4 << 0 << QStringLiteral("-4 Cores");
}

void TestBenchmarkDlg::cores()
{
    QFETCH(int, value);
    BenchmarkDlg dialog;
    dialog.setCpuCores(value);
    const auto *bar = find<QProgressBar>(dialog, "perCPU");
    QTEST(bar->value(), "onTheBar");
    QTEST(textOf(dialog, "lblCoresValue"), "text");
    QCOMPARE(bar->styleSheet(), barStyle(QStringLiteral("#15cfbb")));
}

void TestBenchmarkDlg::streams_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("onTheBar");
    QTest::addColumn<QString>("color");
    QTest::addColumn<QString>("text");
    const QString red = QStringLiteral("#ff1010");
    const QString orange = QStringLiteral("#ff8810");
    const QString green = QStringLiteral("#10ff10");
    QTest::newRow("0") << 0 << 0 << red << QStringLiteral("0 Streams of 1080p");
    QTest::newRow("25") << 25 << 25 << red << QStringLiteral("25 Streams of 1080p");
    QTest::newRow("26") << 26 << 26 << orange << QStringLiteral("26 Streams of 1080p");
    QTest::newRow("50") << 50 << 50 << orange << QStringLiteral("50 Streams of 1080p");
    QTest::newRow("51") << 51 << 51 << green << QStringLiteral("51 Streams of 1080p");
    QTest::newRow("the most that the bar has") << 100 << 100 << green << QStringLiteral("100 Streams of 1080p");
    QTest::newRow("one more is refused") << 101 << 0 << green << QStringLiteral("101 Streams of 1080p");
    QTest::newRow("negative") << -3 << 0 << red << QStringLiteral("-3 Streams of 1080p");
}

void TestBenchmarkDlg::streams()
{
    QFETCH(int, value);
    QFETCH(QString, color);
    BenchmarkDlg dialog;
    dialog.setFPSValue(value);
    const auto *bar = find<QProgressBar>(dialog, "perFPS");
    QTEST(bar->value(), "onTheBar");
    QTEST(textOf(dialog, "lblFPSValue"), "text");
    QCOMPARE(bar->styleSheet(), barStyle(color));
}

void TestBenchmarkDlg::refusedValuesStayOnTheBars()
{
    BenchmarkDlg dialog;
    dialog.setCpuCores(12);
    dialog.setCpuCores(32);
    QCOMPARE(find<QProgressBar>(dialog, "perCPU")->value(), 12);
    QCOMPARE(textOf(dialog, "lblCoresValue"), QStringLiteral("32 Cores"));
    dialog.setFPSValue(30);
    dialog.setFPSValue(250);
    QCOMPARE(find<QProgressBar>(dialog, "perFPS")->value(), 30);
    QCOMPARE(textOf(dialog, "lblFPSValue"), QStringLiteral("250 Streams of 1080p"));
}

void TestBenchmarkDlg::startShowsTheProgress()
{
    BenchmarkDlg dialog;
    const auto *delay = find<QTimer>(dialog, "startDelay");
    QVERIFY(!delay->isActive());
    find<QAbstractButton>(dialog, "btn_test")->click();
    QCOMPARE(pages(dialog), progressPage);
    QVERIFY(delay->isActive());
    QVERIFY(delay->isSingleShot());
    QCOMPARE(delay->interval(), 2000);
}

void TestBenchmarkDlg::startRunsTheToolAfterTheDelay()
{
    const InstalledTool tool("Preparing : 8 CPU cores detected.\n**** Results : 26.0 Streams of 1080p ****\n");
    QVERIFY(tool.works());
    BenchmarkDlg dialog;
    dialog.show();
    QElapsedTimer clock;
    clock.start();
    QTest::mouseClick(find<QAbstractButton>(dialog, "btn_test"), Qt::LeftButton);
    QCOMPARE(pages(dialog), progressPage);
    QTRY_COMPARE(pages(dialog), resultPage);
    QVERIFY(clock.elapsed() >= 1900); // timers are a twentieth off at most
    QCOMPARE(textOf(dialog, "lblCoresValue"), QStringLiteral("8 Cores"));
    QCOMPARE(textOf(dialog, "lblFPSValue"), QStringLiteral("26 Streams of 1080p"));
}

void TestBenchmarkDlg::runs_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("cores");
    QTest::addColumn<QString>("streams");
    QTest::addColumn<QString>("color");
    QTest::newRow("25.9 is 25, red") << QByteArray(
        "Preparing : 4 CPU cores detected.\r\n**** Results : 25.9 Streams of 1080p ****\r\n")
                                     << QStringLiteral("4 Cores") << QStringLiteral("25 Streams of 1080p")
                                     << QStringLiteral("#ff1010");
    QTest::newRow("26.0 is 26, orange") << QByteArray("**** Results : 26.0 Streams of 1080p ****\n")
                                        << QStringLiteral("0 Cores") << QStringLiteral("26 Streams of 1080p")
                                        << QStringLiteral("#ff8810");
    QTest::newRow("50.99 is 50, orange") << QByteArray("**** Results : 50.99 Streams of 1080p ****\n")
                                         << QStringLiteral("0 Cores") << QStringLiteral("50 Streams of 1080p")
                                         << QStringLiteral("#ff8810");
    QTest::newRow("51 is green") << QByteArray("**** Results : 51 Streams of 1080p ****") << QStringLiteral("0 Cores")
                                 << QStringLiteral("51 Streams of 1080p") << QStringLiteral("#10ff10");
    QTest::newRow("other words") << QByteArray("Cannot open the display\n") << QStringLiteral("0 Cores")
                                 << QStringLiteral("0 Streams of 1080p") << QStringLiteral("#ff1010");
}

void TestBenchmarkDlg::runs()
{
    QFETCH(QByteArray, output);
    QFETCH(QString, color);
    const InstalledTool tool(output);
    QVERIFY(tool.works());
    BenchmarkDlg dialog;
    dialog.startBenchmark();
    QCOMPARE(pages(dialog), resultPage);
    QTEST(textOf(dialog, "lblCoresValue"), "cores");
    QTEST(textOf(dialog, "lblFPSValue"), "streams");
    QCOMPARE(find<QProgressBar>(dialog, "perFPS")->styleSheet(), barStyle(color));
}

void TestBenchmarkDlg::toolOnTheSearchPath()
{
    InstalledTool tool("Preparing : 6 CPU cores detected.\n");
    QVERIFY(tool.works() && tool.moveToSearchPath());
    BenchmarkDlg dialog;
    dialog.startBenchmark();
    QCOMPARE(textOf(dialog, "lblCoresValue"), QStringLiteral("6 Cores"));
}

void TestBenchmarkDlg::noToolGivesZeros()
{
    InstalledTool tool("Preparing : 6 CPU cores detected.\n");
    QVERIFY(tool.works() && tool.remove());
    BenchmarkDlg dialog;
    dialog.startBenchmark();
    QCOMPARE(pages(dialog), resultPage);
    QCOMPARE(textOf(dialog, "lblCoresValue"), QStringLiteral("0 Cores"));
    QCOMPARE(textOf(dialog, "lblFPSValue"), QStringLiteral("0 Streams of 1080p"));
    QCOMPARE(find<QProgressBar>(dialog, "perCPU")->value(), 0);
    QCOMPARE(find<QProgressBar>(dialog, "perFPS")->value(), 0);
    QCOMPARE(find<QProgressBar>(dialog, "perFPS")->styleSheet(), barStyle(QStringLiteral("#ff1010")));
}

void TestBenchmarkDlg::hangingToolsReportSoFarIsShown()
{
    const InstalledTool tool("Preparing : 10 CPU cores detected.\n");
    QVERIFY(tool.works());
    qputenv("VEXA_STANDIN_HANG", "1");
    BenchmarkDlg dialog(3000);
    dialog.startBenchmark();
    QCOMPARE(pages(dialog), resultPage);
    QCOMPARE(textOf(dialog, "lblCoresValue"), QStringLiteral("10 Cores"));
    QCOMPARE(textOf(dialog, "lblFPSValue"), QStringLiteral("0 Streams of 1080p"));
}

void TestBenchmarkDlg::closeButtonAndEscapeReject_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("close button") << false;
    QTest::newRow("Escape") << true;
}

void TestBenchmarkDlg::closeButtonAndEscapeReject()
{
    QFETCH(bool, byKey);
    BenchmarkDlg dialog;
    QTimer::singleShot(0, &dialog, [&dialog, byKey] {
        if (byKey)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            QTest::mouseClick(find<QAbstractButton>(dialog, "btnClose"), Qt::LeftButton);
    });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QVERIFY(!dialog.isVisible());
}

void TestBenchmarkDlg::closedBeforeTheRunItDoesNotRun()
{
    BenchmarkDlg dialog;
    dialog.show();
    find<QAbstractButton>(dialog, "btn_test")->click();
    const auto *delay = find<QTimer>(dialog, "startDelay");
    QVERIFY(delay->isActive());
    dialog.reject();
    QVERIFY(!delay->isActive());
    QCOMPARE(pages(dialog), progressPage);
}

void TestBenchmarkDlg::goneBeforeTheRun()
{
    auto dialog = std::make_unique<BenchmarkDlg>();
    dialog->show();
    find<QAbstractButton>(*dialog, "btn_test")->click();
    const QPointer<QTimer> delay = find<QTimer>(*dialog, "startDelay");
    QVERIFY(delay->isActive());
    dialog.reset();
    QVERIFY(delay.isNull());
}

void TestBenchmarkDlg::enterStarts()
{
    BenchmarkDlg dialog;
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Return);
    QCOMPARE(pages(dialog), progressPage);
    QTest::keyClick(&dialog, Qt::Key_Return); // the button has gone
    QCOMPARE(pages(dialog), progressPage);
    QVERIFY(dialog.isVisible());
}

void TestBenchmarkDlg::barsAreFilledFromBelow()
{
    InstalledTool tool(QByteArray(""));
    QVERIFY(tool.works() && tool.remove());
    BenchmarkDlg dialog;
    dialog.startBenchmark();
    dialog.setCpuCores(12);
    dialog.setFPSValue(75);
    dialog.show();
    const QImage cores = find<QProgressBar>(dialog, "perCPU")->grab().toImage();
    const int left = 10; // beside the number
    QCOMPARE(cores.pixelColor(left, cores.height() / 4), QColor(0x20, 0x20, 0x20));
    QCOMPARE(cores.pixelColor(left, cores.height() * 3 / 4), QColor(0x15, 0xcf, 0xbb));
    const QImage streams = find<QProgressBar>(dialog, "perFPS")->grab().toImage();
    QCOMPARE(streams.pixelColor(left, streams.height() / 8), QColor(0x20, 0x20, 0x20));
    QCOMPARE(streams.pixelColor(left, streams.height() * 3 / 8), QColor(0x10, 0xff, 0x10));
    QCOMPARE(streams.pixelColor(left, streams.height() * 7 / 8), QColor(0x10, 0xff, 0x10));
}

QTEST_MAIN(TestBenchmarkDlg)

#include "tst_benchmarkdlg.moc"
