#include "app/backgroundrecovery.h"
#include "app/journal.h"
#include "app/journalrecovery.h"
#include "app/recordfile.h"
#include "app/testrecorder.h"
#include "tests/support/testbase.h"
#include "tests/support/testhome.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <thread>

namespace {

const QStringList names{QStringLiteral("Camera, \"one\""), QString::fromUtf8("东京")};
const ProcessIdentity nobody{999999999, 1};

Measurement rowNumber(int number)
{
    return {59.94 + number % 100 / 100.0, 59.0, 16 * number, 1920, 1080, 16 + number % 2, number % 2, number % 8};
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot open");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

void setChanged(const QString &path, const QDateTime &time)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
}

void setAge(const QString &path, int seconds)
{
    setChanged(path, QDateTime::currentDateTime().addSecs(-seconds));
}

QByteArray recordText(int rows)
{
    QString text = recordHeader() + QLatin1Char('\n');
    for (int i = 0; i < rows; ++i) {
        const Measurement row = rowNumber(i);
        text += recordRow(names.at(row.sourceIndex), row) + QLatin1Char('\n');
    }
    return text.toUtf8();
}

const QDateTime startInThePast(QDate(2021, 2, 3), QTime(4, 5, 6), Qt::LocalTime);

QDateTime startOf(int number)
{
    return QDateTime(QDate(2031, 2, 3), QTime(4, 5, 6), Qt::LocalTime).addSecs(60 * number);
}

QByteArray journalBytes(const ProcessIdentity &owner, const QDateTime &startTime, int rows, std::uint32_t lost = 0)
{
    JournalEncoder encoder;
    QByteArray bytes = encoder.start({owner, startTime, names});
    for (int i = 0; i < rows; ++i) {
        QByteArray block;
        encoder.rows({rowNumber(i)}, lost, &block);
        bytes += block;
    }
    return bytes;
}

} // namespace

class TestJournal final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void rowsAreInTheFileWithinASecond();
    void theRecordTakesTheJournalAway();
    void aTestWithoutRowsLeavesNothing();
    void aRecordThatFailsLeavesTheJournal();
    void rowsWithoutARecordStay();
    void aFolderThatCannotBeMadeSwitchesItOff();
    void offByVariable();
    void manyRowsAtOnceAreAllThere();
    void recoveredRecordEqualsTheNormalOne();
    void aTakenNameGetsANumber();
    void theSameRecordIsNotMadeTwice();
    void noRowsNoRecord();
    void runningTestsAreLeftAlone();
    void anotherProcessOfTheSameNumberIsNotTheOwner();
    void twoProgramsTakeItOnce();
    void aRecordThatCannotBeWrittenKeepsTheJournal();
    void whatCannotBeReadIsPutAside_data();
    void whatCannotBeReadIsPutAside();
    void whatIsAsideGoesAfterThirtyDays();
    void aSpoiltStartGivesItsRows_data();
    void aSpoiltStartGivesItsRows();
    void aStartThatNobodyGoesOnWithGoesAway();
    void linesTellTheUser();
    void recoveryInTheBackground();
    void recoveryIsWaitedFor();

private:
    void startAfresh();
    void removeRecords();
    QString folder() const { return m_folder->filePath(QStringLiteral("journal")); }
    QStringList filesLeft() const
    {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }
    QString leave(const QString &name, const QByteArray &bytes)
    {
        QDir().mkpath(folder());
        const QString path = folder() + QLatin1Char('/') + name;
        writeFile(path, bytes);
        return path;
    }
    QString made(const QString &path)
    {
        m_made.append(path);
        return path;
    }

    TestHome m_home;
    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_made; // where the documents folder is the user's own
};

void TestJournal::initTestCase()
{
    QVERIFY(m_home.use());
}

void TestJournal::cleanupTestCase()
{
    removeRecords();
}

/// First in every test: no journals, and no records of the test before.
void TestJournal::startAfresh()
{
    removeRecords();
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("VEXA_JOURNAL_FOLDER", folder().toUtf8());
}

