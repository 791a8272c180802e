#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// What the cpuid instruction leaves in the four registers.
struct CpuidRegisters {
    quint32 eax = 0;
    quint32 ebx = 0;
    quint32 ecx = 0;
    quint32 edx = 0;
};

/// Runs cpuid for a leaf, sub-leaf 0.
using CpuidSource = std::function<CpuidRegisters(quint32 leaf)>;

/// How a processor names and counts itself.
struct CpuIdentity {
    QString brand;        ///< as the processor gives it, blanks at either end included
    int cores = 0;        ///< of one package
    int logical = 0;      ///< of one package
    QString instructions; ///< each name followed by one blank; empty when none is known
};

/// Reads the leaves it needs from the source. A leaf above the highest that the processor has counts as
/// all zeros, whatever the instruction would return. cores and logical are what the leaves reserve room
/// for, which on many processors is more than there is.
CpuIdentity cpuIdentity(const CpuidSource &cpuid);

/// The same from the text of /proc/cpuinfo, for a processor without cpuid; no instructions.
CpuIdentity cpuIdentityFromProc(const QByteArray &cpuinfo);

/// Of the processor that the calling thread runs on. Takes microseconds; any thread.
CpuIdentity ownCpuIdentity();
