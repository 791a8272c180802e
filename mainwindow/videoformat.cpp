#include "mainwindow/videoformat.h"

#include <algorithm>
#include <array>

QString formatName(quint32 fourCC)
{
    static constexpr std::array<const char *, 9> names{"UYVY", "UYVA", "P216", "PA16", "YV12",
                                                       "I420", "NV12", "BGRA", "RGBA"};
    std::array<char, 4> letters{};
    for (std::size_t i = 0; i < letters.size(); ++i)
        letters[i] = static_cast<char>(fourCC >> (8 * i) & 0xFF);
    const QLatin1String name(letters.data(), static_cast<int>(letters.size()));
    const bool known =
        std::any_of(names.begin(), names.end(), [&](const char *one) { return name == QLatin1String(one); });
    return known ? QString(name) : QString();
}
