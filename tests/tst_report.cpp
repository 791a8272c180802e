#include "mainwindow/reportreader.h"
#include "mainwindow/reportwriter.h"
#include "tests/support/testbase.h"

#include <QBuffer>
#include <QtTest>

#include <cmath>
#include <limits>

namespace {

/// What was read, as text that tests can compare: one line for each call.
class Transcript final : public ReportVisitor {
public:
    void startChart(ReportChartKind kind, int lengthS, int top, int graphs) override
    {
        lines.append(QStringLiteral("chart %1: %2 x %3, %4").arg(int(kind)).arg(lengthS).arg(top).arg(graphs));
    }
    void addPoint(ReportChartKind kind, int graph, int timeMs, double value) override
    {
        lines.append(QStringLiteral("%1/%2: %3 %4").arg(int(kind)).arg(graph).arg(timeMs).arg(value));
    }
    void addBand(ReportChartKind kind, int graph, int timeMs, double minimum, double maximum, double average) override
    {
        lines.append(QStringLiteral("%1/%2: %3 %4..%5 %6")
                         .arg(int(kind))
                         .arg(graph)
                         .arg(timeMs)
                         .arg(minimum)
                         .arg(maximum)
                         .arg(average));
    }
    QStringList lines;
};

QByteArray written(ReportTest test, const QVector<ReportChart> &charts)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    writeReport(stream, test, charts);
    return buffer.data();
}

ReportChart chart(ReportChartKind kind, double lengthS, double top, std::vector<std::vector<ReportPoint>> graphs)
{
    ReportChart one;
    one.kind = kind;
    one.lengthS = lengthS;
    one.top = top;
    one.graphs = std::move(graphs);
    return one;
}

QStringList linesOf(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

} // namespace

class TestReport final : public TestBase {
    Q_OBJECT

private slots:
    void bytesOfASingleTest();
    void bytesOfAnAnalysis();
    void bytes_data();
    void bytes();
    void reading_data();
    void reading();
    void whatWasWrittenIsRead();
    void longWordsTakeNoMemory();
};

void TestReport::bytesOfASingleTest()
{
    QCOMPARE(
        written(ReportTest::single, {chart(ReportChartKind::fps, 300, 90, {{{100, 59.94}, {200, 60}}}),
                                     chart(ReportChartKind::ping, 300, 10, {{{100, 3}, {200, 2}}})}),
        QByteArray("SINGLETEST\nFPSCHART\n300 90\n1\n2\n100 59.94\n200 60\nPINGCHART\n300 10\n1\n2\n100 3\n200 2\n"));
}

void TestReport::bytesOfAnAnalysis()
{
    QCOMPARE(written(ReportTest::analysis, {chart(ReportChartKind::latency, 60, 100, {{{0, 1.5, 9.75, 0.25}}}),
                                            chart(ReportChartKind::dataRate, 60, 100, {{{0, 6.7975}}})}),
             QByteArray("ANALYSISTEST\nLATENCYCHART\n60 100\n1\n1\n0 1.5 9.75 0.25\n"
                        "DATARATECHART\n60 100\n1\n1\n0 6.7975\n"));
}

void TestReport::bytes_data()
{
    QTest::addColumn<double>("length");
    QTest::addColumn<double>("top");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<QByteArray>("line");
    const double infinity = std::numeric_limits<double>::infinity();
    QTest::newRow("axes are cut, not rounded") << 60.9 << 99.9 << 1.0 << 2.0 << QByteArray("60 99\n1\n1\n1 2\n");
    QTest::newRow("a top below one is 0") << 60.0 << 0.8 << 1.0 << 2.0 << QByteArray("60 0\n1\n1\n1 2\n");
    QTest::newRow("six significant digits")
        << 60.0 << 60.0 << 999999.0 << 59.94005994 << QByteArray("60 60\n1\n1\n999999 59.9401\n");
    QTest::newRow("from a million on x has an exponent")
        << 60.0 << 60.0 << 1000000.0 << 0.00001 << QByteArray("60 60\n1\n1\n1e+06 1e-05\n");
    QTest::newRow("infinite values") << 60.0 << 60.0 << 5.0 << infinity << QByteArray("60 60\n1\n1\n5 inf\n");
    QTest::newRow("undefined values") << 60.0 << 60.0 << 5.0 << std::nan("") << QByteArray("60 60\n1\n1\n5 nan\n");
    QTest::newRow("a top that an int cannot hold")
        << 60.0 << 1e300 << 1.0 << 2.0 << QByteArray("60 2147483647\n1\n1\n1 2\n");
    QTest::newRow("an undefined top") << 60.0 << std::nan("") << 1.0 << 2.0 << QByteArray("60 0\n1\n1\n1 2\n");
}

