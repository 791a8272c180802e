// The readers of this machine, beside what the system's own tools say.
#include "probes/cpuinfo.h"
#include "probes/displayadapters_linux.h"
#include "probes/displayinfo.h"
#include "probes/linkspeed.h"
#include "probes/memoryinfo.h"
#include "probes/networkadapters.h"
#include "probes/pciids.h"
#include "probes/sysfs_linux.h"
#include "probes/sysfsdevice_linux.h"
#include "probes/systembuild.h"
#include "probes/uptime.h"
#include "probes/wirelessrate_linux.h"
#include "tests/support/testbase.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <net/if.h>

namespace {

/// What a tool of the system prints; empty when it is not there.
QByteArray said(const QString &tool, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    process.setProcessEnvironment(environment);
    const QString program =
        QStandardPaths::findExecutable(tool, {QStringLiteral("/usr/bin"), QStringLiteral("/usr/sbin"),
                                              QStringLiteral("/bin"), QStringLiteral("/sbin")});
    if (program.isEmpty())
        return {};
    process.start(program, arguments);
    return process.waitForFinished(20000) ? process.readAllStandardOutput() : QByteArray();
}

/// The value of a "key: value" line.
QByteArray valueOf(const QByteArray &key, const QByteArray &text)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.trimmed().startsWith(key + ':'))
            return line.mid(line.indexOf(':') + 1).trimmed();
    }
    return {};
}

/// A tree like that of /sys, in a folder of its own.
class SysTree final {
public:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    void file(const QString &name, const QByteArray &content) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content + '\n');
    }
    void link(const QString &name, const QString &target) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QDir().mkpath(path(target));
        QVERIFY(QFile::link(path(target), path(name)));
    }
    void pciDevice(const QString &name, const QByteArray &vendor, const QByteArray &device) const
    {
        file(name + QStringLiteral("/vendor"), vendor);
        file(name + QStringLiteral("/device"), device);
        link(name + QStringLiteral("/subsystem"), QStringLiteral("bus/pci"));
    }

private:
    QTemporaryDir m_folder;
};

const QByteArray pciNames = "10de  NVIDIA Corporation\n\t2684  AD102 [GeForce RTX 4090]\n"
                            "1af4  Red Hat, Inc.\n\t1000  Virtio network device\n"
                            "8086  Intel Corporation\n\ta780  UHD Graphics 770\n";

} // namespace

class TestMachineLinux final : public TestBase {
    Q_OBJECT

private slots:
    void processorName();
    void instructionSets();
    void memory();
    void uptime();
    void kernelRelease();
    void adapters();
    void addresses();
    void defaultRoute();
    void linkSpeeds();
    void wirelessRateOfOtherInterfaces();
    void screens();
    void cards();
    void deviceNames();
    void installedPciNames();
};

void TestMachineLinux::processorName()
{
    const QByteArray lscpu = said(QStringLiteral("lscpu"), {});
    if (lscpu.isEmpty())
        QSKIP("lscpu (package util-linux) is not installed");
    QString brand;
    QString instructions;
    int cores = -1;
    int logical = -1;
    getCpuInfo(brand, cores, logical, instructions);
    QCOMPARE(brand.simplified(), QString::fromUtf8(valueOf("Model name", lscpu)).simplified());
    QVERIFY(cores >= 1);
    QVERIFY(logical >= 0); // some hypervisors leave it empty
}

