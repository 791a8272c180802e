#include "app/lockedfile.h"
#include "app/recordfile.h"
#include "ndi/measurementsink.h"
#include "tests/support/testbase.h"
#include "tests/support/testhome.h"
#include "tests/support/testrecord.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

#include <array>
#include <cstdio>
#include <limits>

namespace {

/// Gives these rows one after the other.
NextRow each(const QStringList &rows)
{
    return [rows, next = 0](QString *row) mutable {
        if (next == rows.size())
            return false;
        *row = rows.at(next++);
        return true;
    };
}

QString lockPath()
{
    return recordFolder() + QLatin1String("/.vexa.lock");
}

/// Another process: takes a lock and keeps it until it is killed.
int runHolder(const QString &path)
{
    LockedFile lock;
    if (lock.openLock(path) != LockedFile::Lock::Held)
        return 1;
    std::fputs("held\n", stdout);
    std::fflush(stdout);
    std::getchar();
    return 0;
}

/// What another process writes.
QStringList rowsOfWriter(const QString &name)
{
    QStringList rows;
    for (int i = 0; i < 2000; ++i)
        rows.append(recordRow(name, 1920, 1080, 59, i, 0, 59.94, 16));
    return rows;
}

/// Another process: says that it is there, waits for a byte, writes its record and says where it is.
int runWriter(const QString &name)
{
    std::fputs("ready\n", stdout);
    std::fflush(stdout);
    std::getchar();
    if (!writeRecord(each(rowsOfWriter(name))))
        return 1;
    std::fputs(recordPath().toUtf8().constData(), stdout);
    return 0;
}

/// Returns in the first half of a second of the clock, so that what follows is in the same one.
void waitForANewSecond()
{
    while (QTime::currentTime().msec() > 500)
        QTest::qSleep(10);
}

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
    void aSecondRecordOfThisSecondReplacesTheFirst();
    void anothersRecordOfThisSecondStays();
    void eightProcessesInOneSecond();
    void theLockOfADeadProcessIsFree();
    void aLockThatIsNeverReleased();
    void aLockThatCannotBe();
    void unfinishedRecords_data();
    void unfinishedRecords();
    void anUnfinishedRecordReplacesNoOther();
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
        each({recordRow(name, 1280, 720, 50, 20, 0, 50.0, 0), recordRow(name, 1280, 720, 50, 40, 0, 50.0, 20)})));
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
    QVERIFY(appendRecordRows(each(rows)));
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
    QVERIFY(appendRecordRows(each({})));
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
    QVERIFY(appendRecordRows(each(rows)));
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

void TestRecordFile::aSecondRecordOfThisSecondReplacesTheFirst()
{
    QString before;
    QString first;
    do { // both in one second of the clock
        waitForANewSecond();
        before = recordName(QDateTime::currentDateTime());
        QVERIFY(writeRecord(each({QStringLiteral("first")})));
        first = recordPath();
        QVERIFY(writeRecord(each({QStringLiteral("second")})));
        m_made.append({first, recordPath()});
    } while (before != recordName(QDateTime::currentDateTime()));
    QCOMPARE(recordPath(), first);
    QCOMPARE(contents(first), recordHeader().toUtf8() + "\nsecond\n");
}

void TestRecordFile::anothersRecordOfThisSecondStays()
{
    QVERIFY(createRecordFile(QStringLiteral("tst_own"))); // the name of this second is not this process's
    m_made.append(recordPath());
    waitForANewSecond();
    const QString taken = recordFolder() + QLatin1Char('/') + recordName(QDateTime::currentDateTime());
    const QString path = taken + QLatin1String(".csv");
    QFile others(path);
    QVERIFY(others.open(QIODevice::WriteOnly));
    others.write("another's");
    others.close();
    m_made.append(path);
    QVERIFY(createRecordFile(QString()));
    m_made.append(recordPath());
    QVERIFY(recordPath() > path && !recordPath().startsWith(taken)); // of a later second
    QCOMPARE(contents(path), QByteArray("another's"));
}

void TestRecordFile::eightProcessesInOneSecond()
{
    std::array<QProcess, 8> writers;
    for (std::size_t i = 0; i < writers.size(); ++i)
        writers[i].start(QCoreApplication::applicationFilePath(),
                         {QStringLiteral("--write"), QStringLiteral("WRITER %1").arg(i)});
    for (QProcess &writer : writers)
        QVERIFY(writer.waitForReadyRead(60000));
    waitForANewSecond();
    for (QProcess &writer : writers) {
        writer.readAllStandardOutput();
        writer.write("\n");
        writer.waitForBytesWritten();
    }
    QStringList paths;
    for (std::size_t i = 0; i < writers.size(); ++i) {
        QVERIFY(writers[i].waitForFinished(60000));
        QCOMPARE(writers[i].exitCode(), 0);
        paths.append(QString::fromUtf8(writers[i].readAllStandardOutput()));
        m_made.append(paths.last());
        const QByteArray rows = rowsOfWriter(QStringLiteral("WRITER %1").arg(i)).join(QLatin1Char('\n')).toUtf8();
        QVERIFY(contents(paths.last()) == recordHeader().toUtf8() + '\n' + rows + '\n');
        static const QRegularExpression form(QStringLiteral("/vexa_[0-9]{4}_[0-9]{2}_[0-9]{2}_[0-9]{6}\\.csv$"));
        QVERIFY2(form.match(paths.last()).hasMatch(), qPrintable(paths.last()));
    }
    QCOMPARE(paths.removeDuplicates(), 0);
}

