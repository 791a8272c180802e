#pragma once

#include "ndi/nditypes.h"

#include <QMetaType>

Q_DECLARE_METATYPE(const NDIlib_source_t *)
Q_DECLARE_METATYPE(uint8_t *)

/// Makes the pointer types that our signals carry known to Qt under the names in the signatures, so
/// that they may cross threads. Call before the first connection; repeated calls do no harm.
void registerNdiMetaTypes();