void TestMachineLinux::instructionSets()
{
    const QList<QByteArray> flags = valueOf("Flags", said(QStringLiteral("lscpu"), {})).split(' ');
    if (flags.size() < 2)
        QSKIP("lscpu (package util-linux) tells no flags");
    QString brand;
    QString instructions;
    int cores = 0;
    int logical = 0;
    getCpuInfo(brand, cores, logical, instructions);
    const QMap<QString, QByteArray> namesOfKernel{{QStringLiteral("MMX"), "mmx"},
                                                  {QStringLiteral("x64"), "lm"},
                                                  {QStringLiteral("ABM"), "abm"},
                                                  {QStringLiteral("RDRAND"), "rdrand"},
                                                  {QStringLiteral("BMI1"), "bmi1"},
                                                  {QStringLiteral("BMI2"), "bmi2"},
                                                  {QStringLiteral("ADX"), "adx"},
                                                  {QStringLiteral("SSE"), "sse"},
                                                  {QStringLiteral("SSE2"), "sse2"},
                                                  {QStringLiteral("SSE3"), "pni"},
                                                  {QStringLiteral("SSSE3"), "ssse3"},
                                                  {QStringLiteral("SSE41"), "sse4_1"},
                                                  {QStringLiteral("SSE42"), "sse4_2"},
                                                  {QStringLiteral("SSE4a"), "sse4a"},
                                                  {QStringLiteral("AES"), "aes"},
                                                  {QStringLiteral("SHA"), "sha_ni"},
                                                  {QStringLiteral("AVX"), "avx"},
                                                  {QStringLiteral("XOP"), "xop"},
                                                  {QStringLiteral("FMA3"), "fma"},
                                                  {QStringLiteral("FMA4"), "fma4"},
                                                  {QStringLiteral("AVX2"), "avx2"},
                                                  {QStringLiteral("AVX512F"), "avx512f"},
                                                  {QStringLiteral("AVX512CD"), "avx512cd"},
                                                  {QStringLiteral("AVX512VL"), "avx512vl"},
                                                  {QStringLiteral("AVX512BW"), "avx512bw"},
                                                  {QStringLiteral("AVX512DQ"), "avx512dq"},
                                                  {QStringLiteral("AVX512IFMA"), "avx512ifma"}};
    const QStringList shown = instructions.split(QLatin1Char(' '));
    QStringList missing;
    for (auto entry = namesOfKernel.cbegin(); entry != namesOfKernel.cend(); ++entry) {
        // Not the other way round: the kernel keeps to itself what it has switched off.
        if (flags.contains(entry.value()) && !shown.contains(entry.key()))
            missing.append(entry.key());
    }
    QCOMPARE(missing, QStringList());
    QVERIFY(shown.contains(QStringLiteral("x64")));
    QVERIFY(instructions.endsWith(QLatin1Char(' ')));
}

void TestMachineLinux::memory()
{
    const QByteArray free = valueOf("Mem", said(QStringLiteral("free"), {QStringLiteral("-b")}));
    if (free.isEmpty())
        QSKIP("free (package procps) is not installed");
    bool ok = false;
    const double bytes = free.simplified().split(' ').first().toDouble(&ok);
    QVERIFY(ok);
    QCOMPARE(memoryText(getTotalMemoryGB()), memoryText(gibibytes(static_cast<quint64>(bytes))));
    QVERIFY(getTotalMemoryGB() > 0.1F);
}

void TestMachineLinux::uptime()
{
    const double seconds = readSystemFile(QStringLiteral("/proc/uptime")).split(' ').first().toDouble();
    QVERIFY(seconds > 0);
    QVERIFY(qAbs(static_cast<double>(systemUptimeMs()) / 1000 - seconds) < 2);
}

void TestMachineLinux::kernelRelease()
{
    const QByteArray release = said(QStringLiteral("uname"), {QStringLiteral("-r")}).trimmed();
    QVERIFY(!release.isEmpty());
    QCOMPARE(systemBuildVersion(), QString::fromLocal8Bit(release));
}

void TestMachineLinux::adapters()
{
    const QByteArray json = said(QStringLiteral("ip"), {QStringLiteral("-json"), QStringLiteral("address")});
    if (json.isEmpty())
        QSKIP("ip (package iproute2) is not installed");
    QStringList expected;
    const QJsonArray links = QJsonDocument::fromJson(json).array();
    for (const QJsonValue &link : links) {
        if (link[QStringLiteral("link_type")].toString() != QLatin1String("loopback"))
            expected.append(link[QStringLiteral("ifname")].toString());
    }
    QStringList names;
    const std::atomic<bool> abort{false};
    const NetworkAdapters adapters = readNetworkAdapters(abort);
    for (const NetworkAdapterInfo &adapter : adapters)
        names.append(adapter.name);
    expected.sort();
    names.sort();
    QCOMPARE(names, expected);
}

