#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// A default route for IPv4.
struct DefaultRoute {
    QString interfaceName;
    QString gateway; ///< dotted; empty for a link that needs none
    quint32 metric = 0;
};

/// The default routes that are up, from the text of /proc/net/route, the preferred one first.
QVector<DefaultRoute> defaultRoutes(const QByteArray &routeTable);
