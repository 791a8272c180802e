#include "probes/cpuinfo.h"

#include "probes/cpuidentity.h"

#include <cpuid.h>

namespace {

CpuidRegisters runCpuid(quint32 leaf)
{
    CpuidRegisters registers;
    __cpuid_count(leaf, 0, registers.eax, registers.ebx, registers.ecx, registers.edx);
    return registers;
}

} // namespace

void getCpuInfo(QString &brand, int &cores, int &logical, QString &instructions)
{
    const CpuIdentity identity = cpuIdentity(runCpuid);
    brand = identity.brand;
    cores = identity.cores;
    logical = identity.logical;
    instructions = identity.instructions;
}
