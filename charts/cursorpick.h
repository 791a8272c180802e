#pragma once

#include "charts/pointseries.h"

#include <optional>

/// The value of a series under the cursor: that of the point nearest in time among those in the cursor's
/// tenth of a second, the earliest in the list when several are equally near. Points beyond the end of
/// the axis count only where a drawn segment begins or ends with them, there with their time cut to the end.
/// cursorMs: 0 or more; axisMs: length of the axis. Empty when no point qualifies. Logarithmic in the
/// number of points while their times ascend, else linear.
std::optional<double> pickValue(const PointSeries &points, int cursorMs, double axisMs);
