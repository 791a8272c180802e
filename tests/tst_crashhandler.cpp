#include "crash/dumpmessage.h"
#include "crash/qbreakpadhandler.h"
#include "crash/qbreakpadhttpuploader.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <cstring>
#include <memory>
#include <vector>

/// The folder of the dumps and what is sent from it. What a crash leaves there is the matter of tst_crashconsole.
class TestCrashHandler final : public TestBase {
    Q_OBJECT

private slots:
    void nothingIsSetAtFirst();
    void thereIsOneForAllThreads();
    void folderIsMadeWithItsParents();
    void pathIsCleaned();
    void relativePathStandsUnderTheProgram();
    void secondFolderTakesThePlaceOfTheFirst();
    void foldersOneAfterAnother();
    void linkInTheWayChangesNothing();
    void fileInTheWayChangesNothing();
    void folderThatCannotBeMadeChangesNothing();
    void nothingIsSentFromAnEmptyFolder();
    void oneUploaderForEachDump();
    void lineTellsOfTheDump();
    void lineThatDoesNotFitIsCut();

private:
    QBreakpadHandler &handler() { return *QBreakpadHandler::instance(); }
    QString path(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    void write(const QString &name) const
    {
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write("MDMP"), qint64(4));
    }
    static QByteArray refusal(const QString &path)
    {
        return "Failed to set dump path which not exists: " + path.toLocal8Bit();
    }

    QTemporaryDir m_folder;
};

void TestCrashHandler::nothingIsSetAtFirst()
{
    QVERIFY(handler().dumpPath().isEmpty());
    QVERIFY(handler().uploadUrl().isEmpty());
    handler().sendDumps();
    QVERIFY(handler().findChildren<QBreakpadHttpUploader *>().isEmpty());
}

void TestCrashHandler::thereIsOneForAllThreads()
{
    std::vector<QBreakpadHandler *> seen(8, nullptr);
    std::vector<std::unique_ptr<QThread>> threads;
    threads.reserve(seen.size());
    for (QBreakpadHandler *&place : seen)
        threads.emplace_back(QThread::create([&place] { place = QBreakpadHandler::instance(); }));
    for (const auto &thread : threads)
        thread->start();
    for (const auto &thread : threads)
        QVERIFY(thread->wait(30000));
    for (const QBreakpadHandler *one : seen)
        QCOMPARE(one, QBreakpadHandler::instance());
}

void TestCrashHandler::folderIsMadeWithItsParents()
{
    handler().setDumpPath(path("a/b/crashes"));
    QCOMPARE(handler().dumpPath(), path("a/b/crashes"));
    QVERIFY(QDir(path("a/b/crashes")).exists());
    QVERIFY(QDir(path("a/b/crashes")).isEmpty());
}

void TestCrashHandler::pathIsCleaned()
{
    handler().setDumpPath(path("c//d/../crashes/"));
    QCOMPARE(handler().dumpPath(), path("c/crashes"));
}

void TestCrashHandler::relativePathStandsUnderTheProgram()
{
    const QString name = QStringLiteral("crashhandler-dumps-%1").arg(QCoreApplication::applicationPid());
    handler().setDumpPath(QStringLiteral("./x/../") + name);
    const QString expected = QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
    QCOMPARE(handler().dumpPath(), expected);
    QVERIFY(QDir(expected).exists());
    handler().setDumpPath(path("elsewhere"));
    QVERIFY(QDir(expected).removeRecursively());
}

void TestCrashHandler::secondFolderTakesThePlaceOfTheFirst()
{
    handler().setDumpPath(path("first"));
    handler().setDumpPath(path("second"));
    QCOMPARE(handler().dumpPath(), path("second"));
    QVERIFY(QDir(path("first")).exists());
}

/// Each folder has a writer with a thread of its own; the one before must be gone without leaving a lock behind.
void TestCrashHandler::foldersOneAfterAnother()
{
    for (int i = 0; i < 300; ++i)
        handler().setDumpPath(path(i % 2 == 0 ? "first" : "second"));
    QCOMPARE(handler().dumpPath(), path("second"));
}

