#include "probes/cpuidentity.h"
#include "tests/support/testbase.h"

#include <QtTest>

using Leaves = QMap<quint32, CpuidRegisters>;
using Part = quint32 CpuidRegisters::*;
Q_DECLARE_METATYPE(Part)

namespace {

/// A processor that has these leaves, and zeros in all others.
CpuidSource processorWith(const Leaves &leaves)
{
    return [leaves](quint32 leaf) { return leaves.value(leaf); };
}

/// The leaves in a file of tests/machine/cpuid.
Leaves recordedLeaves(const QString &fileName)
{
    QFile file(QStringLiteral(VEXA_MACHINE_FIXTURES "/cpuid/") + fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    Leaves leaves;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QList<QByteArray> numbers = line.split(' ');
        if (line.startsWith("0x") && numbers.size() == 5) {
            const auto number = [&numbers](int index) { return numbers.at(index).toUInt(nullptr, 16); };
            leaves.insert(number(0), {number(1), number(2), number(3), number(4)});
        }
    }
    return leaves;
}

/// Twelve characters as leaf 0 holds them.
CpuidRegisters vendorLeaf(quint32 highestLeaf, const QByteArray &vendor)
{
    const auto number = [&vendor](int at) { return qFromLittleEndian<quint32>(vendor.constData() + at); };
    return {highestLeaf, number(0), number(8), number(4)};
}

} // namespace

class TestCpuIdentity final : public TestBase {
    Q_OBJECT

private slots:
    void processor_data();
    void processor();
    void eachFeature_data();
    void eachFeature();
    void leavesAboveTheHighestCountAsZeros();
    void amdWithoutItsCountingLeaf();
    void nameIsNotTrimmed();
    void nameMayFillAllItsBytes();
    void nameIsLatin1();
    void nameOfFewerLeaves();
    void procCpuinfo_data();
    void procCpuinfo();
};

void TestCpuIdentity::processor_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("brand");
    QTest::addColumn<int>("cores");
    QTest::addColumn<int>("logical");
    QTest::addColumn<QString>("instructions");
    const auto row = [](const char *title, const char *file, const char *brand, int cores, int logical,
                        const char *instructions) {
        QTest::newRow(title) << QString::fromLatin1(file) << QString::fromLatin1(brand) << cores << logical
                             << QString::fromLatin1(instructions);
    };
    row("AMD, recorded on a virtual machine", "amd-epyc-kvm.txt", "AMD EPYC", 2, 2,
        "MMX x64 ABM RDRAND BMI1 BMI2 ADX SSE SSE2 SSE3 SSSE3 SSE41 SSE42 SSE4a AES SHA AVX FMA3 AVX2 AVX512F AVX512CD "
        "AVX512VL AVX512BW AVX512DQ AVX512IFMA AVX512VBMI ");
    row("AMD with 16 threads: the leaf counts threads", "amd-ryzen.txt",
        "AMD Ryzen 7 5800X 8-Core Processor             ", 16, 16,
        "MMX x64 ABM RDRAND BMI1 BMI2 ADX SSE SSE2 SSE3 SSSE3 SSE41 SSE42 SSE4a AES SHA AVX FMA3 AVX2 ");
    row("AMD with XOP and FMA4", "amd-fx.txt", "AMD FX(tm)-8350 Eight-Core Processor           ", 8, 8,
        "MMX x64 ABM BMI1 SSE SSE2 SSE3 SSSE3 SSE41 SSE42 SSE4a AES AVX XOP FMA3 FMA4 ");
    row("Intel: the leaves reserve more than there is", "intel-core-haswell.txt",
        "Intel(R) Core(TM) i7-4770 CPU @ 3.40GHz", 8, 16,
        "MMX x64 ABM RDRAND BMI1 BMI2 SSE SSE2 SSE3 SSSE3 SSE41 SSE42 AES AVX FMA3 AVX2 ");
    row("Intel with two kinds of cores", "intel-core-hybrid.txt", "12th Gen Intel(R) Core(TM) i7-12700", 64, 128,
        "MMX x64 ABM RDRAND BMI1 BMI2 ADX SSE SSE2 SSE3 SSSE3 SSE41 SSE42 AES SHA AVX FMA3 AVX2 ");
    row("Intel, guest of a hypervisor", "intel-xeon-hyperv.txt", "Intel(R) Xeon(R) Platinum 8272CL CPU @ 2.60GHz", 2, 4,
        "MMX x64 ABM RDRAND BMI1 BMI2 ADX SSE SSE2 SSE3 SSSE3 SSE41 SSE42 AES AVX FMA3 AVX2 AVX512F AVX512CD AVX512VL "
        "AVX512BW AVX512DQ ");
    row("no leaf 7", "intel-pentium4.txt", "              Intel(R) Pentium(R) 4 CPU 2.40GHz", 1, 2, "MMX SSE SSE2 ");
    row("no leaf 4 and no name", "intel-pentium3.txt", "", 1, 1, "MMX SSE ");
    row("another vendor: cores are the logical processors", "zhaoxin.txt", "ZHAOXIN KaiXian KX-6640MA@2.2+GHz", 4, 4,
        "MMX x64 ABM RDRAND BMI1 BMI2 ADX SSE SSE2 SSE3 SSSE3 SSE41 SSE42 AES SHA AVX AVX2 ");
    row("a third vendor", "via-nano.txt", "VIA Nano processor L2200@1600MHz", 1, 1, "MMX x64 SSE SSE2 SSE3 SSSE3 ");
}

