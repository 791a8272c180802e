// For processors that have no cpuid instruction.
#include "probes/cpuidentity.h"

#include "probes/sysfs_linux.h"

CpuIdentity ownCpuIdentity()
{
    return cpuIdentityFromProc(readSystemFile(QStringLiteral("/proc/cpuinfo")));
}