void TestReport::bytes()
{
    QFETCH(double, length);
    QFETCH(double, top);
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(QByteArray, line);
    QCOMPARE(written(ReportTest::multiple, {chart(ReportChartKind::fps, length, top, {{{x, y}}})}),
             "MULTITEST\nFPSCHART\n" + line);
    QCOMPARE(written(ReportTest::none, {chart(ReportChartKind::fps, length, top, {{{x, y}}})}), QByteArray());
}

void TestReport::reading_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("test");
    QTest::addColumn<QStringList>("lines");
    const int none = int(ReportTest::none);
    const int single = int(ReportTest::single);

    QTest::newRow("single test") << QByteArray("SINGLETEST\nFPSCHART\n300 90\n1\n2\n100 59.94\n200 60\n") << single
                                 << linesOf("chart 0: 300 x 90, 1|0/0: 100 59.94|0/0: 200 60");
    QTest::newRow("CR LF and blanks of any kind")
        << QByteArray("MULTITEST\r\n\r\nPINGCHART\t60   10\r\n1\r\n1\r\n5 6\r\n") << int(ReportTest::multiple)
        << linesOf("chart 1: 60 x 10, 1|1/0: 5 6");
    QTest::newRow("analysis, in the order average, maximum, minimum")
        << QByteArray("ANALYSISTEST LATENCYCHART 60 100 1 1 0 1.5 9.75 0.25 DATARATECHART 60 100 1 1 0 6.5")
        << int(ReportTest::analysis)
        << linesOf("chart 2: 60 x 100, 1|2/0: 0 0.25..9.75 1.5|chart 3: 60 x 100, 1|3/0: 0 6.5");
    QTest::newRow("a byte order mark") << QByteArray("\xEF\xBB\xBFSINGLETEST FPSCHART 60 60 0") << single
                                       << linesOf("chart 0: 60 x 60, 0");
    QTest::newRow("an empty file") << QByteArray() << none << QStringList();
    QTest::newRow("keywords are told by case")
        << QByteArray("singletest FPSCHART 60 60 0") << none << linesOf("chart 0: 60 x 60, 0");
    QTest::newRow("another first word is taken away")
        << QByteArray("HELLO FPSCHART 60 60 0") << none << linesOf("chart 0: 60 x 60, 0");
    QTest::newRow("a section in place of the test is lost")
        << QByteArray("FPSCHART 60 60 1 1 5 6 PINGCHART 60 10 1 1 7 8") << none
        << linesOf("chart 1: 60 x 10, 1|1/0: 7 8");
    QTest::newRow("sections in any order, repeated")
        << QByteArray("SINGLETEST PINGCHART 60 10 0 FPSCHART 60 60 0 PINGCHART 30 5 0") << single
        << linesOf("chart 1: 60 x 10, 0|chart 0: 60 x 60, 0|chart 1: 30 x 5, 0");
    QTest::newRow("another word ends it")
        << QByteArray("SINGLETEST FPSCHART 60 60 0 STOP PINGCHART 60 10 0") << single << linesOf("chart 0: 60 x 60, 0");
    QTest::newRow("several graphs") << QByteArray("SINGLETEST FPSCHART 60 60 2 1 5 6 2 7 8 9 10") << single
                                    << linesOf("chart 0: 60 x 60, 2|0/0: 5 6|0/1: 7 8|0/1: 9 10");
    QTest::newRow("a graph without points")
        << QByteArray("SINGLETEST FPSCHART 60 60 2 0 1 7 8") << single << linesOf("chart 0: 60 x 60, 2|0/1: 7 8");
    QTest::newRow("a negative count of graphs") << QByteArray("SINGLETEST FPSCHART 60 60 -1 PINGCHART 60 10 0")
                                                << single << linesOf("chart 0: 60 x 60, 0|chart 1: 60 x 10, 0");
    QTest::newRow("as many graphs as are taken")
        << QByteArray("SINGLETEST FPSCHART 60 60 1000") << single << linesOf("chart 0: 60 x 60, 1000");
    QTest::newRow("more graphs than are taken")
        << QByteArray("SINGLETEST FPSCHART 60 60 1001 PINGCHART 60 10 0") << single << QStringList();
    QTest::newRow("a negative count of points") << QByteArray("SINGLETEST FPSCHART 60 60 1 -5 PINGCHART 60 10 0")
                                                << single << linesOf("chart 0: 60 x 60, 1|chart 1: 60 x 10, 0");
    QTest::newRow("more points promised than there are") << QByteArray("SINGLETEST FPSCHART 60 60 1 2147483647 5 6 7 8")
                                                         << single << linesOf("chart 0: 60 x 60, 1|0/0: 5 6|0/0: 7 8");
    QTest::newRow("a word among the points") << QByteArray("SINGLETEST FPSCHART 60 60 1 1000000 5 6 PINGCHART 60 10 0")
                                             << single << linesOf("chart 0: 60 x 60, 1|0/0: 5 6|chart 1: 60 x 10, 0");
    QTest::newRow("axes of 0 and below") << QByteArray("SINGLETEST FPSCHART 0 -7 0") << single
                                         << linesOf("chart 0: 0 x -7, 0");
    QTest::newRow("times beyond a million have lost digits")
        << QByteArray("SINGLETEST FPSCHART 60 60 1 1 1.23457e+06 60") << single
        << linesOf("chart 0: 60 x 60, 1|0/0: 1 234570");
    QTest::newRow("infinite and undefined values") << QByteArray("SINGLETEST FPSCHART 60 60 1 2 5 inf 6 nan") << single
                                                   << linesOf("chart 0: 60 x 60, 1|0/0: 5 inf|0/0: 6 nan");
    QTest::newRow("numbers to the base of ten")
        << QByteArray("SINGLETEST FPSCHART 010 60 0") << single << linesOf("chart 0: 10 x 60, 0");
    QTest::newRow("binary junk") << QByteArray("\x00\x01\xFF\xFE\x80 FPSCHART\x00", 15) << none << QStringList();
}

