#include "probes/systembuild.h"

#include <sys/utsname.h>

QString systemBuildVersion()
{
    utsname names{};
    return uname(&names) == 0 ? QString::fromLocal8Bit(names.release) : QString();
}
