// Where the journal meets the system: links, foreign folders, full disks.
#include "app/journal.h"
#include "app/journalqueue.h"
#include "app/journalrecovery.h"
#include "app/recordfile.h"
#include "app/testrecorder.h"
#include "tests/support/testbase.h"
#include "tests/support/testhome.h"
#include "tests/support/testrecord.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const Measurement someRow{59.94, 59.0, 16, 1920, 1080, 16, 0, 0};

/// No file of this process may grow beyond this, while the object lives; as on a full disk.
class FileSizeLimit final {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN); // as the program does
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_before = {};
};

/// The process gets no more memory than it has and this, while the object lives.
class MemoryLimit final {
public:
    explicit MemoryLimit(rlim_t moreBytes)
    {
        QFile file(QStringLiteral("/proc/self/statm"));
        if (!file.open(QIODevice::ReadOnly))
            return;
        const rlim_t pages = file.readAll().split(' ').constFirst().toULong();
        getrlimit(RLIMIT_AS, &m_before);
        const rlimit limit{pages * rlim_t(sysconf(_SC_PAGESIZE)) + moreBytes, m_before.rlim_max};
        m_isSet = setrlimit(RLIMIT_AS, &limit) == 0;
    }
    ~MemoryLimit()
    {
        if (m_isSet)
            setrlimit(RLIMIT_AS, &m_before);
    }
    MemoryLimit(const MemoryLimit &) = delete;
    MemoryLimit &operator=(const MemoryLimit &) = delete;
    bool isSet() const { return m_isSet; }

private:
    rlimit m_before = {};
    bool m_isSet = false;
};

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
}

QStringList recordsAndParts()
{
    return QDir(recordFolder()).entryList({QStringLiteral("*.csv*")}, QDir::AllEntries | QDir::Hidden);
}

/// As a process that is gone has left it, of one row. Its test began that many seconds into a certain minute.
void leaveJournal(const QString &path, int second)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    JournalEncoder encoder;
    QByteArray block;
    file.write(encoder.start({{999999999, 1}, QDateTime({2031, 2, 3}, {4, 5, second}), {QStringLiteral("CAM")}}));
    encoder.rows({someRow}, 0, &block);
    file.write(block);
}

/// A test of a hundred rows, in the record and in the journal.
void begin(TestRecorder *recorder)
{
    recorder->begin({QStringLiteral("CAM")});
    for (int i = 0; i < 100; ++i) {
        recorder->sink()->add(someRow);
        recorder->add(someRow);
    }
}

/// Whether the journal of a running test takes no rows any more: it could not be written.
bool hasJournalEnded(const TestRecorder &recorder)
{
    const auto queue = std::dynamic_pointer_cast<JournalQueue>(recorder.sink());
    return queue && !queue->isOpen();
}

/// Whether a journal writes nothing into this folder and says that it is incomplete.
bool isTurnedDown(const QString &folder)
{
    Journal journal(folder, {}, QDateTime::currentDateTime());
    const bool isOff = QTest::qWaitFor([&journal] { return journal.isIncomplete(); });
    journal.end(Journal::End::Keep);
    return isOff && filesIn(folder).isEmpty();
}

} // namespace

class TestJournalLinux final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void folderAndFileArePrivate();
    void aFolderThatIsALinkIsNotUsed();
    void aFolderOfSomebodyElseIsNotUsed();
    void aFullDiskSwitchesItOff();
    void aFullDiskAtTheRecordToo();
    void lostRowsAreNoReasonToThrowAJournalAway();
    void aPieceOfARecordIsKeptBesideACutOffJournal();
    void aFailedWriteLeavesNoHole();
    void aSmallJournalNeedsLittleMemory();
    void whatCannotBeReadDoesNotStopTheOthers();
    void linksAndPipesAreNotRecovered();
    void aFolderThatCannotBeChangedIsToldOnce();

private:
    TestHome m_home;
};

void TestJournalLinux::initTestCase()
{
    QVERIFY(m_home.use());
}

void TestJournalLinux::folderAndFileArePrivate()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("cache/journal"));
    QVERIFY(QDir().mkpath(path));
    chmod(QFile::encodeName(path).constData(), 0777); // from somewhere else
    Journal journal(path, {}, QDateTime::currentDateTime());
    QTRY_COMPARE(filesIn(path).size(), 1);
    struct stat status = {};
    QCOMPARE(stat(QFile::encodeName(path).constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0700U);
    QCOMPARE(stat(QFile::encodeName(path + QLatin1Char('/') + filesIn(path).first()).constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0600U);
}

void TestJournalLinux::aFolderThatIsALinkIsNotUsed()
{
    const QTemporaryDir folder;
    const QString target = folder.filePath(QStringLiteral("target"));
    QVERIFY(QDir().mkpath(target));
    const QString link = folder.filePath(QStringLiteral("journal"));
    QVERIFY(QFile::link(target, link));
    QVERIFY(isTurnedDown(link));
}

void TestJournalLinux::aFolderOfSomebodyElseIsNotUsed()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("journal"));
    QVERIFY(QDir().mkpath(path));
    if (chown(QFile::encodeName(path).constData(), 12345, 12345) != 0)
        QSKIP("only root can give files away");
    QVERIFY(isTurnedDown(path));
}