void TestCrashHandler::linkInTheWayChangesNothing()
{
#ifdef Q_OS_WIN
    QSKIP("only an administrator makes links there");
#endif
    handler().setDumpPath(path("good"));
    QVERIFY(QDir().mkpath(path("target")));
    for (const char *target : {"target", "nowhere"}) {
        QVERIFY(QFile::link(path(target), path("link")));
        for (const char *link : {"link", "link/"}) {
            const QByteArray refusal = "Failed to set dump path which is a link: " + path(link).toLocal8Bit();
            QTest::ignoreMessage(QtDebugMsg, refusal.constData());
            handler().setDumpPath(path(link));
            QCOMPARE(handler().dumpPath(), path("good"));
        }
        QVERIFY(QFile::remove(path("link")));
    }
}

void TestCrashHandler::fileInTheWayChangesNothing()
{
    handler().setDumpPath(path("good"));
    write(path("file"));
    QTest::ignoreMessage(QtDebugMsg, refusal(path("file")).constData());
    handler().setDumpPath(path("file"));
    QCOMPARE(handler().dumpPath(), path("good"));
}

void TestCrashHandler::folderThatCannotBeMadeChangesNothing()
{
    handler().setDumpPath(path("good"));
    write(path("parent"));
    QTest::ignoreMessage(QtDebugMsg, refusal(path("parent/crashes")).constData());
    handler().setDumpPath(path("parent/crashes"));
    QCOMPARE(handler().dumpPath(), path("good"));
}

void TestCrashHandler::nothingIsSentFromAnEmptyFolder()
{
    handler().setDumpPath(path("empty"));
    write(path("empty/notes.txt"));
    QVERIFY(QDir().mkpath(path("empty/folder.dmp")));
    handler().sendDumps();
    QVERIFY(handler().findChildren<QBreakpadHttpUploader *>().isEmpty());
}

void TestCrashHandler::oneUploaderForEachDump()
{
    expectWarning(QStringLiteral("m_reply is not NULL")); // they are taken away before they have an answer
    handler().setDumpPath(path("two"));
    handler().setUploadUrl(QUrl(QStringLiteral("http://127.0.0.1:9/upload")));
    QCOMPARE(handler().uploadUrl(), QUrl(QStringLiteral("http://127.0.0.1:9/upload")));
    QCOMPARE(handler().property("uploadUrl").toUrl(), handler().uploadUrl());
    write(path("two/one.dmp"));
    write(path("two/other.dmp"));
    QTest::ignoreMessage(QtDebugMsg, "Sending one.dmp");
    QTest::ignoreMessage(QtDebugMsg, "Sending other.dmp");
    handler().sendDumps();
    const QList<QBreakpadHttpUploader *> uploaders = handler().findChildren<QBreakpadHttpUploader *>();
    QCOMPARE(uploaders.size(), 2);
    QCOMPARE(uploaders.first()->parent(), &handler());
    qDeleteAll(uploaders);
    QVERIFY(QFile::exists(path("two/one.dmp")));
    QVERIFY(QFile::exists(path("two/other.dmp")));
}

void TestCrashHandler::lineTellsOfTheDump()
{
    DumpMessage message;
    QCOMPARE(message.size(), std::size_t{0});
    message.set(true, "/home/a b/crashes", "0a659241-e4de");
    QCOMPARE(QByteArray(message.text()),
             QByteArray("Succeed to write minidump, dump path: /home/a b/crashes/0a659241-e4de\n"));
    QCOMPARE(message.size(), std::strlen(message.text()));
    message.set(false, "/crashes", "1");
    QCOMPARE(QByteArray(message.text()), QByteArray("Failed to write minidump, dump path: /crashes/1\n"));
    QCOMPARE(message.size(), std::strlen(message.text()));
}

void TestCrashHandler::lineThatDoesNotFitIsCut()
{
    DumpMessage message;
    message.set(true, QByteArray(4095, 'x').constData(), "0a659241-e4de-4604-29aa51b2-1b7c4f07"); // the longest path
    QVERIFY(QByteArray(message.text()).endsWith("x/0a659241-e4de-4604-29aa51b2-1b7c4f07\n"));
    QCOMPARE(message.size(), std::strlen(message.text()));
    message.set(true, QByteArray(10000, 'x').constData(), "1");
    QCOMPARE(message.size(), std::strlen(message.text()));
    QVERIFY(message.size() > 4095);
    QVERIFY(message.size() < 10000);
    QCOMPARE(message.text()[message.size() - 1], 'x');
}

QTEST_GUILESS_MAIN(TestCrashHandler)
#include "tst_crashhandler.moc"
