#pragma once

#include "probes/networkadapterinfo.h"
#include "probes/routetable.h"

#include <optional>

/// What Linux tells of one network interface.
struct InterfaceFacts {
    QString name;
    QString deviceName; ///< empty for a virtual interface
    bool isLoopback = false;
    QString ipv4Address; ///< its first one; empty when it has none
    QString subnetMask;
    std::optional<bool> isPermanent;        ///< the address has no lease; unknown without an address
    std::optional<bool> isAutoConfigurable; ///< takes addresses from router advertisements
};

/// The records of all interfaces but loopback: those of the default routes first, the preferred one in
/// front, then the others in the order given.
NetworkAdapters interfaceRecords(const QVector<InterfaceFacts> &interfaces, const QVector<DefaultRoute> &routes);