void TestJournal::removeRecords()
{
    for (const QString &path : qAsConst(m_made))
        QFile::remove(path);
    m_made.clear();
}

void TestJournal::rowsAreInTheFileWithinASecond()
{
    startAfresh();
    Journal journal(folder(), names, startOf(0));
    QTRY_COMPARE(filesLeft().size(), 1);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 10; ++i)
        journal.sink()->add(rowNumber(i));
    const qint64 empty = journalBytes(nobody, startOf(0), 0).size();
    const QString path = folder() + QLatin1Char('/') + filesLeft().first();
    QTRY_VERIFY(QFileInfo(path).size() > empty);
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!journal.isIncomplete());
    journal.end(Journal::End::Remove);
    QCOMPARE(filesLeft(), QStringList());
}

void TestJournal::theRecordTakesTheJournalAway()
{
    startAfresh();
    TestRecorder recorder;
    QVERIFY(!recorder.sink());
    recorder.begin(names);
    for (int i = 0; i < 10; ++i) {
        recorder.sink()->add(rowNumber(i));
        recorder.add(rowNumber(i));
    }
    QTRY_COMPARE(filesLeft().size(), 1);
    QVERIFY(recorder.write());
    QCOMPARE(contents(made(recordPath())), recordText(10));
    QCOMPARE(filesLeft(), QStringList());
    QVERIFY(!recorder.hasRows());
}

void TestJournal::aTestWithoutRowsLeavesNothing()
{
    startAfresh();
    {
        TestRecorder recorder;
        recorder.begin(names);
        QTRY_COMPARE(filesLeft().size(), 1);
    }
    QCOMPARE(filesLeft(), QStringList());
    TestRecorder recorder;
    recorder.begin(names);
    recorder.sink()->add(rowNumber(0));
    recorder.clear(); // told to forget them
    QCOMPARE(filesLeft(), QStringList());
}

void TestJournal::aRecordThatFailsLeavesTheJournal()
{
    startAfresh();
#if defined(Q_OS_WIN) // a variable cannot move the documents folder there
    QSKIP("the documents folder is the user's own");
#endif
    const QTemporaryDir home;
    writeFile(home.filePath(QStringLiteral("Documents")), "in the way");
    qputenv("HOME", home.path().toUtf8());
    TestRecorder recorder;
    recorder.begin(names);
    recorder.sink()->add(rowNumber(0));
    recorder.add(rowNumber(0));
    const bool written = recorder.write();
    QVERIFY(m_home.use());
    QVERIFY(!written);
    QCOMPARE(filesLeft().size(), 1);
    JournalReader reader(contents(folder() + QLatin1Char('/') + filesLeft().first()));
    QCOMPARE(reader.rowCount(), qint64(1));
    QVERIFY(recoverJournalsIn(folder()).isEmpty()); // not while its program runs
    QCOMPARE(filesLeft().size(), 1);
}

void TestJournal::rowsWithoutARecordStay()
{
    startAfresh();
    TestRecorder recorder;
    recorder.begin(names);
    QTRY_COMPARE(filesLeft().size(), 1);
    recorder.leaveToJournal(); // a test without rows
    QCOMPARE(filesLeft(), QStringList());
    recorder.begin(names);
    recorder.sink()->add(rowNumber(0));
    recorder.add(rowNumber(0));
    recorder.leaveToJournal();
    QVERIFY(!recorder.hasRows());
    QCOMPARE(filesLeft().size(), 1);
    QVERIFY(QFile::remove(folder() + QLatin1Char('/') + filesLeft().first()));
    {
        TestRecorder destroyed;
        destroyed.begin(names);
        destroyed.sink()->add(rowNumber(0));
    }
    QCOMPARE(filesLeft().size(), 1);
    JournalReader reader(contents(folder() + QLatin1Char('/') + filesLeft().first()));
    QCOMPARE(reader.rowCount(), qint64(1));
}