void TestCpuIdentity::processor()
{
    QFETCH(QString, file);
    const Leaves leaves = recordedLeaves(file);
    QVERIFY(leaves.size() >= 2);
    const CpuIdentity identity = cpuIdentity(processorWith(leaves));
    QTEST(identity.brand, "brand");
    QTEST(identity.cores, "cores");
    QTEST(identity.logical, "logical");
    QTEST(identity.instructions, "instructions");
}

void TestCpuIdentity::eachFeature_data()
{
    QTest::addColumn<quint32>("leaf");
    QTest::addColumn<Part>("part");
    QTest::addColumn<int>("bit");
    const auto row = [](const char *text, quint32 leaf, Part part, int bit) {
        QTest::newRow(text) << leaf << part << bit;
    };
    const Part ebx = &CpuidRegisters::ebx;
    const Part ecx = &CpuidRegisters::ecx;
    const Part edx = &CpuidRegisters::edx;
    constexpr quint32 extended = 0x80000001;
    row("MMX ", 1, edx, 23);
    row("x64 ", extended, edx, 29);
    row("ABM ", extended, ecx, 5);
    row("RDRAND ", 1, ecx, 30);
    row("BMI1 ", 7, ebx, 3);
    row("BMI2 ", 7, ebx, 8);
    row("ADX ", 7, ebx, 19);
    row("PREFETCHWT1 ", 7, ecx, 0);
    row("SSE ", 1, edx, 25);
    row("SSE2 ", 1, edx, 26);
    row("SSE3 ", 1, ecx, 0);
    row("SSSE3 ", 1, ecx, 9);
    row("SSE41 ", 1, ecx, 19);
    row("SSE42 ", 1, ecx, 20);
    row("SSE4a ", extended, ecx, 6);
    row("AES ", 1, ecx, 25);
    row("SHA ", 7, ebx, 29);
    row("AVX ", 1, ecx, 28);
    row("XOP ", extended, ecx, 11);
    row("FMA3 ", 1, ecx, 12);
    row("FMA4 ", extended, ecx, 16);
    row("AVX2 ", 7, ebx, 5);
    row("AVX512F ", 7, ebx, 16);
    row("AVX512CD ", 7, ebx, 28);
    row("AVX512PF ", 7, ebx, 26);
    row("AVX512ER ", 7, ebx, 27);
    row("AVX512VL ", 7, ebx, 31);
    row("AVX512BW ", 7, ebx, 30);
    row("AVX512DQ ", 7, ebx, 17);
    row("AVX512IFMA ", 7, ebx, 21);
    row("AVX512VBMI ", 7, ecx, 1);
}

// One bit alone gives one name alone; whether the operating system lets programs use it is not asked.
void TestCpuIdentity::eachFeature()
{
    QFETCH(quint32, leaf);
    QFETCH(Part, part);
    QFETCH(int, bit);
    Leaves leaves{{0, {7, 0, 0, 0}}, {0x80000000, {0x80000001, 0, 0, 0}}};
    leaves[leaf].*part = 1U << bit;
    QCOMPARE(cpuIdentity(processorWith(leaves)).instructions, QString::fromLatin1(QTest::currentDataTag()));
    for (CpuidRegisters &registers : leaves) {
        registers.ebx = registers.ecx = registers.edx = 0xffffffff;
    }
    leaves[leaf].*part = ~(1U << bit);
    QVERIFY(!cpuIdentity(processorWith(leaves))
                 .instructions.split(QLatin1Char(' '))
                 .contains(QString::fromLatin1(QTest::currentDataTag()).trimmed()));
}

