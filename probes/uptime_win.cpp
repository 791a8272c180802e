#include "probes/uptime.h"

#include <windows.h>

quint64 systemUptimeMs()
{
    return GetTickCount64();
}
