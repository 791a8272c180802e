#pragma once

#include <optional>

/// The rate at which a wireless interface sends to its access point, whole Mbit/s, from the kernel
/// (nl80211). Empty when it is not connected or not wireless. Takes milliseconds, at most two seconds.
std::optional<int> wirelessRateMbps(unsigned interfaceIndex);
