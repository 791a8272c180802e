#include "probes/childoutput.h"

#include "probes/loadabort.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QLockFile>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <cstdio>
#include <memory>

namespace {

constexpr std::chrono::seconds longLimit(30);

QString program()
{
    return QCoreApplication::applicationFilePath();
}

/// What this program does when it is the child.
int runChild(const QStringList &arguments)
{
    const QString task = arguments.value(0);
    if (task == QLatin1String("both")) {
        std::fputs("out\n", stdout);
        std::fflush(stdout);
        std::fputs("err\n", stderr);
        std::fflush(stderr);
        return 3;
    }
    if (task == QLatin1String("arguments")) {
        for (const QString &argument : arguments.mid(1))
            std::printf("[%s]", argument.toUtf8().constData());
        return 0;
    }
    if (task == QLatin1String("much")) {
        for (int i = 0; i < 20000; ++i)
            std::fputs("0123456789012345678901234567890123456789012345678\n", stdout);
        return 0;
    }
    QLockFile lock(arguments.value(1));
    if (task != QLatin1String("hang") || !lock.lock())
        return 1;
    std::fputs("12\n", stdout);
    std::fflush(stdout);
    while (std::getchar() != EOF) { // until the parent is gone
    }
    return 0;
}

} // namespace

class TestChildOutput final : public TestBase {
    Q_OBJECT

private slots:
    void bothChannelsInOne();
    void argumentsArriveUnchanged();
    void longOutputIsWhole();
    void missingProgram();
    void timeLimitKills();
    void abortKills();
    void abortBeforeTheStart();

private:
    LoadAbort m_none;
};

void TestChildOutput::bothChannelsInOne()
{
    const std::optional<QByteArray> output =
        childOutput(program(), {QStringLiteral("child"), QStringLiteral("both")}, longLimit, m_none);
    QVERIFY(output);
    QCOMPARE(QByteArray(*output).replace("\r\n", "\n"), QByteArray("out\nerr\n"));
}

void TestChildOutput::argumentsArriveUnchanged()
{
    const QStringList texts{QStringLiteral("-Command"), QStringLiteral("a \"\\b(*c)\\d e\" | (f).g"),
                            QStringLiteral("\\"), QString()};
    const std::optional<QByteArray> output = childOutput(
        program(), QStringList{QStringLiteral("child"), QStringLiteral("arguments")} + texts, longLimit, m_none);
    QVERIFY(output);
    QCOMPARE(*output, QByteArray("[-Command][a \"\\b(*c)\\d e\" | (f).g][\\][]"));
}

void TestChildOutput::longOutputIsWhole()
{
    const std::optional<QByteArray> output =
        childOutput(program(), {QStringLiteral("child"), QStringLiteral("much")}, longLimit, m_none);
    QVERIFY(output);
    QCOMPARE(output->count('\n'), 20000);
}

void TestChildOutput::missingProgram()
{
    const QTemporaryDir folder;
    QElapsedTimer time;
    time.start();
    QVERIFY(!childOutput(folder.filePath(QStringLiteral("nothing.exe")), {}, longLimit, m_none));
    QVERIFY2(time.elapsed() < 5000, qPrintable(QString::number(time.elapsed())));
}

void TestChildOutput::timeLimitKills()
{
    const QTemporaryDir folder;
    const QString lockPath = folder.filePath(QStringLiteral("lock"));
    QElapsedTimer time;
    time.start();
    // What it wrote before does not count.
    QVERIFY(!childOutput(program(), {QStringLiteral("child"), QStringLiteral("hang"), lockPath},
                         std::chrono::seconds(2), m_none));
    QVERIFY2(time.elapsed() >= 1990 && time.elapsed() < 4000, qPrintable(QString::number(time.elapsed())));
    QVERIFY(QFile::exists(lockPath));
    QVERIFY(QLockFile(lockPath).tryLock(0)); // its owner lives no more
}

void TestChildOutput::abortKills()
{
    const QTemporaryDir folder;
    const QString lockPath = folder.filePath(QStringLiteral("lock"));
    LoadAbort abort;
    QElapsedTimer sinceAbort;
    const std::unique_ptr<QThread> aborter(QThread::create([&abort, &sinceAbort, lockPath] {
        while (!QFile::exists(lockPath))
            QThread::msleep(5);
        sinceAbort.start();
        abort.request();
    }));
    aborter->start();
    const std::optional<QByteArray> output =
        childOutput(program(), {QStringLiteral("child"), QStringLiteral("hang"), lockPath}, longLimit, abort);
    QVERIFY(aborter->wait());
    QVERIFY(!output);
    QVERIFY2(sinceAbort.elapsed() < 200, qPrintable(QString::number(sinceAbort.elapsed())));
    QVERIFY(QLockFile(lockPath).tryLock(0));
}

void TestChildOutput::abortBeforeTheStart()
{
    const QTemporaryDir folder;
    LoadAbort abort;
    abort.request();
    QElapsedTimer time;
    time.start();
    QVERIFY(!childOutput(program(),
                         {QStringLiteral("child"), QStringLiteral("hang"), folder.filePath(QStringLiteral("lock"))},
                         longLimit, abort));
    QVERIFY2(time.elapsed() < 2000, qPrintable(QString::number(time.elapsed())));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().value(1) == QLatin1String("child"))
        return runChild(QCoreApplication::arguments().mid(2));
    TestChildOutput test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_childoutput.moc"