// Intel processors return the values of their highest leaf there.
void TestCpuIdentity::leavesAboveTheHighestCountAsZeros()
{
    const CpuIdentity identity = cpuIdentity([](quint32 leaf) {
        if (leaf == 0)
            return vendorLeaf(1, "GenuineIntel");
        if (leaf == 1)
            return CpuidRegisters{0, 2U << 16, 0, 1U << 23};
        if (leaf == 0x80000000)
            return CpuidRegisters{0x80000000, 0, 0, 0};
        return CpuidRegisters{0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff};
    });
    QCOMPARE(identity.brand, QString());
    QCOMPARE(identity.cores, 1);
    QCOMPARE(identity.logical, 2);
    QCOMPARE(identity.instructions, QStringLiteral("MMX "));
}

void TestCpuIdentity::amdWithoutItsCountingLeaf()
{
    const CpuIdentity identity = cpuIdentity(processorWith({{0, vendorLeaf(1, "AuthenticAMD")},
                                                            {1, {0, 4U << 16, 0, 0}},
                                                            {0x80000000, {0x80000007, 0, 0, 0}},
                                                            {0x80000008, {0, 0, 3, 0}}}));
    QCOMPARE(identity.cores, 1);
    QCOMPARE(identity.logical, 4);
}

void TestCpuIdentity::nameIsNotTrimmed()
{
    // "  ab" and nothing more
    const CpuIdentity identity =
        cpuIdentity(processorWith({{0x80000000, {0x80000004, 0, 0, 0}}, {0x80000002, {0x62612020, 0x20, 0, 0}}}));
    QCOMPARE(identity.brand, QStringLiteral("  ab "));
}

void TestCpuIdentity::nameMayFillAllItsBytes()
{
    const CpuidRegisters letters{0x61616161, 0x61616161, 0x61616161, 0x61616161};
    const CpuIdentity identity = cpuIdentity(processorWith({{0x80000000, {0x80000008, 0, 0, 0}},
                                                            {0x80000002, letters},
                                                            {0x80000003, letters},
                                                            {0x80000004, letters},
                                                            {0x80000005, letters}}));
    QCOMPARE(identity.brand, QString(48, QLatin1Char('a')));
}

void TestCpuIdentity::nameIsLatin1()
{
    const CpuIdentity identity =
        cpuIdentity(processorWith({{0x80000000, {0x80000004, 0, 0, 0}}, {0x80000002, {0xae41, 0, 0, 0}}}));
    QCOMPARE(identity.brand, QString::fromUtf8("A®"));
}

void TestCpuIdentity::nameOfFewerLeaves()
{
    const CpuidRegisters letters{0x61616161, 0x61616161, 0x61616161, 0x61616161};
    const CpuIdentity identity = cpuIdentity(processorWith(
        {{0x80000000, {0x80000003, 0, 0, 0}}, {0x80000002, letters}, {0x80000003, letters}, {0x80000004, letters}}));
    QCOMPARE(identity.brand, QString(32, QLatin1Char('a')));
}

void TestCpuIdentity::procCpuinfo_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("brand");
    QTest::addColumn<int>("cores");
    QTest::addColumn<int>("logical");
    QTest::newRow("two packages of two cores with two threads")
        << QByteArray("processor\t: 0\nmodel name\t: Some CPU @ 2GHz\nphysical id\t: 0\ncpu cores\t: 2\n\n"
                      "processor\t: 1\nmodel name\t: Some CPU @ 2GHz\nphysical id\t: 0\ncpu cores\t: 2\n\n"
                      "processor\t: 2\nmodel name\t: Some CPU @ 2GHz\nphysical id\t: 1\ncpu cores\t: 2\n\n"
                      "processor\t: 3\nmodel name\t: Some CPU @ 2GHz\nphysical id\t: 1\ncpu cores\t: 2\n")
        << QStringLiteral("Some CPU @ 2GHz") << 4 << 4;
    QTest::newRow("ARM: no count of cores, the board's name at the end")
        << QByteArray("processor\t: 0\nBogoMIPS\t: 108.00\nCPU implementer\t: 0x41\n\nprocessor\t: 1\nBogoMIPS\t: "
                      "108.00\n\nRevision\t: c03114\nModel\t\t: Raspberry Pi 4 Model B Rev 1.4\n")
        << QStringLiteral("Raspberry Pi 4 Model B Rev 1.4") << 2 << 2;
    QTest::newRow("empty") << QByteArray() << QString() << 0 << 0;
    QTest::newRow("no colons") << QByteArray("processor 0\nmodel name x") << QString() << 0 << 0;
}

void TestCpuIdentity::procCpuinfo()
{
    QFETCH(QByteArray, text);
    const CpuIdentity identity = cpuIdentityFromProc(text);
    QTEST(identity.brand, "brand");
    QTEST(identity.cores, "cores");
    QTEST(identity.logical, "logical");
    QCOMPARE(identity.instructions, QString());
}

QTEST_APPLESS_MAIN(TestCpuIdentity)
#include "tst_cpuidentity.moc"
