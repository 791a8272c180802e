// The readers of this machine, beside what the system's own tools say. Wine has them, too.
#include "probes/cpuinfo.h"
#include "probes/displayinfo.h"
#include "probes/linkspeed.h"
#include "probes/management_win.h"
#include "probes/memoryinfo.h"
#include "probes/networkadapters.h"
#include "probes/systembuild.h"
#include "probes/uptime.h"
#include "tests/support/testbase.h"

#include <QNetworkInterface>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QtTest>

#include <objbase.h>

namespace {

/// The lines of a wmic listing below its head, one blank between words; empty when wmic is not there.
QStringList listed(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("wmic"), arguments);
    if (!process.waitForFinished(30000))
        return {};
    QByteArray output = process.readAllStandardOutput();
    output.replace('\0', ""); // UTF-16 to a pipe
    output.replace("\xff\xfe", "");
    QStringList lines;
    for (const QByteArray &line : output.split('\n')) {
        if (!line.simplified().isEmpty())
            lines.append(QString::fromLocal8Bit(line.simplified()));
    }
    if (!lines.isEmpty())
        lines.removeFirst();
    return lines;
}

} // namespace

class TestMachineWindows final : public TestBase {
    Q_OBJECT

private slots:
    void processor();
    void memory();
    void build();
    void uptime();
    void adapters();
    void linkSpeeds();
    void management();
    void managementOnAThreadWithWindows();
    void displays();
};

void TestMachineWindows::processor()
{
    const QSettings registry(QStringLiteral("HKEY_LOCAL_MACHINE\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0"),
                             QSettings::NativeFormat);
    const QString expected = registry.value(QStringLiteral("ProcessorNameString")).toString();
    QVERIFY(!expected.isEmpty());
    QString brand;
    QString instructions;
    int cores = -1;
    int logical = -1;
    getCpuInfo(brand, cores, logical, instructions);
    QCOMPARE(brand.simplified(), expected.simplified());
    QVERIFY(cores >= 1);
    QVERIFY(logical >= 0);
    QVERIFY2(instructions.contains(QStringLiteral("x64 ")) && instructions.contains(QStringLiteral("SSE2 ")),
             qPrintable(instructions));
}

void TestMachineWindows::memory()
{
    const QStringList lines =
        listed({QStringLiteral("computersystem"), QStringLiteral("get"), QStringLiteral("TotalPhysicalMemory")});
    if (lines.isEmpty())
        QSKIP("wmic is not there");
    bool ok = false;
    const quint64 bytes = lines.first().toULongLong(&ok);
    QVERIFY2(ok, qPrintable(lines.first()));
    QCOMPARE(memoryText(getTotalMemoryGB()), memoryText(gibibytes(bytes)));
}

void TestMachineWindows::build()
{
    const QStringList lines = listed({QStringLiteral("os"), QStringLiteral("get"), QStringLiteral("BuildNumber")});
    if (lines.isEmpty())
        QSKIP("wmic is not there");
    QCOMPARE(systemBuildVersion(), lines.first());
}

void TestMachineWindows::uptime()
{
    const quint64 before = systemUptimeMs();
    QTRY_VERIFY(systemUptimeMs() > before);
}

void TestMachineWindows::adapters()
{
    const std::atomic<bool> abort{false};
    const NetworkAdapters adapters = readNetworkAdapters(abort);
    QStringList names;
    for (const NetworkAdapterInfo &adapter : adapters) {
        names.append(adapter.name);
        QCOMPARE(linkSpeedKey(adapter), adapter.description);
    }
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    int expected = 0;
    for (const QNetworkInterface &found : interfaces) {
        if (found.flags().testFlag(QNetworkInterface::IsLoopBack))
            continue; // Windows does not list it, Wine does
        ++expected;
        QVERIFY2(names.contains(found.humanReadableName()), qPrintable(found.humanReadableName()));
    }
    QVERIFY(expected > 0);
}

