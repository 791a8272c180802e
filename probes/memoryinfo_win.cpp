#include "probes/memoryinfo.h"

#include <windows.h>

float getTotalMemoryGB()
{
    MEMORYSTATUSEX status{};
    static_assert(sizeof(status) == 64);
    status.dwLength = sizeof(status);
    return GlobalMemoryStatusEx(&status) ? gibibytes(status.ullTotalPhys) : 0;
}
