#include "probes/interfacerecords.h"

#include <algorithm>

namespace {

QString enabledText(std::optional<bool> isEnabled)
{
    if (!isEnabled)
        return {};
    return *isEnabled ? QStringLiteral("Enabled") : QStringLiteral("Disabled");
}

const DefaultRoute *routeOf(const QString &interfaceName, const QVector<DefaultRoute> &routes)
{
    const auto found = std::find_if(routes.begin(), routes.end(), [&interfaceName](const DefaultRoute &route) {
        return route.interfaceName == interfaceName;
    });
    return found == routes.end() ? nullptr : &*found;
}

} // namespace

NetworkAdapters interfaceRecords(const QVector<InterfaceFacts> &interfaces, const QVector<DefaultRoute> &routes)
{
    struct Placed {
        std::ptrdiff_t place;
        NetworkAdapterInfo adapter;
    };
    QVector<Placed> placed;
    for (const InterfaceFacts &facts : interfaces) {
        if (facts.isLoopback)
            continue;
        const DefaultRoute *route = routeOf(facts.name, routes);
        NetworkAdapterInfo adapter;
        adapter.name = facts.name;
        adapter.description = facts.deviceName;
        adapter.autoConfiguration = enabledText(facts.isAutoConfigurable);
        if (facts.isPermanent)
            adapter.dhcp = enabledText(!*facts.isPermanent);
        adapter.ipv4Address = facts.ipv4Address;
        adapter.subnetMask = facts.subnetMask;
        if (route)
            adapter.defaultGateway = route->gateway;
        placed.append({route ? route - routes.data() : routes.size(), adapter});
    }
    std::stable_sort(placed.begin(), placed.end(), [](const Placed &a, const Placed &b) { return a.place < b.place; });
    NetworkAdapters adapters;
    for (const Placed &entry : placed)
        adapters.append(entry.adapter);
    return adapters;
}
