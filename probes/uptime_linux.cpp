#include "probes/uptime.h"

#include <ctime>

quint64 systemUptimeMs()
{
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time); // fails only for an unknown clock
    return static_cast<quint64>(time.tv_sec) * 1000 + static_cast<quint64>(time.tv_nsec) / 1000000;
}