void TestRecordFile::theLockOfADeadProcessIsFree()
{
    QVERIFY(createRecordFile(QStringLiteral("tst_folder")));
    m_made.append(recordPath());
    QProcess holder;
    holder.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--hold"), lockPath()});
    QVERIFY(holder.waitForReadyRead(60000));
    LockedFile lock;
    QCOMPARE(lock.openLock(lockPath()), LockedFile::Lock::Busy);
    holder.kill();
    QVERIFY(holder.waitForFinished());
    QTRY_COMPARE(lock.openLock(lockPath()), LockedFile::Lock::Held);
}

void TestRecordFile::aLockThatIsNeverReleased()
{
    LockedFile holder;
    QCOMPARE(holder.openLock(lockPath()), LockedFile::Lock::Held);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(writeRecord(each({QStringLiteral("a")})));
    m_made.append(recordPath());
    QVERIFY2(clock.elapsed() >= 3000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(contents(recordPath()), recordHeader().toUtf8() + "\na\n");
}

void TestRecordFile::aLockThatCannotBe()
{
    QFile::remove(lockPath());
    QVERIFY(QDir().mkdir(lockPath()));
    const bool isWritten = writeRecord(each({QStringLiteral("a")}));
    QVERIFY(QDir().rmdir(lockPath()));
    QVERIFY(isWritten);
    m_made.append(recordPath());
    QCOMPARE(contents(recordPath()), recordHeader().toUtf8() + "\na\n");
}

void TestRecordFile::unfinishedRecords_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("areRowsWanted");
    QTest::addColumn<QByteArray>("part"); ///< null: there is none
    const QByteArray header = recordHeader().toUtf8() + '\n';
    const QByteArray row = "CAM,1920,1080,59,16,1,59.94,16\n";
    QTest::newRow("nothing") << QByteArray() << true << QByteArray();
    QTest::newRow("a part of the header") << header.left(50) << true << QByteArray();
    QTest::newRow("the header") << header << true << QByteArray();
    QTest::newRow("a part of the first row") << header + row.chopped(1) << true << QByteArray();
    QTest::newRow("a row and a part of the next") << header + row + row.left(5) << true << header + row;
    QTest::newRow("whole rows") << header + row + row << true << header + row + row;
    QTest::newRow("whole rows that are elsewhere") << header + row + row << false << QByteArray();
    const QByteArray longRow = QByteArray(200000, 'x') + '\n';
    QTest::newRow("a long torn row") << header + row + longRow.chopped(1) << true << header + row;
    QTest::newRow("a long row and a torn one") << header + longRow + row.left(3) << true << header + longRow;
}

void TestRecordFile::unfinishedRecords()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, areRowsWanted);
    QFETCH(QByteArray, part);
    QVERIFY(createRecordFile(QStringLiteral("tst_unfinished")));
    const QString path = recordPath();
    m_made.append(path + QLatin1String(".part"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();
    dropUnfinishedRecord(areRowsWanted);
    QCOMPARE(recordPath(), QString());
    QVERIFY(!QFile::exists(path));
    QCOMPARE(QFile::exists(path + QLatin1String(".part")), !part.isNull());
    if (!part.isNull())
        QVERIFY(contents(path + QLatin1String(".part")) == part);
    QFile::remove(path + QLatin1String(".part"));
}

void TestRecordFile::anUnfinishedRecordReplacesNoOther()
{
    QStringList parts;
    for (const char *suffix : {".csv.part", "_2.csv.part"}) {
        QVERIFY(createRecordFile(QStringLiteral("tst_parts")));
        QVERIFY(appendRecordText(recordHeader()));
        QVERIFY(appendRecordText(QString::fromLatin1(suffix)));
        dropUnfinishedRecord(true);
        parts.append(recordFolder() + QLatin1String("/tst_parts") + QLatin1String(suffix));
        m_made.append(parts.last());
        QVERIFY(contents(parts.last()).endsWith(suffix + QByteArray("\n")));
    }
    QVERIFY(contents(parts.first()).endsWith("\n.csv.part\n"));
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
    QVERIFY(!appendRecordRows(each({})));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--write") == 0)
        return runWriter(QString::fromUtf8(argv[2]));
    if (argc == 3 && qstrcmp(argv[1], "--hold") == 0)
        return runHolder(QString::fromLocal8Bit(argv[2]));
    TestRecordFile test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_recordfile.moc"