void TestJournal::aFolderThatCannotBeMadeSwitchesItOff()
{
    startAfresh();
    writeFile(m_folder->filePath(QStringLiteral("file")), "in the way");
    qputenv("VEXA_JOURNAL_FOLDER", m_folder->filePath(QStringLiteral("file/journal")).toUtf8());
    TestRecorder recorder;
    recorder.begin(names);
    for (int i = 0; i < 3; ++i) {
        recorder.sink()->add(rowNumber(i));
        recorder.add(rowNumber(i));
    }
    QVERIFY(recorder.write());
    QCOMPARE(contents(made(recordPath())), recordText(3));
    QCOMPARE(recoverJournals(), QStringList());
}

void TestJournal::offByVariable()
{
    startAfresh();
    qputenv("VEXA_JOURNAL_FOLDER", "off");
    QCOMPARE(journalFolder(), QString());
    qunsetenv("VEXA_JOURNAL_FOLDER");
    QVERIFY(journalFolder().endsWith(QLatin1String("/TessalyNDIVexa/journal")));
}

void TestJournal::manyRowsAtOnceAreAllThere()
{
    startAfresh();
    constexpr int count = 10000;
    {
        Journal journal(folder(), names, startOf(0));
        for (int i = 0; i < count; ++i)
            journal.sink()->add(rowNumber(i));
        QVERIFY(!journal.isIncomplete());
    }
    JournalReader reader(contents(folder() + QLatin1Char('/') + filesLeft().first()));
    QCOMPARE(reader.rowCount(), qint64(count));
    QVERIFY(!reader.isDamaged());
    QCOMPARE(reader.start().startTime, startOf(0));
    int next = 0;
    for (Measurement row; reader.nextRow(&row);)
        QCOMPARE(row.timeMs, rowNumber(next++).timeMs);
}

void TestJournal::recoveredRecordEqualsTheNormalOne()
{
    startAfresh();
    leave(QStringLiteral("1.journal"), journalBytes(nobody, startOf(1), 50));
    const QVector<RecoveredJournal> recovered = recoverJournalsIn(folder());
    QCOMPARE(recovered.size(), 1);
    QCOMPARE(recovered.first().recordPath, recordFolder() + QLatin1String("/vexa_2031_02_03_040606.csv"));
    QCOMPARE(recovered.first().rows, qint64(50));
    QVERIFY(!recovered.first().hasGaps);
    QCOMPARE(contents(made(recovered.first().recordPath)), recordText(50));
    QCOMPARE(filesLeft(), QStringList());
    // No other file is left in the folder of the records.
    QCOMPARE(QDir(recordFolder()).entryList({QStringLiteral("*.part")}, QDir::AllEntries | QDir::Hidden).size(), 0);
}

void TestJournal::aTakenNameGetsANumber()
{
    startAfresh();
    QVERIFY(createRecordFile(recordName(startOf(2))));
    const QString taken = made(recordPath());
    leave(QStringLiteral("1.journal"), journalBytes(nobody, startOf(2), 5));
    leave(QStringLiteral("2.journal"), journalBytes(nobody, startOf(2), 6));
    const QVector<RecoveredJournal> recovered = recoverJournalsIn(folder());
    QCOMPARE(recovered.size(), 2);
    const QString name = recordFolder() + QLatin1String("/vexa_2031_02_03_040706");
    QCOMPARE(made(recovered.at(0).recordPath), name + QLatin1String("_2.csv"));
    QCOMPARE(made(recovered.at(1).recordPath), name + QLatin1String("_3.csv"));
    QCOMPARE(contents(recovered.at(0).recordPath), recordText(5));
    QCOMPARE(contents(recovered.at(1).recordPath), recordText(6));
    QCOMPARE(contents(taken), QByteArray());
    QCOMPARE(recordPath(), taken); // the current record is another matter
}

