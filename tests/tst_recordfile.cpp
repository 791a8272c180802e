#include "app/recordfile.h"
#include "ndi/measurementsink.h"
#include "tests/support/testbase.h"
#include "tests/support/testhome.h"
#include "tests/support/testrecord.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QtTest>

#include <limits>

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot open");
}

} // namespace

class TestRecordFile final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void row_data();
    void row();
    void recordIsRightToTheByte();
    void rowsAndJoinedTextAreTheSame();
    void noRowsIsAnEmptyLine();
    void manyRows();
    void nameIsTheTimeInPlainDigits();
    void aFileOfTheSameNameIsReplaced();
    void aFolderThatCannotBeMadeIsAFailure();
    void aFileInThePlaceOfAFolderIsAFailure();
    void aFileThatWentAwayIsNotMadeAnew();
    void withoutARecordNothingIsAppended();

private:
    TestHome m_home;
    QStringList m_made;
};

void TestRecordFile::initTestCase()
{
    // Where the platform lets a variable name the documents folder, the user's own stays out of this.
    QVERIFY(m_home.use());
    QVERIFY(!recordFolder().isEmpty());
    QVERIFY(recordFolder().endsWith(QLatin1String("/Tessaly/Vexa")));
}

void TestRecordFile::cleanupTestCase()
{
    for (const QString &path : qAsConst(m_made))
        QFile::remove(path);
}

void TestRecordFile::row_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("defaultFps");
    QTest::addColumn<int>("indexNum");
    QTest::addColumn<double>("fps");
    QTest::addColumn<QString>("expected");
    const double infinite = std::numeric_limits<double>::infinity();
    const auto row = [](const char *title, const QString &name, double defaultFps, int indexNum, double fps,
                        const QString &expected) {
        QTest::newRow(title) << name << defaultFps << indexNum << fps << expected;
    };
    const QString cam = QStringLiteral("CAM (1)");
    row("whole numbers have no decimals", cam, 25, 0, 25.0, QStringLiteral("CAM (1),1920,1080,25,1234,1,25,40"));
    row("six digits", cam, 29, 1, 29.97012, QStringLiteral("CAM (1),1920,1080,29,1234,2,29.9701,40"));
    row("the eighth receiver", cam, 59, 7, 59.9401, QStringLiteral("CAM (1),1920,1080,59,1234,8,59.9401,40"));
    row("infinite", cam, 59, 0, infinite, QStringLiteral("CAM (1),1920,1080,59,1234,1,inf,40"));
    row("nothing measured", cam, 0, 0, 0.0, QStringLiteral("CAM (1),1920,1080,0,1234,1,0,40"));
    row("seven digits go to exponent form", cam, 25, 0, 1234567.0,
        QStringLiteral("CAM (1),1920,1080,25,1234,1,1.23457e+06,40"));
    row("a comma is not quoted", QStringLiteral("A, B"), 25, 0, 25, QStringLiteral("A, B,1920,1080,25,1234,1,25,40"));
    row("percent signs are text", QStringLiteral("%1%s%n"), 25, 0, 25,
        QStringLiteral("%1%s%n,1920,1080,25,1234,1,25,40"));
}

void TestRecordFile::row()
{
    QFETCH(QString, name);
    QFETCH(double, defaultFps);
    QFETCH(int, indexNum);
    QFETCH(double, fps);
    QTEST(recordRow(name, 1920, 1080, defaultFps, 1234, indexNum, fps, 40), "expected");
    QTEST(recordRow(name, {fps, defaultFps, 1234, 1920, 1080, 40, 7, indexNum}), "expected");
}

void TestRecordFile::recordIsRightToTheByte()
{
    QVERIFY(createRecordFile(QStringLiteral("tst_gold")));
    m_made.append(recordPath());
    QCOMPARE(recordPath(), recordFolder() + QLatin1String("/tst_gold.csv"));
    QCOMPARE(contents(recordPath()), QByteArray());
    QVERIFY(appendRecordText(recordHeader()));
    const QString name = QString::fromUtf8("KÖLN (Kamera 東京 🎥)");
    QVERIFY(appendRecordRows(
        {recordRow(name, 1280, 720, 50, 20, 0, 50.0, 0), recordRow(name, 1280, 720, 50, 40, 0, 50.0, 20)}));
    QCOMPARE(contents(recordPath()),
             QByteArray("NDI Source Name, Frame Width, Frame Height, Default FPS, Time(ms), Receiver Index, "
                        "Received FPS, Received Frame Length\n"
                        "KÖLN (Kamera 東京 🎥),1280,720,50,20,1,50,0\n"
                        "KÖLN (Kamera 東京 🎥),1280,720,50,40,1,50,20\n"));
}

