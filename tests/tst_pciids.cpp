#include "probes/pciids.h"
#include "tests/support/testbase.h"

#include <QtTest>

namespace {

// The form of the real file: vendors, devices, subsystems, comments, and classes at the end.
const char names[] = "# List of PCI ID's\n"
                     "\n"
                     "1002  Advanced Micro Devices, Inc. [AMD/ATI]\n"
                     "\t1638  Cezanne [Radeon Vega Series]\n"
                     "10de  NVIDIA Corporation\n"
                     "# a remark between devices\n"
                     "\t1234  First\n"
                     "\t\t1043 8866  Board of another maker\n"
                     "\t2684  AD102 [GeForce RTX 4090]\n"
                     "8086  Intel Corporation\n"
                     "\t15b8  Ethernet Connection (2) I219-V\n"
                     "\t\t1043 2684  Board with the number of a device\n"
                     "C 02  Network controller\n"
                     "\t00  Ethernet controller";

} // namespace

class TestPciIds final : public TestBase {
    Q_OBJECT

private slots:
    void name_data();
    void name();
};

void TestPciIds::name_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("vendor");
    QTest::addColumn<int>("device");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *title, int vendor, int device, const char *expected) {
        QTest::newRow(title) << QByteArray(names) << vendor << device << QString::fromUtf8(expected);
    };
    row("first vendor", 0x1002, 0x1638, "Advanced Micro Devices, Inc. [AMD/ATI] Cezanne [Radeon Vega Series]");
    row("after a remark and a subsystem", 0x10de, 0x2684, "NVIDIA Corporation AD102 [GeForce RTX 4090]");
    row("last vendor", 0x8086, 0x15b8, "Intel Corporation Ethernet Connection (2) I219-V");
    row("unknown device", 0x10de, 0x9999, "NVIDIA Corporation 9999");
    row("the number of another vendor's device", 0x1002, 0x2684, "Advanced Micro Devices, Inc. [AMD/ATI] 2684");
    row("the number of a subsystem", 0x8086, 0x2684, "Intel Corporation 2684");
    row("unknown vendor", 0x0abc, 0x000d, "0abc:000d");
    row("a device's number is no vendor", 0x1638, 0x0001, "1638:0001");
    QTest::newRow("no list") << QByteArray() << 0x10de << 0x2684 << QStringLiteral("10de:2684");
    QTest::newRow("list ends in the vendor")
        << QByteArray("10de  NVIDIA") << 0x10de << 1 << QStringLiteral("NVIDIA 0001");
    QTest::newRow("list ends in the device")
        << QByteArray("10de  NVIDIA\n\t0001  X") << 0x10de << 1 << QStringLiteral("NVIDIA X");
}

void TestPciIds::name()
{
    QFETCH(QByteArray, text);
    QFETCH(int, vendor);
    QFETCH(int, device);
    QTEST(pciDeviceName(text, static_cast<quint16>(vendor), static_cast<quint16>(device)), "expected");
}

QTEST_APPLESS_MAIN(TestPciIds)
#include "tst_pciids.moc"