void TestJournal::theSameRecordIsNotMadeTwice()
{
    startAfresh();
    // As when the process is killed between the record and the end of the journal.
    const QByteArray bytes = journalBytes(nobody, startOf(3), 5);
    leave(QStringLiteral("1.journal"), bytes);
    const QString first = made(recoverJournalsIn(folder()).value(0).recordPath);
    leave(QStringLiteral("1.journal"), bytes);
    QCOMPARE(recoverJournalsIn(folder()).value(0).recordPath, first);
    QCOMPARE(filesLeft(), QStringList());
    QVERIFY(!QFile::exists(QString(first).replace(QLatin1String(".csv"), QLatin1String("_2.csv"))));
}

void TestJournal::noRowsNoRecord()
{
    startAfresh();
    leave(QStringLiteral("1.journal"), journalBytes(nobody, startOf(4), 0));
    QVERIFY(recoverJournalsIn(folder()).isEmpty());
    QCOMPARE(filesLeft(), QStringList());
    QVERIFY(!QFile::exists(recordFolder() + QLatin1String("/vexa_2031_02_03_040906.csv")));
}

void TestJournal::runningTestsAreLeftAlone()
{
    startAfresh();
    Journal journal(folder(), names, startOf(5));
    journal.sink()->add(rowNumber(0));
    QTRY_COMPARE(filesLeft().size(), 1);
    const QStringList before = filesLeft();
    for (int i = 0; i < 20; ++i)
        QVERIFY(recoverJournalsIn(folder()).isEmpty());
    QCOMPARE(filesLeft(), before);
    journal.sink()->add(rowNumber(1));
    journal.end(Journal::End::Keep);
    JournalReader reader(contents(folder() + QLatin1Char('/') + before.first()));
    QCOMPARE(reader.rowCount(), qint64(2));
}

void TestJournal::anotherProcessOfTheSameNumberIsNotTheOwner()
{
    startAfresh();
    ProcessIdentity own = ownProcess();
    QVERIFY(isProcessAlive(own));
    QVERIFY(!isProcessAlive(nobody));
    leave(QStringLiteral("1.journal"), journalBytes(own, startOf(6), 1));
    QVERIFY(recoverJournalsIn(folder()).isEmpty());
    ++own.startToken;
    leave(QStringLiteral("1.journal"), journalBytes(own, startOf(6), 1));
    const QVector<RecoveredJournal> recovered = recoverJournalsIn(folder());
    QCOMPARE(recovered.size(), 1);
    made(recovered.first().recordPath);
}

void TestJournal::twoProgramsTakeItOnce()
{
    startAfresh();
    for (int round = 0; round < 5; ++round) {
        for (int i = 0; i < 5; ++i)
            leave(QStringLiteral("%1.journal").arg(i), journalBytes(nobody, startOf(10 + i), 20 + i));
        QVector<RecoveredJournal> one;
        QVector<RecoveredJournal> other;
        std::thread thread([&one, this] { one = recoverJournalsIn(folder()); });
        other = recoverJournalsIn(folder());
        thread.join();
        // Whoever came too late to one of them has left it to the other.
        const QVector<RecoveredJournal> all = one + other;
        QCOMPARE(all.size(), 5);
        QStringList paths;
        for (const RecoveredJournal &journal : all) {
            paths.append(made(journal.recordPath));
            const int number = int(journal.rows) - 20;
            QCOMPARE(contents(journal.recordPath), recordText(20 + number));
        }
        QCOMPARE(paths.removeDuplicates(), 0);
        QCOMPARE(filesLeft(), QStringList());
        removeRecords();
    }
}

