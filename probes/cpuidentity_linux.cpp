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

CpuIdentity ownCpuIdentity()
{
    return cpuIdentity(runCpuid);
}
