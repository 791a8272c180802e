#pragma once

#include <QString>

/// Time since the machine was started, sleep included, as "days : hours : minutes : seconds" without padding.
QString uptimeText(quint64 uptimeMs);

/// Milliseconds since the machine was started, sleep included. Takes less than a microsecond; any thread.
quint64 systemUptimeMs();