void TestMachineLinux::addresses()
{
    const QByteArray json = said(QStringLiteral("ip"), {QStringLiteral("-json"), QStringLiteral("address")});
    if (json.isEmpty())
        QSKIP("ip (package iproute2) is not installed");
    const QJsonArray links = QJsonDocument::fromJson(json).array();
    const std::atomic<bool> abort{false};
    const NetworkAdapters adapters = readNetworkAdapters(abort);
    for (const NetworkAdapterInfo &adapter : adapters) {
        QString address;
        QString mask;
        QString dhcp;
        for (const QJsonValue &link : links) {
            if (link[QStringLiteral("ifname")].toString() != adapter.name)
                continue;
            const QJsonArray entries = link[QStringLiteral("addr_info")].toArray();
            for (const QJsonValue &entry : entries) {
                if (entry[QStringLiteral("family")].toString() != QLatin1String("inet") || !address.isEmpty())
                    continue;
                address = entry[QStringLiteral("local")].toString();
                const int prefix = entry[QStringLiteral("prefixlen")].toInt();
                mask = QHostAddress(prefix == 0 ? 0 : ~quint32(0) << (32 - prefix)).toString();
                dhcp =
                    entry[QStringLiteral("dynamic")].toBool() ? QStringLiteral("Enabled") : QStringLiteral("Disabled");
            }
        }
        QCOMPARE(adapter.ipv4Address, address);
        QCOMPARE(adapter.subnetMask, mask);
        QCOMPARE(adapter.dhcp, dhcp);
    }
}

void TestMachineLinux::defaultRoute()
{
    const QByteArray json =
        said(QStringLiteral("ip"), {QStringLiteral("-json"), QStringLiteral("-4"), QStringLiteral("route"),
                                    QStringLiteral("show"), QStringLiteral("default")});
    const QJsonArray routes = QJsonDocument::fromJson(json).array();
    if (routes.isEmpty())
        QSKIP("ip (package iproute2) is not installed, or there is no default route");
    const std::atomic<bool> abort{false};
    const NetworkAdapterInfo first = readNetworkAdapters(abort).value(0);
    QCOMPARE(first.name, routes.first()[QStringLiteral("dev")].toString());
    QCOMPARE(first.defaultGateway, routes.first()[QStringLiteral("gateway")].toString());
}

void TestMachineLinux::linkSpeeds()
{
    const std::atomic<bool> abort{false};
    const NetworkAdapters adapters = readNetworkAdapters(abort);
    QVERIFY(!adapters.isEmpty());
    const QRegularExpression form(QStringLiteral("^(\\d+)/\\1Mbps$"));
    for (const NetworkAdapterInfo &adapter : adapters) {
        QCOMPARE(linkSpeedKey(adapter), adapter.name);
        const QString speed = getLinkSpeed(linkSpeedKey(adapter), abort);
        QVERIFY2(speed.isEmpty() || form.match(speed).hasMatch(), qPrintable(adapter.name + speed));
    }
    QCOMPARE(getLinkSpeed(QStringLiteral("lo"), abort), QString());
}

void TestMachineLinux::wirelessRateOfOtherInterfaces()
{
    QCOMPARE(wirelessRateMbps(if_nametoindex("lo")), std::nullopt);
    QCOMPARE(wirelessRateMbps(0), std::nullopt);
    QCOMPARE(wirelessRateMbps(999999), std::nullopt);
}

void TestMachineLinux::screens()
{
    QStringList adapters{QStringLiteral("old")};
    QStringList modes{QStringLiteral("old")};
    getDisplayInfo(adapters, modes);
    QCOMPARE(modes.size(), QGuiApplication::screens().size());
    const QScreen *screen = QGuiApplication::primaryScreen();
    QCOMPARE(modes.first(), QStringLiteral("%1x%2 (%3bit) %4 Hz")
                                .arg(QString::number(screen->size().width() * screen->devicePixelRatio()),
                                     QString::number(screen->size().height() * screen->devicePixelRatio()),
                                     QString::number(screen->depth()), QString::number(qRound(screen->refreshRate()))));
    QCOMPARE(adapters, displayAdapters(QStringLiteral("/sys/class/drm"), readPciIds()));
}

