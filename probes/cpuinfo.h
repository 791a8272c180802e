#pragma once

#include <QString>

/// Asks the processor of the calling thread for its name, counts and instruction sets; see CpuIdentity.
/// Takes microseconds; any thread.
void getCpuInfo(QString &brand, int &cores, int &logical, QString &instructions);
