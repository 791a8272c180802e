#include "probes/memoryinfo.h"

#include <sys/sysinfo.h>

float getTotalMemoryGB()
{
    struct sysinfo status {};
    return sysinfo(&status) == 0 ? gibibytes(quint64(status.totalram) * status.mem_unit) : 0;
}