void TestJournalLinux::aFullDiskSwitchesItOff()
{
    const QTemporaryDir folder;
    qputenv("VEXA_JOURNAL_FOLDER", folder.filePath(QStringLiteral("journal")).toUtf8());
    TestRecorder recorder;
    {
        const FileSizeLimit limit(1000);
        begin(&recorder);
        QTRY_VERIFY(hasJournalEnded(recorder));
        QCOMPARE(filesIn(folder.filePath(QStringLiteral("journal"))).size(), 1);
        // What was whole stays.
        QFile file(folder.filePath(QStringLiteral("journal/"))
                   + filesIn(folder.filePath(QStringLiteral("journal"))).first());
        QVERIFY(file.open(QIODevice::ReadOnly));
        JournalReader reader(file.readAll());
        QCOMPARE(reader.kind(), JournalReader::Kind::Journal);
        QVERIFY(!reader.isDamaged());
    }
    QVERIFY(recorder.write());
    QCOMPARE(filesIn(folder.filePath(QStringLiteral("journal"))), QStringList());
    QFile record(recordPath());
    QVERIFY(record.open(QIODevice::ReadOnly));
    QCOMPARE(record.readAll().count('\n'), 101);
}

void TestJournalLinux::aFullDiskAtTheRecordToo()
{
    const QTemporaryDir folder;
    qputenv("VEXA_JOURNAL_FOLDER", folder.filePath(QStringLiteral("journal")).toUtf8());
    TestRecorder recorder;
    recorder.begin({QStringLiteral("CAM")});
    for (int i = 0; i < 100; ++i) {
        recorder.sink()->add(someRow);
        recorder.add(someRow);
    }
    const QString journal = folder.filePath(QStringLiteral("journal"));
    QTRY_VERIFY(!filesIn(journal).isEmpty()
                && QFileInfo(journal + QLatin1Char('/') + filesIn(journal).first()).size() > 4000);
    const QStringList before = recordsAndParts();
    {
        const FileSizeLimit limit(1000);
        QVERIFY(!recorder.write());
    }
    // The record is cut off, the journal is not: it stays, the record does not.
    const QStringList after = recordsAndParts();
    for (const QString &name : after)
        QVERIFY2(before.contains(name), qPrintable(name));
    QCOMPARE(recordPath(), QString());
    QCOMPARE(filesIn(journal).size(), 1);
    QFile file(journal + QLatin1Char('/') + filesIn(journal).first());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(JournalReader(file.readAll()).rowCount(), qint64(100));
}

void TestJournalLinux::lostRowsAreNoReasonToThrowAJournalAway()
{
    const QTemporaryDir folder;
    const QString journal = folder.filePath(QStringLiteral("journal"));
    qputenv("VEXA_JOURNAL_FOLDER", journal.toUtf8());
    TestRecorder recorder;
    recorder.begin({QStringLiteral("CAM")});
    const auto queue = std::static_pointer_cast<JournalQueue>(recorder.sink());
    qint64 added = 0;
    for (; queue->lostRows() == 0; ++added)
        queue->add(someRow);
    for (int i = 0; i < 100; ++i)
        recorder.add(someRow);
    const qint64 kept = added - 1;
    QTRY_VERIFY(filesIn(journal).size() == 1
                && QFileInfo(journal + QLatin1Char('/') + filesIn(journal).first()).size() > kept * journalRowBytes);
    {
        const FileSizeLimit limit(1000);
        QVERIFY(!recorder.write());
    }
    QCOMPARE(filesIn(journal).size(), 1);
    QFile file(journal + QLatin1Char('/') + filesIn(journal).first());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(JournalReader(file.readAll()).rowCount(), kept);
}

void TestJournalLinux::aPieceOfARecordIsKeptBesideACutOffJournal()
{
    const QTemporaryDir folder;
    const QString journal = folder.filePath(QStringLiteral("journal"));
    qputenv("VEXA_JOURNAL_FOLDER", journal.toUtf8());
    const QStringList before = recordsAndParts();
    TestRecorder recorder;
    begin(&recorder); // 100 rows
    const auto journalBytes = [&journal] {
        return filesIn(journal).isEmpty() ? 0 : QFileInfo(journal + QLatin1Char('/') + filesIn(journal).first()).size();
    };
    QTRY_VERIFY(journalBytes() > 100 * journalRowBytes);
    {
        const FileSizeLimit limit(5000);
        for (int i = 0; i < 200; ++i) {
            recorder.sink()->add(someRow);
            recorder.add(someRow);
        }
        QTRY_VERIFY(hasJournalEnded(recorder));
        QVERIFY(!recorder.write());
    }
    QCOMPARE(recordPath(), QString());
    QCOMPARE(filesIn(journal).size(), 1);
    QFile file(journal + QLatin1Char('/') + filesIn(journal).first());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(JournalReader(file.readAll()).rowCount(), qint64(100));
    QStringList made = recordsAndParts();
    for (const QString &name : before)
        made.removeAll(name);
    QCOMPARE(made.size(), 1);
    QVERIFY2(made.first().endsWith(QLatin1String(".csv.part")), qPrintable(made.first()));
    const TestRecord part = TestRecord::read(recordFolder() + QLatin1Char('/') + made.first());
    QCOMPARE(part.problem, QString());
    QVERIFY2(part.rows.size() > 100 && part.rows.size() < 300, qPrintable(QString::number(part.rows.size())));
}

