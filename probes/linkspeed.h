#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <optional>

/// "1000/1000Mbps"
QString linkSpeedText(int megabitsPerSecond);

/// The same from the bits per second that Windows gives as text. A number of 2^31 or more, such as that
/// of a link of 10 Gbit/s, counts as 0, and so does a text that is no number.
QString linkSpeedOfBits(const QString &bitsPerSecond);

/// The content of /sys/class/net/IF/speed, Mbit/s; empty for a link that is down or has no speed.
std::optional<int> linkSpeedInSysfs(const QByteArray &content);

/// The link speed of one network adapter, empty when unknown. The adapter is named by its description on
/// Windows and by the name of its interface on Linux. Blocks: up to 30 s on Windows, and longer where the
/// management service itself hangs; setting the flag from another thread ends the wait for an answer
/// within 100 ms. Any thread; on Windows one without windows is best.
QString getLinkSpeed(const QString &adapter, const std::atomic<bool> &abort);
