// The bytes of a report do not depend on what a stream was used for before.
#include "mainwindow/reportwriter.h"
#include "tests/support/testbase.h"

#include <QBuffer>
#include <QLocale>
#include <QTextStream>
#include <QtTest>

class TestReportWriter final : public TestBase {
    Q_OBJECT

private slots:
    void streamThatWasSetUpOtherwise();
    void localeOfTheProgram();
    void failureIsTold();
};

namespace {

QVector<ReportChart> charts()
{
    ReportChart chart;
    chart.kind = ReportChartKind::fps;
    chart.lengthS = 12000;
    chart.top = 90;
    chart.graphs = {{{123456, 59.94}, {200, 60}}};
    return {chart};
}

const char bytes[] = "SINGLETEST\nFPSCHART\n12000 90\n1\n2\n123456 59.94\n200 60\n";

} // namespace

void TestReportWriter::streamThatWasSetUpOtherwise()
{
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QTextStream stream(&buffer);
    stream.setCodec("UTF-16");
    stream.setGenerateByteOrderMark(true);
    stream.setLocale(QLocale(QLocale::German, QLocale::Germany));
    stream.setFieldWidth(12);
    stream.setPadChar(QLatin1Char('*'));
    stream.setNumberFlags(QTextStream::ForceSign | QTextStream::ForcePoint | QTextStream::ShowBase);
    stream.setIntegerBase(16);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setRealNumberPrecision(1);
    writeReport(stream, ReportTest::single, charts());
    QCOMPARE(buffer.data(), QByteArray(bytes));
}

void TestReportWriter::localeOfTheProgram()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QBuffer buffer;
    const bool opened = buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    writeReport(stream, ReportTest::single, charts());
    QLocale::setDefault(before);
    QVERIFY(opened);
    QCOMPARE(buffer.data(), QByteArray(bytes));
}

void TestReportWriter::failureIsTold()
{
    QByteArray file;
    QBuffer buffer(&file);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QTextStream stream(&buffer);
    expectWarning(QStringLiteral("ReadOnly device"));
    writeReport(stream, ReportTest::single, charts());
    QCOMPARE(int(stream.status()), int(QTextStream::WriteFailed));
    QVERIFY(file.isEmpty());
}

QTEST_GUILESS_MAIN(TestReportWriter)
#include "tst_reportwriter.moc"