void TestJournalLinux::aFailedWriteLeavesNoHole()
{
    const QTemporaryDir folder;
    LockedFile file;
    QVERIFY(file.create(folder.filePath(QStringLiteral("journal")), QStringLiteral("1.journal")));
    QVERIFY(file.append(QByteArray(500, 'a')));
    {
        const FileSizeLimit limit(1000);
        QVERIFY(!file.append(QByteArray(1000, 'b')));
        QCOMPARE(file.sizeBytes(), qint64(500));
    }
    QVERIFY(file.append(QByteArray(300, 'c')));
    QFile written(file.path());
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll(), QByteArray(500, 'a') + QByteArray(300, 'c'));
}

void TestJournalLinux::aSmallJournalNeedsLittleMemory()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer takes memory of its own");
#endif
    const QTemporaryDir folder;
    leaveJournal(folder.filePath(QStringLiteral("1.journal")), 10);
    const MemoryLimit limit(rlim_t(256) << 20);
    QVERIFY(limit.isSet());
    QCOMPARE(recoverJournalsIn(folder.path()).size(), 1);
}

void TestJournalLinux::whatCannotBeReadDoesNotStopTheOthers()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer ends the process when there is no memory");
#endif
    const QTemporaryDir folder;
    qputenv("VEXA_JOURNAL_FOLDER", folder.path().toUtf8());
    leaveJournal(folder.filePath(QStringLiteral("1.journal")), 20);
    leaveJournal(folder.filePath(QStringLiteral("2.journal")), 21);
    QVERIFY(QFile::resize(folder.filePath(QStringLiteral("2.journal")), qint64(900) << 20)); // has no bytes of its own
    leaveJournal(folder.filePath(QStringLiteral("3.journal")), 22);
    const MemoryLimit limit(rlim_t(256) << 20);
    QVERIFY(limit.isSet());
    const QStringList lines = recoverJournals();
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines.first().contains(QLatin1String("vexa_2031_02_03_040520.csv")), qPrintable(lines.first()));
    QVERIFY2(lines.last().contains(QLatin1String("vexa_2031_02_03_040522.csv")), qPrintable(lines.last()));
    QCOMPARE(filesIn(folder.path()), QStringList(QStringLiteral("2.journal"))); // for the next start
}

void TestJournalLinux::linksAndPipesAreNotRecovered()
{
    const QTemporaryDir folder;
    const QString target = folder.filePath(QStringLiteral("target"));
    leaveJournal(target, 30);
    const QString journals = folder.filePath(QStringLiteral("journal"));
    QVERIFY(QDir().mkpath(journals));
    QVERIFY(QFile::link(target, journals + QLatin1String("/1.journal")));
    QCOMPARE(mkfifo(QFile::encodeName(journals + QLatin1String("/2.journal")).constData(), 0600), 0);
    QVERIFY(QDir().mkpath(journals + QLatin1String("/3.journal")));
    QVERIFY(recoverJournalsIn(journals).isEmpty());
    QVERIFY(QFile::exists(target));
    QCOMPARE(filesIn(journals).size(), 3);
    LockedFile direct; // past the listing of the folder
    QVERIFY(!direct.openLeft(journals, QStringLiteral("1.journal")));
    QVERIFY(!direct.openLeft(journals, QStringLiteral("2.journal")));
    QVERIFY(!direct.openLeft(journals, QStringLiteral("3.journal")));
}

void TestJournalLinux::aFolderThatCannotBeChangedIsToldOnce()
{
    if (geteuid() == 0)
        QSKIP("root can change any folder");
    const QTemporaryDir folder;
    leaveJournal(folder.filePath(QStringLiteral("1.journal")), 31);
    chmod(QFile::encodeName(folder.path()).constData(), 0500);
    QCOMPARE(recoverJournalsIn(folder.path()).size(), 1);
    QCOMPARE(recoverJournalsIn(folder.path()).size(), 0);
    chmod(QFile::encodeName(folder.path()).constData(), 0700);
}

QTEST_GUILESS_MAIN(TestJournalLinux)
#include "tst_journal_linux.moc"