void TestJournal::aRecordThatCannotBeWrittenKeepsTheJournal()
{
    startAfresh();
#if defined(Q_OS_WIN)
    QSKIP("the documents folder is the user's own");
#endif
    const QTemporaryDir home;
    writeFile(home.filePath(QStringLiteral("Documents")), "in the way");
    qputenv("HOME", home.path().toUtf8());
    leave(QStringLiteral("1.journal"), journalBytes(nobody, startOf(7), 5));
    const QVector<RecoveredJournal> recovered = recoverJournalsIn(folder());
    QVERIFY(m_home.use());
    QCOMPARE(recovered.size(), 1);
    QCOMPARE(recovered.first().recordPath, QString());
    QCOMPARE(filesLeft(), QStringList(QStringLiteral("1.journal")));
    // At a later start it can be.
    QCOMPARE(contents(made(recoverJournalsIn(folder()).value(0).recordPath)), recordText(5));
}

void TestJournal::whatCannotBeReadIsPutAside_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<int>("told");
    const QByteArray good = journalBytes(nobody, startOf(8), 30);
    const QStringList itself{QStringLiteral("1.journal")};
    const QStringList aside{QStringLiteral("1.journal.bad")};
    QTest::newRow("no good block") << good.left(40).repeated(50) << aside << 1;
    QTest::newRow("noise") << QByteArray("VXJB and other noise").repeated(300) << aside << 1;
    QTest::newRow("a start under way") << good.left(30) << itself << 0; // its owner may be about to lock it
    QTest::newRow("empty, just made") << QByteArray() << itself << 0;
}

void TestJournal::whatCannotBeReadIsPutAside()
{
    startAfresh();
    QFETCH(QByteArray, bytes);
    QFETCH(int, told);
    leave(QStringLiteral("1.journal"), bytes);
    QCOMPARE(recoverJournals().size(), told);
    QTEST(filesLeft(), "left");
    QCOMPARE(recoverJournals().size(), 0); // once
}

void TestJournal::whatIsAsideGoesAfterThirtyDays()
{
    startAfresh();
    constexpr int dayS = 24 * 3600;
    setAge(leave(QStringLiteral("1.journal"), QByteArray(2000, 'x')), 40 * dayS);
    setAge(leave(QStringLiteral("2.journal.bad"), QByteArray(2000, 'x')), 30 * dayS + 60);
    setAge(leave(QStringLiteral("3.journal.bad"), QByteArray(2000, 'x')), 30 * dayS - 60);
    setAge(leave(QStringLiteral("4.bad"), QByteArray(2000, 'x')), 40 * dayS);
    QCOMPARE(recoverJournals().size(), 1);
    const QStringList left{QStringLiteral("1.journal.bad"), QStringLiteral("3.journal.bad"), QStringLiteral("4.bad")};
    QCOMPARE(filesLeft(), left);
    QCOMPARE(recoverJournals().size(), 0); // its days count from now on
    QCOMPARE(filesLeft(), left);
}

void TestJournal::aSpoiltStartGivesItsRows_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("haveNames");
    const QString named =
        QStringLiteral("%1-4711-1.journal").arg(startInThePast.toMSecsSinceEpoch(), 14, 10, QLatin1Char('0'));
    QTest::newRow("start time by the name") << named << true;
    QTest::newRow("names lost, too") << named << false;
    QTest::newRow("start time by the file") << QStringLiteral("1.journal") << true;
}

void TestJournal::aSpoiltStartGivesItsRows()
{
    QFETCH(QString, name);
    QFETCH(bool, haveNames);
    startAfresh();
    QByteArray bytes = journalBytes(nobody, startInThePast, 20);
    bytes[12] = char(0x55);
    const int namesAt = bytes.indexOf("VXJB", 1);
    if (!haveNames)
        bytes[namesAt + 30] = char(~bytes.at(namesAt + 30));
    setChanged(leave(name, bytes), startInThePast);
    const QStringList lines = recoverJournals();
    const QString path = made(recordFolder() + QLatin1Char('/') + recordName(startInThePast) + QLatin1String(".csv"));
    QCOMPARE(lines, QStringList(QStringLiteral("Recovered the record of an interrupted test (%1), 20 rows%2, the "
                                               "beginning of its journal is damaged.")
                                    .arg(QDir::toNativeSeparators(path),
                                         haveNames ? QString() : QStringLiteral(", some are missing"))));
    QByteArray expected = recordText(20);
    if (!haveNames) {
        for (int i = 0; i < names.size(); ++i)
            expected.replace('\n' + names.at(i).toUtf8() + ',', "\nSource " + QByteArray::number(i + 1) + ',');
    }
    QCOMPARE(contents(path), expected);
    QCOMPARE(filesLeft(), QStringList());
}

