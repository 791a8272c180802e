// For processors that have no cpuid instruction.
#include "probes/cpuinfo.h"

#include "probes/cpuidentity.h"
#include "probes/sysfs_linux.h"

void getCpuInfo(QString &brand, int &cores, int &logical, QString &instructions)
{
    const CpuIdentity identity = cpuIdentityFromProc(readSystemFile(QStringLiteral("/proc/cpuinfo")));
    brand = identity.brand;
    cores = identity.cores;
    logical = identity.logical;
    instructions = identity.instructions;
}
