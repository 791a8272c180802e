#include "probes/cpuidentity.h"

#include <intrin.h>

namespace {

CpuidRegisters runCpuid(quint32 leaf)
{
    int registers[4] = {};
    __cpuidex(registers, static_cast<int>(leaf), 0);
    return {static_cast<quint32>(registers[0]), static_cast<quint32>(registers[1]), static_cast<quint32>(registers[2]),
            static_cast<quint32>(registers[3])};
}

} // namespace

CpuIdentity ownCpuIdentity()
{
    return cpuIdentity(runCpuid);
}
