#include "probes/cpuinfo.h"

#include "probes/cpuidentity.h"

void getCpuInfo(QString &brand, int &cores, int &logical, QString &instructions)
{
    const CpuIdentity identity = ownCpuIdentity();
    brand = identity.brand;
    cores = identity.cores;
    logical = identity.logical;
    instructions = identity.instructions;
}
