// Where the journal meets the system: links, foreign folders, full disks.
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

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
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
        recorder.begin({QStringLiteral("CAM")});
        for (int i = 0; i < 100; ++i) {
            recorder.sink()->add(someRow);
            recorder.add(someRow);
        }
        QTRY_COMPARE(filesIn(folder.filePath(QStringLiteral("journal"))).size(), 1);
        QTest::qWait(500); // two writes, of which the first fails
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
    {
        const FileSizeLimit limit(1000);
        QVERIFY(!recorder.write());
    }
    // The record is cut off, the journal is not: it stays.
    QCOMPARE(filesIn(journal).size(), 1);
    QFile file(journal + QLatin1Char('/') + filesIn(journal).first());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(JournalReader(file.readAll()).rowCount(), qint64(100));
}

void TestJournalLinux::linksAndPipesAreNotRecovered()
{
    const QTemporaryDir folder;
    const QString target = folder.filePath(QStringLiteral("target"));
    QFile file(target);
    QVERIFY(file.open(QIODevice::WriteOnly));
    JournalEncoder encoder;
    QByteArray block;
    file.write(encoder.start({{999999999, 1}, QDateTime::currentDateTime(), {QStringLiteral("CAM")}}));
    encoder.rows({someRow}, 0, &block);
    file.write(block);
    file.close();
    const QString journals = folder.filePath(QStringLiteral("journal"));
    QVERIFY(QDir().mkpath(journals));
    QVERIFY(QFile::link(target, journals + QLatin1String("/1.journal")));
    QCOMPARE(mkfifo(QFile::encodeName(journals + QLatin1String("/2.journal")).constData(), 0600), 0);
    QVERIFY(QDir().mkpath(journals + QLatin1String("/3.journal")));
    QVERIFY(recoverJournalsIn(journals).isEmpty());
    QVERIFY(QFile::exists(target));
    QCOMPARE(filesIn(journals).size(), 3);
    JournalFile direct; // past the listing of the folder
    QVERIFY(!direct.openLeft(journals, QStringLiteral("1.journal")));
    QVERIFY(!direct.openLeft(journals, QStringLiteral("2.journal")));
    QVERIFY(!direct.openLeft(journals, QStringLiteral("3.journal")));
}

void TestJournalLinux::aFolderThatCannotBeChangedIsToldOnce()
{
    if (geteuid() == 0)
        QSKIP("root can change any folder");
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("1.journal")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    JournalEncoder encoder;
    QByteArray block;
    file.write(encoder.start({{999999999, 1}, QDateTime::currentDateTime(), {QStringLiteral("CAM")}}));
    encoder.rows({someRow}, 0, &block);
    file.write(block);
    file.close();
    chmod(QFile::encodeName(folder.path()).constData(), 0500);
    QCOMPARE(recoverJournalsIn(folder.path()).size(), 1);
    QCOMPARE(recoverJournalsIn(folder.path()).size(), 0);
    chmod(QFile::encodeName(folder.path()).constData(), 0700);
}

QTEST_GUILESS_MAIN(TestJournalLinux)
#include "tst_journal_linux.moc"
