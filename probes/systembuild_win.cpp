#include "probes/systembuild.h"

#include <QOperatingSystemVersion>

QString systemBuildVersion()
{
    return QString::number(QOperatingSystemVersion::current().microVersion());
}
