#pragma once

#include <QString>

/// Windows: the build number, plain decimal. Linux: the release of the kernel. Any thread.
QString systemBuildVersion();
