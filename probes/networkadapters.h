#pragma once

#include "probes/networkadapterinfo.h"

#include <atomic>

/// The network adapters of this machine without their link speeds. Windows: those of `ipconfig /all`, in
/// its order. Linux: all interfaces but loopback, the one of the default route first. Blocks, on Windows
/// up to 30 s; setting the flag from another thread ends it within 100 ms. Needs no event loop.
NetworkAdapters readNetworkAdapters(const std::atomic<bool> &abort);

/// What names the adapter to getLinkSpeed().
QString linkSpeedKey(const NetworkAdapterInfo &adapter);