void TestRecordFile::rowsAndJoinedTextAreTheSame()
{
    const QStringList rows{QStringLiteral("a"), QString(), QStringLiteral("c")};
    QVERIFY(createRecordFile(QStringLiteral("tst_rows")));
    m_made.append(recordPath());
    QVERIFY(appendRecordRows(rows));
    const QByteArray fromRows = contents(recordPath());
    QVERIFY(createRecordFile(QStringLiteral("tst_rows")));
    QVERIFY(appendRecordText(rows.join(QLatin1Char('\n'))));
    QCOMPARE(contents(recordPath()), fromRows);
    QCOMPARE(fromRows, QByteArray("a\n\nc\n"));
}

void TestRecordFile::noRowsIsAnEmptyLine()
{
    QVERIFY(createRecordFile(QStringLiteral("tst_empty")));
    m_made.append(recordPath());
    QVERIFY(appendRecordText(recordHeader()));
    QVERIFY(appendRecordRows({}));
    QCOMPARE(contents(recordPath()), recordHeader().toUtf8() + "\n\n");
}

void TestRecordFile::manyRows()
{
    // Several writes' worth.
    QStringList rows;
    for (int i = 0; i < 60000; ++i)
        rows.append(recordRow(QStringLiteral("LOOPBACK (1080p59.94)"), 1920, 1080, 59, i, i % 8, 59.94, 16));
    QVERIFY(createRecordFile(QStringLiteral("tst_many")));
    m_made.append(recordPath());
    QVERIFY(appendRecordText(recordHeader()));
    QVERIFY(appendRecordRows(rows));
    const TestRecord record = TestRecord::read(recordPath());
    QCOMPARE(record.problem, QString());
    QCOMPARE(record.rows.size(), rows.size());
    for (int i = 0; i < record.rows.size(); ++i)
        QCOMPARE(record.rows.at(i).timeMs, i);
}

void TestRecordFile::nameIsTheTimeInPlainDigits()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    const bool made = createRecordFile(QString());
    QLocale::setDefault(before);
    QVERIFY(made);
    m_made.append(recordPath());
    static const QRegularExpression form(
        QStringLiteral("/Tessaly/Vexa/vexa_[0-9]{4}_[0-9]{2}_[0-9]{2}_[0-9]{6}\\.csv$"));
    QVERIFY2(form.match(recordPath()).hasMatch(), qPrintable(recordPath()));
}

void TestRecordFile::aFileOfTheSameNameIsReplaced()
{
    QVERIFY(createRecordFile(QStringLiteral("tst_twice")));
    m_made.append(recordPath());
    QVERIFY(appendRecordText(QStringLiteral("first")));
    QVERIFY(createRecordFile(QStringLiteral("tst_twice")));
    QCOMPARE(contents(recordPath()), QByteArray());
}

void TestRecordFile::aFolderThatCannotBeMadeIsAFailure()
{
    QVERIFY(!createRecordFile(QStringLiteral("no/such/folder/tst")));
    QCOMPARE(recordPath(), QString());
}

void TestRecordFile::aFileInThePlaceOfAFolderIsAFailure()
{
    QVERIFY(createRecordFile(QStringLiteral("tst_before")));
    m_made.append(recordPath());
    QVERIFY(!createRecordFile(QStringLiteral("tst_before.csv/tst")));
    QCOMPARE(recordPath(), QString());
}

void TestRecordFile::aFileThatWentAwayIsNotMadeAnew()
{
    QVERIFY(createRecordFile(QStringLiteral("tst_gone")));
    const QString path = recordPath();
    QVERIFY(QFile::remove(path));
    QVERIFY(!appendRecordText(recordHeader()));
    QVERIFY(!QFile::exists(path));
}

void TestRecordFile::withoutARecordNothingIsAppended()
{
    QVERIFY(!createRecordFile(QStringLiteral("no/such/folder/tst")));
    QVERIFY(!appendRecordText(recordHeader()));
    QVERIFY(!appendRecordRows({}));
}

QTEST_APPLESS_MAIN(TestRecordFile)
#include "tst_recordfile.moc"
