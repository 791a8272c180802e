#include "probes/loadreader_linux.h"

#include "probes/drmclients_linux.h"
#include "probes/loadabort.h"
#include "probes/procstat.h"
#include "tests/load/faketree.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QThread>

namespace {

/// A machine of a test's own: its files, its tool, its counters.
class Machine final {
public:
    Machine() : m_searchPath(qgetenv("PATH")) {}
    ~Machine() { qputenv("PATH", m_searchPath); }
    Q_DISABLE_COPY_MOVE(Machine)

    /// Puts a shell script in the place of the driver's tool.
    void writeTool(const QByteArray &body) const
    {
        const QString tool = tree.path("bin/nvidia-smi");
        tree.write("bin/nvidia-smi", "#!/bin/sh\n" + body);
        QVERIFY(QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        qputenv("PATH", QFile::encodeName(tree.path("bin")) + ':' + m_searchPath);
    }

    FakeTree tree;
    ProcessorLoad processor;
    LoadAbort abort;
    LinuxLoadReader reader{processor, tree.root()};

private:
    QByteArray m_searchPath;
};

} // namespace

class TestLinuxLoadReader final : public TestBase {
    Q_OBJECT

private slots:
    void processorLoadComesFromProcStat();
    void processorCountersOutliveTheReader();
    void noAdapterNoFigure();
    void amdAdaptersAreSummed();
    void sleepingAmdAdapterIsIdle();
    void unreadableAmdFigure();
    void nvidiaToolRunsOncePerCycle();
    void nvidiaToolIsNotRunWithoutTheDriver();
    void nvidiaToolIsMissing();
    void nvidiaToolFails();
    void nvidiaToolHangs();
    void makersAreSummed();
    void intelAdapterIsFound_data();
    void intelAdapterIsFound();
};

void TestLinuxLoadReader::processorLoadComesFromProcStat()
{
    Machine machine;
    QVERIFY(!machine.reader.processorPercent()); // no such file
    machine.tree.write("proc/stat", "cpu  100 0 0 900 0 0 0 0 0 0\n" + QByteArray("cpu0 1 1 1 1 1\n").repeated(200));
    QVERIFY(!machine.reader.processorPercent());
    machine.tree.write("proc/stat", "cpu  130 0 15 950 5 0 0 0 0 0\n" + QByteArray("cpu0 1 1 1 1 1\n").repeated(200));
    QCOMPARE(machine.reader.processorPercent(), std::optional<int>(45));
}

void TestLinuxLoadReader::processorCountersOutliveTheReader()
{
    Machine machine;
    machine.tree.write("proc/stat", "cpu  100 0 0 900 0\n");
    LinuxLoadReader(machine.processor, machine.tree.root()).processorPercent();
    machine.tree.write("proc/stat", "cpu  110 0 0 990 0\n");
    QCOMPARE(LinuxLoadReader(machine.processor, machine.tree.root()).processorPercent(), std::optional<int>(10));
}

void TestLinuxLoadReader::noAdapterNoFigure()
{
    Machine machine;
    QVERIFY(!machine.reader.graphicsPercent(machine.abort));
    QVERIFY(!machine.reader.graphicsPercent(machine.abort));
}

void TestLinuxLoadReader::amdAdaptersAreSummed()
{
    Machine machine;
    machine.tree.write("sys/class/drm/card0/device/gpu_busy_percent", "45\n");
    machine.tree.write("sys/class/drm/card0/device/power/runtime_status", "active\n");
    machine.tree.write("sys/class/drm/card1/device/gpu_busy_percent", "70\n");
    machine.tree.write("sys/class/drm/card0-DP-1/device/gpu_busy_percent", "99\n"); // the same card once more
    machine.tree.write("sys/class/drm/renderD128/device/gpu_busy_percent", "99\n");
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), std::optional<int>(115));
    machine.tree.write("sys/class/drm/card0/device/gpu_busy_percent", "0\n");
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), std::optional<int>(70));
}

void TestLinuxLoadReader::sleepingAmdAdapterIsIdle()
{
    Machine machine;
    machine.tree.write("sys/class/drm/card0/device/gpu_busy_percent", "45\n");
    machine.tree.write("sys/class/drm/card0/device/power/runtime_status", "suspended\n");
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), std::optional<int>(0));
}

void TestLinuxLoadReader::unreadableAmdFigure()
{
    Machine machine;
    machine.tree.write("sys/class/drm/card0/device/gpu_busy_percent", QByteArray());
    machine.tree.write("sys/class/drm/card1/device/gpu_busy_percent", "8\n");
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), std::optional<int>(8));
    machine.tree.write("sys/class/drm/card1/device/gpu_busy_percent", QByteArray());
    QVERIFY(!machine.reader.graphicsPercent(machine.abort));
}

