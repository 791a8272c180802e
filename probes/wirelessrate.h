#pragma once

#include <QByteArray>

#include <optional>

/// The content of the first netlink attribute of this type in a row of attributes; empty optional when
/// there is none or the row is damaged before it.
std::optional<QByteArray> netlinkAttribute(const QByteArray &attributes, quint16 type);

/// The rate at which this machine sends, whole Mbit/s, from the attributes of an nl80211 station message.
std::optional<int> stationRateMbps(const QByteArray &attributes);
