#include "probes/routetable.h"

#include <QHostAddress>
#include <QtEndian>

#include <algorithm>
#include <optional>

namespace {

/// Addresses stand there as the hexadecimal number that their bytes make in this machine's memory.
std::optional<quint32> addressIn(const QByteArray &digits)
{
    bool ok = false;
    const quint32 number = digits.toUInt(&ok, 16);
    return ok ? std::make_optional(qFromBigEndian(number)) : std::nullopt;
}

/// Columns: interface, destination, gateway, flags, two counters, metric, mask.
std::optional<DefaultRoute> defaultRouteIn(const QByteArray &line)
{
    constexpr quint32 isUp = 1;
    constexpr quint32 isReject = 0x200;
    const QList<QByteArray> fields = line.simplified().split(' ');
    if (fields.size() < 8)
        return std::nullopt;
    bool flagsOk = false;
    bool metricOk = false;
    const quint32 flags = fields.at(3).toUInt(&flagsOk, 16);
    const quint32 metric = fields.at(6).toUInt(&metricOk);
    const std::optional<quint32> gateway = addressIn(fields.at(2));
    if (!flagsOk || !metricOk || !gateway || addressIn(fields.at(1)) != 0U || addressIn(fields.at(7)) != 0U)
        return std::nullopt;
    if ((flags & isUp) == 0 || (flags & isReject) != 0)
        return std::nullopt;
    return DefaultRoute{QString::fromLocal8Bit(fields.at(0)),
                        *gateway == 0 ? QString() : QHostAddress(*gateway).toString(), metric};
}

} // namespace

QVector<DefaultRoute> defaultRoutes(const QByteArray &routeTable)
{
    QVector<DefaultRoute> routes;
    for (const QByteArray &line : routeTable.split('\n')) {
        const std::optional<DefaultRoute> route = defaultRouteIn(line);
        if (route)
            routes.append(*route);
    }
    std::stable_sort(routes.begin(), routes.end(),
                     [](const DefaultRoute &a, const DefaultRoute &b) { return a.metric < b.metric; });
    return routes;
}