void TestMachineLinux::cards()
{
    const SysTree sys;
    sys.pciDevice(QStringLiteral("devices/gpu"), "0x10de", "0x2684");
    sys.pciDevice(QStringLiteral("devices/igpu"), "0x8086", "0xa780");
    sys.link(QStringLiteral("devices/soc/driver"), QStringLiteral("drivers/vc4-drm"));
    sys.link(QStringLiteral("drm/card10/device"), QStringLiteral("devices/igpu"));
    sys.link(QStringLiteral("drm/card2/device"), QStringLiteral("devices/gpu"));
    sys.link(QStringLiteral("drm/card3/device"), QStringLiteral("devices/soc"));
    sys.link(QStringLiteral("drm/card2-HDMI-A-1/device"), QStringLiteral("drm/card2"));
    sys.link(QStringLiteral("drm/renderD128/device"), QStringLiteral("devices/gpu"));
    QCOMPARE(displayAdapters(sys.path(QStringLiteral("drm")), pciNames),
             (QStringList{QStringLiteral("NVIDIA Corporation AD102 [GeForce RTX 4090]"), QStringLiteral("vc4-drm"),
                          QStringLiteral("Intel Corporation UHD Graphics 770")}));
    QCOMPARE(displayAdapters(sys.path(QStringLiteral("drm")), QByteArray()),
             (QStringList{QStringLiteral("10de:2684"), QStringLiteral("vc4-drm"), QStringLiteral("8086:a780")}));
    QCOMPARE(displayAdapters(sys.path(QStringLiteral("none")), pciNames), QStringList());
}

void TestMachineLinux::deviceNames()
{
    const SysTree sys;
    const auto name = [&sys](const QString &folder) { return sysfsDeviceName(sys.path(folder), pciNames); };
    // A virtual device of a hypervisor has ids of its own; its PCI card has the name.
    sys.pciDevice(QStringLiteral("pci/virtio-pci"), "0x1af4", "0x1000");
    sys.file(QStringLiteral("pci/virtio-pci/virtio0/vendor"), "0x554d4551");
    sys.file(QStringLiteral("pci/virtio-pci/virtio0/device"), "0x0001");
    sys.link(QStringLiteral("pci/virtio-pci/virtio0/subsystem"), QStringLiteral("bus/virtio"));
    QCOMPARE(name(QStringLiteral("pci/virtio-pci/virtio0")), QStringLiteral("Red Hat, Inc. Virtio network device"));
    // The network interface belongs to one interface of the USB device.
    sys.file(QStringLiteral("usb/1-2/product"), "USB 10/100/1000 LAN");
    sys.file(QStringLiteral("usb/1-2/manufacturer"), "Realtek");
    sys.link(QStringLiteral("usb/1-2/1-2:1.0/driver"), QStringLiteral("drivers/r8152"));
    QCOMPARE(name(QStringLiteral("usb/1-2/1-2:1.0")), QStringLiteral("Realtek USB 10/100/1000 LAN"));
    sys.file(QStringLiteral("usb/1-3/product"), "ASIX AX88179");
    sys.file(QStringLiteral("usb/1-3/manufacturer"), "ASIX");
    QCOMPARE(name(QStringLiteral("usb/1-3")), QStringLiteral("ASIX AX88179"));
    sys.link(QStringLiteral("soc/eth/driver"), QStringLiteral("drivers/bcmgenet"));
    QCOMPARE(name(QStringLiteral("soc/eth")), QStringLiteral("bcmgenet"));
    sys.file(QStringLiteral("other/eth/x"), "");
    QCOMPARE(name(QStringLiteral("other/eth")), QString());
    QCOMPARE(name(QStringLiteral("none")), QString());
}

void TestMachineLinux::installedPciNames()
{
    const QByteArray names = readPciIds();
    if (names.isEmpty())
        QSKIP("the package pci.ids is not installed");
    QCOMPARE(pciDeviceName(names, 0x8086, 0x1237), QStringLiteral("Intel Corporation 440FX - 82441FX PMC [Natoma]"));
    QCOMPARE(pciDeviceName(names, 0x10de, 0x2684), QStringLiteral("NVIDIA Corporation AD102 [GeForce RTX 4090]"));
}

QTEST_MAIN(TestMachineLinux)
#include "tst_machine_linux.moc"
