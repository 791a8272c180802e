// Files that nobody wrote in good faith, or that something cut or mixed up on the way.
#include "mainwindow/reportreader.h"
#include "tests/support/testbase.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QtTest>

#include <limits>

namespace {

/// What came, in numbers that tests can compare.
class Tally final : public ReportVisitor {
public:
    void startChart(ReportChartKind, int, int, int graphs) override
    {
        ++charts;
        m_graphs = graphs;
        points.clear();
    }
    void addPoint(ReportChartKind, int graph, int timeMs, double value) override
    {
        points.append(QStringLiteral("%1: %2 %3").arg(graph).arg(timeMs).arg(value));
        strays += graph < 0 || graph >= m_graphs;
    }
    void addBand(ReportChartKind, int graph, int timeMs, double minimum, double maximum, double average) override
    {
        points.append(QStringLiteral("%1: %2 %3..%4 %5").arg(graph).arg(timeMs).arg(minimum).arg(maximum).arg(average));
        strays += graph < 0 || graph >= m_graphs;
    }
    int charts = 0;
    QStringList points; ///< of the last chart
    int strays = 0;     ///< points of a graph that was not announced

private:
    int m_graphs = 0;
};

QStringList pointsOf(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

qint64 readingNs(QByteArray file)
{
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    QElapsedTimer timer;
    timer.start();
    ReportReader reader(&buffer);
    reader.readTest();
    Tally tally;
    reader.readCharts(tally);
    return timer.nsecsElapsed();
}

} // namespace

class TestReportReader final : public TestBase {
    Q_OBJECT

private slots:
    void hostile_data();
    void hostile();
    void everyCutOfAReport();
    void sectionsThatPromiseMuch();
};

void TestReportReader::hostile_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("charts");
    QTest::addColumn<QStringList>("points");
    const QByteArray section(" FPSCHART 60 60 1 1 5 6");
    const QByteArray lost("FPSCHART 60 60 ");

    QTest::newRow("a first word of 63 letters") << QByteArray(63, 'X') + section << 1 << pointsOf("0: 5 6");
    QTest::newRow("a first word of 64 letters") << QByteArray(64, 'X') + section << 1 << pointsOf("0: 5 6");
    QTest::newRow("a first word of 65 letters") << QByteArray(65, 'X') + section << 1 << pointsOf("0: 5 6");
    QTest::newRow("a first word of a megabyte") << QByteArray(1 << 20, 'X') + section << 1 << pointsOf("0: 5 6");
    QTest::newRow("a keyword at the end of a long first word")
        << QByteArray(64, 'X') + section.trimmed() << 0 << QStringList();
    QTest::newRow("a long first word and nothing else") << QByteArray(100, 'X') << 0 << QStringList();
    QTest::newRow("a long word later ends it, whatever it ends with")
        << "SINGLETEST" + section + ' ' + QByteArray(64, 'X') + "PINGCHART 60 10 1 1 7 8" << 1 << pointsOf("0: 5 6");

    QTest::newRow("lost section with as many graphs as are taken")
        << lost + "1000 " + QByteArray("0 ").repeated(1000) + section << 1 << pointsOf("0: 5 6");
    QTest::newRow("lost section with more graphs than are taken") << lost + "1001" + section << 0 << QStringList();
    QTest::newRow("lost section with a negative count") << lost + "-1" + section << 1 << pointsOf("0: 5 6");

    QTest::newRow("a count that is a lone sign is 0")
        << QByteArray("SINGLETEST FPSCHART 60 60 2 + 1 5 6") << 1 << pointsOf("1: 5 6");
    QTest::newRow("a word in place of a count") << "SINGLETEST FPSCHART 60 60 3" + section << 2 << pointsOf("0: 5 6");
    QTest::newRow("a word in place of the last count")
        << "SINGLETEST FPSCHART 60 60 2 1 1 2" + section << 2 << pointsOf("0: 5 6");
    QTest::newRow("a word in place of a later count keeps what came before")
        << QByteArray("SINGLETEST FPSCHART 60 60 1000 1 1 2 STOP") << 1 << pointsOf("0: 1 2");

    QTest::newRow("cut after the time") << QByteArray("SINGLETEST FPSCHART 60 60 1 2 5 6 7") << 1
                                        << pointsOf("0: 5 6|0: 7 0");
    QTest::newRow("cut after the average")
        << QByteArray("ANALYSISTEST LATENCYCHART 60 60 1 2 5 6") << 1 << pointsOf("0: 5 0..0 6");
    QTest::newRow("a word in place of a value")
        << QByteArray("SINGLETEST FPSCHART 60 60 1 1 5 STOP") << 1 << pointsOf("0: 5 0");
    QTest::newRow("a decimal comma") << QByteArray("SINGLETEST FPSCHART 60 60 1 1 5 6,5") << 1 << pointsOf("0: 5 6");
    QTest::newRow("the largest time") << QByteArray("SINGLETEST FPSCHART 60 60 1 1 2147483647 1") << 1
                                      << pointsOf("0: 2147483647 1");
    QTest::newRow("a time beyond the largest turns over")
        << QByteArray("SINGLETEST FPSCHART 60 60 1 1 2147483648 1") << 1 << pointsOf("0: -2147483648 1");
    QTest::newRow("a count beyond the largest turns over")
        << "SINGLETEST FPSCHART 60 60 1 2147483648" + section << 2 << pointsOf("0: 5 6");
}

void TestReportReader::hostile()
{
    QFETCH(QByteArray, file);
    QBuffer buffer(&file);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    ReportReader reader(&buffer);
    reader.readTest();
    Tally tally;
    reader.readCharts(tally);
    QTEST(tally.charts, "charts");
    QTEST(tally.points, "points");
    QCOMPARE(tally.strays, 0);
}

void TestReportReader::everyCutOfAReport()
{
    const QByteArray whole("ANALYSISTEST\nLATENCYCHART\n60 100\n2\n2\n0 1.5 9.75 0.25\n17 2 3 1\n1\n5 6 7 5\n"
                           "DATARATECHART\n60 100\n1\n2\n0 6.7975\n17 inf\n");
    int longest = 0;
    for (int size = 0; size <= whole.size(); ++size) {
        QByteArray file = whole.left(size);
        QBuffer buffer(&file);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        ReportReader reader(&buffer);
        reader.readTest();
        Tally tally;
        reader.readCharts(tally);
        QVERIFY(tally.charts <= 2 && tally.points.size() <= 3);
        QCOMPARE(tally.strays, 0);
        longest = qMax(longest, tally.charts);
    }
    QCOMPARE(longest, 2);
}

/// Sections that bring no points: the work has to follow the size of the file, not the graphs that it promises.
void TestReportReader::sectionsThatPromiseMuch()
{
    const QByteArray few = "SINGLETEST " + QByteArray("FPSCHART 1 1 2    ").repeated(100'000);
    const QByteArray many = "SINGLETEST " + QByteArray("FPSCHART 1 1 1000 ").repeated(100'000);
    QCOMPARE(few.size(), many.size());
    qint64 fewNs = std::numeric_limits<qint64>::max();
    qint64 manyNs = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 3; ++i) { // the best of three: whatever else runs on the machine disturbs
        fewNs = qMin(fewNs, readingNs(few));
        manyNs = qMin(manyNs, readingNs(many));
    }
    QVERIFY2(manyNs < 10 * fewNs, qPrintable(QStringLiteral("%1 ns against %2 ns").arg(manyNs).arg(fewNs)));
}

QTEST_GUILESS_MAIN(TestReportReader)
#include "tst_reportreader.moc"