void TestReport::reading()
{
    QFETCH(QByteArray, file);
    QBuffer buffer(&file);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    ReportReader reader(&buffer);
    QTEST(int(reader.readTest()), "test");
    Transcript transcript;
    reader.readCharts(transcript);
    QTEST(transcript.lines, "lines");
}

void TestReport::whatWasWrittenIsRead()
{
    std::vector<std::vector<ReportPoint>> graphs(3);
    for (int graph = 0; graph < 3; ++graph) {
        for (int i = 0; i < 500; ++i)
            graphs[static_cast<std::size_t>(graph)].push_back({i * 17.0, 59.0 + graph + i * 0.001, 70.5, 3.25});
    }
    QByteArray file = written(ReportTest::analysis, {chart(ReportChartKind::latency, 60, 100, graphs),
                                                     chart(ReportChartKind::dataRate, 60, 100, graphs)});
    QBuffer buffer(&file);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    ReportReader reader(&buffer);
    QCOMPARE(int(reader.readTest()), int(ReportTest::analysis));
    Transcript transcript;
    reader.readCharts(transcript);
    QCOMPARE(transcript.lines.size(), 2 * (1 + 3 * 500));
    QCOMPARE(transcript.lines.at(1), QStringLiteral("2/0: 0 3.25..70.5 59"));
    QCOMPARE(transcript.lines.last(), QStringLiteral("3/2: 8483 61.499"));
}

void TestReport::longWordsTakeNoMemory()
{
    QByteArray file("SINGLETEST FPSCHART 60 60 1 1 5 6 ");
    file.append(QByteArray(20 * 1024 * 1024, 'X'));
    QBuffer buffer(&file);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    ReportReader reader(&buffer);
    QCOMPARE(int(reader.readTest()), int(ReportTest::single));
    Transcript transcript;
    reader.readCharts(transcript);
    QCOMPARE(transcript.lines, linesOf("chart 0: 60 x 60, 1|0/0: 5 6"));
    QVERIFY(buffer.pos() < 1024 * 1024); // the rest was never read
}

QTEST_GUILESS_MAIN(TestReport)
#include "tst_report.moc"
