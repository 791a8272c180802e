#include "probes/memoryinfo.h"

#include <cmath>

float gibibytes(quint64 bytes)
{
    constexpr float perStep = 1.0F / 1024;
    const float tenths = static_cast<float>(bytes) * perStep * perStep * perStep * 10.0F;
    // In double precision: the sum in single precision could itself round up.
    return static_cast<float>(std::floor(static_cast<double>(tenths) + 0.5) / 10);
}

QString memoryText(float gib)
{
    return QStringLiteral("%1G").arg(static_cast<double>(gib));
}
