#pragma once

#include "probes/networkadapterinfo.h"

/// The adapters in the output of `ipconfig /all`, in its order, without their link speeds. Understands
/// the English output. A section without any of the six keys is left out unless it is the last one.
NetworkAdapters parseIpconfig(const QString &output);
