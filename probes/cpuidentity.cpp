#include "probes/cpuidentity.h"

#include <QHash>
#include <QSet>

#include <array>

namespace {

constexpr quint32 firstExtendedLeaf = 0x80000000;

struct Feature {
    const char *name;
    quint32 leaf;
    quint32 CpuidRegisters::*part;
    int bit;
};

// In the order in which they are shown.
constexpr std::array<Feature, 31> features{{
    {"MMX", 1, &CpuidRegisters::edx, 23},           {"x64", 0x80000001, &CpuidRegisters::edx, 29},
    {"ABM", 0x80000001, &CpuidRegisters::ecx, 5},   {"RDRAND", 1, &CpuidRegisters::ecx, 30},
    {"BMI1", 7, &CpuidRegisters::ebx, 3},           {"BMI2", 7, &CpuidRegisters::ebx, 8},
    {"ADX", 7, &CpuidRegisters::ebx, 19},           {"PREFETCHWT1", 7, &CpuidRegisters::ecx, 0},
    {"SSE", 1, &CpuidRegisters::edx, 25},           {"SSE2", 1, &CpuidRegisters::edx, 26},
    {"SSE3", 1, &CpuidRegisters::ecx, 0},           {"SSSE3", 1, &CpuidRegisters::ecx, 9},
    {"SSE41", 1, &CpuidRegisters::ecx, 19},         {"SSE42", 1, &CpuidRegisters::ecx, 20},
    {"SSE4a", 0x80000001, &CpuidRegisters::ecx, 6}, {"AES", 1, &CpuidRegisters::ecx, 25},
    {"SHA", 7, &CpuidRegisters::ebx, 29},           {"AVX", 1, &CpuidRegisters::ecx, 28},
    {"XOP", 0x80000001, &CpuidRegisters::ecx, 11},  {"FMA3", 1, &CpuidRegisters::ecx, 12},
    {"FMA4", 0x80000001, &CpuidRegisters::ecx, 16}, {"AVX2", 7, &CpuidRegisters::ebx, 5},
    {"AVX512F", 7, &CpuidRegisters::ebx, 16},       {"AVX512CD", 7, &CpuidRegisters::ebx, 28},
    {"AVX512PF", 7, &CpuidRegisters::ebx, 26},      {"AVX512ER", 7, &CpuidRegisters::ebx, 27},
    {"AVX512VL", 7, &CpuidRegisters::ebx, 31},      {"AVX512BW", 7, &CpuidRegisters::ebx, 30},
    {"AVX512DQ", 7, &CpuidRegisters::ebx, 17},      {"AVX512IFMA", 7, &CpuidRegisters::ebx, 21},
    {"AVX512VBMI", 7, &CpuidRegisters::ecx, 1},
}};

/// The cpuid instruction, with zeros for every leaf that the processor does not have: processors differ
/// in what they return there, and it is never about that leaf.
class Leaves final {
public:
    explicit Leaves(const CpuidSource &cpuid)
        : m_cpuid(cpuid), m_highestBasic(cpuid(0).eax), m_highestExtended(cpuid(firstExtendedLeaf).eax)
    {
    }

    CpuidRegisters read(quint32 leaf) const
    {
        const quint32 highest = leaf < firstExtendedLeaf ? m_highestBasic : m_highestExtended;
        return leaf <= highest ? m_cpuid(leaf) : CpuidRegisters{};
    }

private:
    const CpuidSource &m_cpuid;
    quint32 m_highestBasic;
    quint32 m_highestExtended;
};

void appendRegister(QByteArray &text, quint32 value)
{
    for (int byte = 0; byte < 4; ++byte)
        text.append(static_cast<char>((value >> (8 * byte)) & 0xff));
}

QByteArray vendorOf(const Leaves &leaves)
{
    const CpuidRegisters leaf = leaves.read(0);
    QByteArray vendor;
    appendRegister(vendor, leaf.ebx);
    appendRegister(vendor, leaf.edx);
    appendRegister(vendor, leaf.ecx);
    return vendor;
}

QString brandOf(const Leaves &leaves)
{
    QByteArray brand;
    for (const quint32 number : {0x80000002U, 0x80000003U, 0x80000004U}) {
        const CpuidRegisters leaf = leaves.read(number);
        for (const quint32 part : {leaf.eax, leaf.ebx, leaf.ecx, leaf.edx})
            appendRegister(brand, part);
    }
    const int end = brand.indexOf('\0');
    return QString::fromLatin1(end < 0 ? brand : brand.left(end));
}

int coresOf(const Leaves &leaves, const QByteArray &vendor, int logical)
{
    if (vendor == "GenuineIntel")
        return static_cast<int>((leaves.read(4).eax >> 26) & 0x3f) + 1;
    if (vendor == "AuthenticAMD")
        return static_cast<int>(leaves.read(0x80000008).ecx & 0xff) + 1;
    return logical;
}

} // namespace

CpuIdentity cpuIdentity(const CpuidSource &cpuid)
{
    const Leaves leaves(cpuid);
    CpuIdentity identity;
    identity.brand = brandOf(leaves);
    identity.logical = static_cast<int>((leaves.read(1).ebx >> 16) & 0xff);
    identity.cores = coresOf(leaves, vendorOf(leaves), identity.logical);
    QHash<quint32, CpuidRegisters> read;
    for (const quint32 leaf : {1U, 7U, 0x80000001U})
        read.insert(leaf, leaves.read(leaf));
    for (const Feature &feature : features) {
        if ((read.value(feature.leaf).*feature.part >> feature.bit) & 1)
            identity.instructions += QLatin1String(feature.name) + QLatin1Char(' ');
    }
    return identity;
}

CpuIdentity cpuIdentityFromProc(const QByteArray &cpuinfo)
{
    CpuIdentity identity;
    QSet<QByteArray> packages;
    int coresPerPackage = 0;
    for (const QByteArray &line : cpuinfo.split('\n')) {
        const int colon = line.indexOf(':');
        if (colon < 0)
            continue;
        const QByteArray key = line.left(colon).trimmed();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (key == "processor")
            ++identity.logical;
        else if (key == "physical id")
            packages.insert(value);
        else if (key == "cpu cores")
            coresPerPackage = value.toInt();
        else if ((key == "model name" || key == "Model" || key == "Hardware") && identity.brand.isEmpty())
            identity.brand = QString::fromUtf8(value);
    }
    identity.cores = coresPerPackage > 0 ? coresPerPackage * qMax(1, packages.size()) : identity.logical;
    return identity;
}
