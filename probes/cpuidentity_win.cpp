#include "probes/cpuinfo.h"

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

void getCpuInfo(QString &brand, int &cores, int &logical, QString &instructions)
{
    const CpuIdentity identity = cpuIdentity(runCpuid);
    brand = identity.brand;
    cores = identity.cores;
    logical = identity.logical;
    instructions = identity.instructions;
}