void TestLinuxLoadReader::nvidiaToolRunsOncePerCycle()
{
    Machine machine;
    machine.tree.write("proc/driver/nvidia/gpus/0000:01:00.0/information", QByteArray());
    machine.writeTool("echo \"$@\" >>" + QFile::encodeName(machine.tree.path("log")) + "\necho 37\necho 95\n");
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), std::optional<int>(132));
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), std::optional<int>(132));
    QFile log(machine.tree.path("log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QByteArray once("--query-gpu=utilization.gpu --format=csv,noheader,nounits\n");
    QCOMPARE(log.readAll(), once + once);
}

void TestLinuxLoadReader::nvidiaToolIsNotRunWithoutTheDriver()
{
    Machine machine;
    QVERIFY(QDir(machine.tree.root()).mkpath(QStringLiteral("proc/driver/nvidia/gpus"))); // loaded, but no adapter
    machine.writeTool("echo 37\n");
    QVERIFY(!machine.reader.graphicsPercent(machine.abort));
}

void TestLinuxLoadReader::nvidiaToolIsMissing()
{
    Machine machine;
    machine.tree.write("proc/driver/nvidia/gpus/0000:01:00.0/information", QByteArray());
    qputenv("PATH", QFile::encodeName(machine.tree.path("bin")));
    QVERIFY(!machine.reader.graphicsPercent(machine.abort));
}

void TestLinuxLoadReader::nvidiaToolFails()
{
    Machine machine;
    machine.tree.write("proc/driver/nvidia/gpus/0000:01:00.0/information", QByteArray());
    machine.writeTool("echo 'NVIDIA-SMI has failed because it could not communicate with the driver.' >&2\nexit 9\n");
    QVERIFY(!machine.reader.graphicsPercent(machine.abort));
}

void TestLinuxLoadReader::nvidiaToolHangs()
{
    Machine machine;
    machine.tree.write("proc/driver/nvidia/gpus/0000:01:00.0/information", QByteArray());
    const QString started = machine.tree.path("started");
    machine.writeTool("echo >" + QFile::encodeName(started) + "\nexec sleep 60\n");
    LoadAbort abort;
    QElapsedTimer sinceAbort;
    const std::unique_ptr<QThread> aborter(QThread::create([&abort, &sinceAbort, started] {
        while (!QFile::exists(started))
            QThread::msleep(5);
        sinceAbort.start();
        abort.request();
    }));
    aborter->start();
    QVERIFY(!machine.reader.graphicsPercent(abort));
    QVERIFY(aborter->wait());
    QVERIFY2(sinceAbort.elapsed() < 1000, qPrintable(QString::number(sinceAbort.elapsed())));
}

void TestLinuxLoadReader::makersAreSummed()
{
    Machine machine;
    machine.tree.write("proc/driver/nvidia/gpus/0000:01:00.0/information", QByteArray());
    machine.writeTool("echo 60\n");
    machine.tree.write("sys/class/drm/card1/device/gpu_busy_percent", "55\n");
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), std::optional<int>(115));
}

void TestLinuxLoadReader::intelAdapterIsFound_data()
{
    QTest::addColumn<QByteArray>("facts");
    QTest::addColumn<bool>("isFound");
    QTest::newRow("i915") << QByteArray("DRIVER=i915\nPCI_CLASS=30000\n") << true;
    QTest::newRow("xe, last line without end") << QByteArray("PCI_CLASS=30000\nDRIVER=xe") << true;
    QTest::newRow("another driver") << QByteArray("DRIVER=amdgpu\n") << false;
    QTest::newRow("a longer name") << QByteArray("DRIVER=xen\n") << false;
    QTest::newRow("no driver") << QByteArray() << false;
}

void TestLinuxLoadReader::intelAdapterIsFound()
{
    Machine machine;
    QFETCH(QByteArray, facts);
    QFETCH(bool, isFound);
    const auto usage = [](quint64 cycles, quint64 total) {
        return "drm-driver:\txe\ndrm-pdev:\t0000:00:02.0\ndrm-client-id:\t3\ndrm-cycles-rcs:\t"
               + QByteArray::number(cycles) + "\ndrm-total-cycles-rcs:\t" + QByteArray::number(total) + '\n';
    };
    machine.tree.write("sys/class/drm/card0/device/uevent", facts);
    machine.tree.writeDescriptor(77, 4, "/dev/dri/renderD128", usage(1000, 1000));
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), isFound ? std::optional<int>(0) : std::nullopt);
    machine.tree.write("proc/77/fdinfo/4", usage(1350, 2000));
    QCOMPARE(machine.reader.graphicsPercent(machine.abort), isFound ? std::optional<int>(35) : std::nullopt);
}

QTEST_GUILESS_MAIN(TestLinuxLoadReader)
#include "tst_loadreader_linux.moc"