// Wine's adapters lack NetEnabled, so that there the query fails and every link speed is empty.
void TestMachineWindows::linkSpeeds()
{
    const QStringList table{QStringLiteral("path"), QStringLiteral("Win32_NetworkAdapter")};
    const QStringList columns{QStringLiteral("get"), QStringLiteral("Name,Speed")};
    const QStringList all = listed(table + columns);
    if (all.isEmpty())
        QSKIP("wmic is not there");
    const QStringList enabled =
        listed(table + QStringList{QStringLiteral("where"), QStringLiteral("NetEnabled=TRUE")} + columns);
    const std::atomic<bool> abort{false};
    int withSpeed = 0;
    for (const QString &line : all) {
        const QString speed = line.section(QLatin1Char(' '), -1);
        const QString name = line.section(QLatin1Char(' '), 0, -2);
        if (name.isEmpty() || speed.contains(QRegularExpression(QStringLiteral("\\D"))))
            continue;
        ++withSpeed;
        const QString expected = enabled.contains(line) ? linkSpeedOfBits(speed) : QString();
        QCOMPARE(getLinkSpeed(name, abort), expected);
    }
    QVERIFY(withSpeed > 0);
}

void TestMachineWindows::management()
{
    const QStringList lines = listed({QStringLiteral("path"), QStringLiteral("Win32_NetworkAdapter"),
                                      QStringLiteral("get"), QStringLiteral("Speed")});
    if (lines.isEmpty())
        QSKIP("wmic is not there");
    const QString query = QStringLiteral("SELECT * FROM Win32_NetworkAdapter");
    const std::atomic<bool> abort{false};
    const std::atomic<bool> aborted{true};
    QCOMPARE(managementText(query, L"Speed", abort), std::make_optional(lines.first()));
    QCOMPARE(managementText(QStringLiteral("SELECT * FROM Win32_OperatingSystem"), L"BuildNumber", abort),
             std::make_optional(systemBuildVersion()));
    // A number is no text.
    QCOMPARE(managementText(query, L"InterfaceIndex", abort), std::nullopt);
    QCOMPARE(managementText(query, L"NoSuchProperty", abort), std::nullopt);
    QCOMPARE(managementText(QStringLiteral("SELECT * FROM NoSuchClass"), L"Name", abort), std::nullopt);
    QCOMPARE(managementText(QStringLiteral("it's no query"), L"Name", abort), std::nullopt);
    QCOMPARE(managementText(query, L"Speed", aborted), std::nullopt);
}

void TestMachineWindows::managementOnAThreadWithWindows()
{
    const QString query = QStringLiteral("SELECT * FROM Win32_OperatingSystem");
    const std::atomic<bool> abort{false};
    const HRESULT result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    QVERIFY(SUCCEEDED(result));
    QCOMPARE(managementText(query, L"BuildNumber", abort), std::make_optional(systemBuildVersion()));
    // Its own use of COM is untouched: the other threading model is still refused.
    QCOMPARE(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
}

void TestMachineWindows::displays()
{
    QStringList adapters;
    QStringList modes;
    getDisplayInfo(adapters, modes);
    QVERIFY(!adapters.isEmpty());
    QVERIFY(!adapters.first().isEmpty());
    QVERIFY(modes.size() >= adapters.size());
    const QStringList lines =
        listed({QStringLiteral("path"), QStringLiteral("Win32_VideoController"), QStringLiteral("get"),
                QStringLiteral("CurrentBitsPerPixel,CurrentHorizontalResolution,CurrentVerticalResolution")});
    if (lines.isEmpty())
        QSKIP("wmic is not there");
    const QStringList numbers = lines.first().split(QLatin1Char(' '));
    QCOMPARE(numbers.size(), 3);
    const QString expected = QStringLiteral("%1x%2 (%3bit) ").arg(numbers.at(1), numbers.at(2), numbers.at(0));
    QVERIFY2(modes.first().startsWith(expected), qPrintable(modes.first()));
}

QTEST_MAIN(TestMachineWindows)
#include "tst_machine_windows.moc"