void TestJournal::aStartThatNobodyGoesOnWithGoesAway()
{
    startAfresh();
    setAge(leave(QStringLiteral("1.journal"), journalBytes(nobody, startOf(9), 1).left(30)), 120);
    QCOMPARE(recoverJournals().size(), 0);
    QCOMPARE(filesLeft(), QStringList());
}

void TestJournal::linesTellTheUser()
{
    startAfresh();
    QCOMPARE(recoverJournals(), QStringList());
    const QString at = QDir::toNativeSeparators(folder());
    const QString records = QDir::toNativeSeparators(recordFolder() + QLatin1Char('/'));
    leave(QStringLiteral("1.journal"), journalBytes(nobody, startOf(20), 3));
    leave(QStringLiteral("2.journal"), journalBytes(nobody, startOf(21), 2, 9));
    leave(QStringLiteral("3.journal"), QByteArray(2000, 'x'));
    made(recordFolder() + QLatin1String("/vexa_2031_02_03_042506.csv"));
    made(recordFolder() + QLatin1String("/vexa_2031_02_03_042606.csv"));
    QCOMPARE(recoverJournals(),
             (QStringList{QStringLiteral("Recovered the record of an interrupted test (%1vexa_2031_02_03_042506.csv), "
                                         "3 rows.")
                              .arg(records),
                          QStringLiteral("Recovered the record of an interrupted test (%1vexa_2031_02_03_042606.csv), "
                                         "2 rows, some are missing.")
                              .arg(records),
                          QStringLiteral("The journal of an interrupted test is damaged and was put aside for 30 "
                                         "days (%1).")
                              .arg(at + QDir::separator() + QLatin1String("3.journal.bad"))}));
}

void TestJournal::recoveryInTheBackground()
{
    startAfresh();
    leave(QStringLiteral("1.journal"), journalBytes(nobody, startOf(22), 3));
    made(recordFolder() + QLatin1String("/vexa_2031_02_03_042706.csv"));
    QStringList told;
    QThread *teller = nullptr;
    const BackgroundRecovery recovery([&told, &teller](const QStringList &lines) {
        told += lines;
        teller = QThread::currentThread();
    });
    QTRY_COMPARE(told.size(), 1);
    QCOMPARE(teller, thread());
}

void TestJournal::recoveryIsWaitedFor()
{
    startAfresh();
    for (int i = 0; i < 10; ++i) {
        leave(QStringLiteral("%1.journal").arg(i), journalBytes(nobody, startOf(30 + i), 3));
        made(recordFolder() + QLatin1Char('/') + recordName(startOf(30 + i)) + QLatin1String(".csv"));
    }
    int told = 0;
    {
        const BackgroundRecovery recovery([&told](const QStringList &) { ++told; });
    }
    // One at least was dealt with, and none is half done.
    const QStringList left = filesLeft();
    QVERIFY(left.size() < 10);
    for (int i = 0; i < 10; ++i) {
        const QString record = recordFolder() + QLatin1Char('/') + recordName(startOf(30 + i)) + QLatin1String(".csv");
        QCOMPARE(QFile::exists(record), !left.contains(QStringLiteral("%1.journal").arg(i)));
    }
    QCoreApplication::processEvents(); // what the thread sent at its end has nobody to go to
    QCOMPARE(told, 0);
    BackgroundRecovery rest([&told](const QStringList &) { ++told; });
    QTRY_COMPARE(filesLeft(), QStringList());
}

QTEST_GUILESS_MAIN(TestJournal)
#include "tst_journal.moc"
