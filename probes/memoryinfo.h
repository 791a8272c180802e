#pragma once

#include <QString>

/// Bytes as GiB with one decimal, rounded half up, in single precision.
float gibibytes(quint64 bytes);

/// As it is shown: 16 gives "16G", 15.9 gives "15.9G".
QString memoryText(float gib);

/// Physical memory that the operating system has, in GiB with one decimal; 0 when it cannot be told.
/// Takes microseconds; any thread.
float getTotalMemoryGB();
