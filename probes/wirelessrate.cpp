#include "probes/wirelessrate.h"

#include <cstring>

namespace {

// Types of attributes, from linux/nl80211.h: fixed for ever, as the kernel's interface is.
constexpr quint16 stationInfo = 21;
constexpr quint16 sendRate = 8;
constexpr quint16 bitrate16 = 1;
constexpr quint16 bitrate32 = 5;

template <typename Number>
std::optional<Number> numberIn(const std::optional<QByteArray> &content)
{
    if (!content || content->size() < int(sizeof(Number)))
        return std::nullopt;
    Number number;
    std::memcpy(&number, content->constData(), sizeof(number));
    return number;
}

} // namespace

std::optional<QByteArray> netlinkAttribute(const QByteArray &attributes, quint16 type)
{
    constexpr int headSize = 4;
    constexpr quint16 typeMask = 0x3fff; // above it are flags
    int at = 0;
    while (attributes.size() - at >= headSize) {
        quint16 length = 0;
        quint16 found = 0;
        std::memcpy(&length, attributes.constData() + at, sizeof(length));
        std::memcpy(&found, attributes.constData() + at + sizeof(length), sizeof(found));
        if (length < headSize || length > attributes.size() - at)
            return std::nullopt;
        if ((found & typeMask) == type)
            return attributes.mid(at + headSize, length - headSize);
        const int next = at + ((length + 3) & ~3); // each begins at a multiple of four
        if (next > attributes.size())
            return std::nullopt;
        at = next;
    }
    return std::nullopt;
}

std::optional<int> stationRateMbps(const QByteArray &attributes)
{
    const std::optional<QByteArray> station = netlinkAttribute(attributes, stationInfo);
    const std::optional<QByteArray> rate = station ? netlinkAttribute(*station, sendRate) : std::nullopt;
    if (!rate)
        return std::nullopt;
    // In units of 100 kbit/s; fast links fit only in the longer one.
    std::optional<quint32> tenths = numberIn<quint32>(netlinkAttribute(*rate, bitrate32));
    if (!tenths)
        tenths = numberIn<quint16>(netlinkAttribute(*rate, bitrate16));
    if (!tenths || *tenths < 10)
        return std::nullopt;
    return static_cast<int>(*tenths / 10);
}
