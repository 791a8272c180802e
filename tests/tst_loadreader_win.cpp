#include "probes/loadabort.h"
#include "probes/loadreader.h"
#include "tests/support/testbase.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

const QString shellPath = QStringLiteral("C:\\Windows\\System32\\WindowsPowerShell\\v1.0\\powershell.exe");

bool isWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// Puts this very program in the shell's place, which each run under Wine has for itself.
class ShellReplacement final {
public:
    ShellReplacement() : m_kept(shellPath + QStringLiteral(".kept"))
    {
        m_isInPlace =
            QFile::rename(shellPath, m_kept) && QFile::copy(QCoreApplication::applicationFilePath(), shellPath);
    }
    ~ShellReplacement()
    {
        QFile::remove(shellPath);
        QFile::rename(m_kept, shellPath);
    }
    Q_DISABLE_COPY_MOVE(ShellReplacement)

    bool isInPlace() const { return m_isInPlace; }

private:
    QString m_kept;
    bool m_isInPlace = false;
};

/// What this program does as the shell: notes its arguments and prints what the test wants.
int runAsShell(const QStringList &arguments)
{
    QFile log(qEnvironmentVariable("VEXA_SHELL_LOG"));
    if (!log.open(QIODevice::WriteOnly | QIODevice::Append))
        return 1;
    log.write(arguments.join(QLatin1Char('\n')).toUtf8() + '\n');
    log.close();
    std::fputs(qgetenv("VEXA_SHELL_PRINTS").constData(), stdout);
    std::fflush(stdout);
    if (qEnvironmentVariableIsSet("VEXA_SHELL_HANGS")) {
        while (std::getchar() != EOF) { // until the parent is gone
        }
    }
    return 0;
}

} // namespace

class TestWindowsLoadReader final : public TestBase {
    Q_OBJECT

private slots:
    void processorLoadNeedsTwoReadings();
    void graphicsLoadComesFromTheShell_data();
    void graphicsLoadComesFromTheShell();
    void hangingShellIsKilledByTheAbort();
};

void TestWindowsLoadReader::processorLoadNeedsTwoReadings()
{
    const std::unique_ptr<LoadReader> reader = makeLoadReader();
    QVERIFY(!reader->processorPercent());
    QThread::msleep(50); // the counter is a rate
    const std::optional<int> percent = reader->processorPercent();
    QVERIFY(percent);
    QVERIFY2(*percent >= 0 && *percent <= 100, qPrintable(QString::number(*percent)));
    // The counter is the process's: another reader goes on from there.
    QThread::msleep(50);
    QVERIFY(makeLoadReader()->processorPercent());
}

void TestWindowsLoadReader::graphicsLoadComesFromTheShell_data()
{
    QTest::addColumn<QByteArray>("prints");
    QTest::addColumn<int>("percent"); // -1: none
    QTest::newRow("one engine") << QByteArray("12.7\n") << 12;
    QTest::newRow("two busy engines") << QByteArray("153.9\n") << 153;
    QTest::newRow("blanks") << QByteArray("  0 \nmore\n") << 0;
    QTest::newRow("letters") << QByteArray("Get-Counter : no such counter\n") << -1;
    QTest::newRow("nothing") << QByteArray() << -1;
}

void TestWindowsLoadReader::graphicsLoadComesFromTheShell()
{
    if (!isWine())
        QSKIP("the system's own shell is not replaced");
    QFETCH(QByteArray, prints);
    QFETCH(int, percent);
    const QTemporaryDir folder;
    const QString logPath = folder.filePath(QStringLiteral("log"));
    qputenv("VEXA_SHELL_LOG", QFile::encodeName(logPath));
    qputenv("VEXA_SHELL_PRINTS", prints);
    const ShellReplacement shell;
    QVERIFY(shell.isInPlace());
    QCOMPARE(makeLoadReader()->graphicsPercent(LoadAbort()).value_or(-1), percent);
    QFile log(logPath);
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(log.readAll(),
             QByteArray("-Command\nWrite-Output (((Get-Counter \"\\GPU Engine(*engtype_3D)\\Utilization "
                        "Percentage\").CounterSamples | where CookedValue).CookedValue | measure -sum).sum\n"));
}

void TestWindowsLoadReader::hangingShellIsKilledByTheAbort()
{
    if (!isWine())
        QSKIP("the system's own shell is not replaced");
    const QTemporaryDir folder;
    const QString logPath = folder.filePath(QStringLiteral("log"));
    qputenv("VEXA_SHELL_LOG", QFile::encodeName(logPath));
    qputenv("VEXA_SHELL_PRINTS", "12\n");
    qputenv("VEXA_SHELL_HANGS", "1");
    const ShellReplacement shell;
    QVERIFY(shell.isInPlace());
    LoadAbort abort;
    QElapsedTimer sinceAbort;
    const std::unique_ptr<QThread> aborter(QThread::create([&abort, &sinceAbort, logPath] {
        while (QFileInfo(logPath).size() == 0)
            QThread::msleep(5);
        sinceAbort.start();
        abort.request();
    }));
    aborter->start();
    QVERIFY(!makeLoadReader()->graphicsPercent(abort));
    QVERIFY(aborter->wait());
    qunsetenv("VEXA_SHELL_HANGS");
    QVERIFY2(sinceAbort.elapsed() < 1000, qPrintable(QString::number(sinceAbort.elapsed())));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (QFileInfo(QCoreApplication::applicationFilePath()).fileName() == QFileInfo(shellPath).fileName())
        return runAsShell(QCoreApplication::arguments().mid(1));
    TestWindowsLoadReader test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_loadreader_win.moc"
