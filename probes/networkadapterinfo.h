#pragma once

#include <QMetaType>
#include <QString>
#include <QVector>

/// One network adapter, as it is shown. A field that is not known is empty.
struct NetworkAdapterInfo {
    QString name;
    QString description;
    QString autoConfiguration; ///< "Enabled" or "Disabled"
    QString dhcp;              ///< "Enabled" or "Disabled"
    QString ipv4Address;       ///< as the system prints it, with a suffix such as (Preferred)
    QString subnetMask;
    QString defaultGateway;
    QString linkSpeed; ///< "1000/1000Mbps"
};

using NetworkAdapters = QVector<NetworkAdapterInfo>;

Q_DECLARE_METATYPE(NetworkAdapterInfo)
