#pragma once

#include "ndi/ndisource.h"

#include <QVector>

/// In the place of a number of sources: no finder could be made.
constexpr int noFinderCount = 10000;
/// In the place of a number of sources: none appeared while the finder waited.
constexpr int noSourceCount = 10001;

/// A list of sources in memory of its own, in the shape of the runtime's array. The runtime's dies
/// with the next call on its finder, so whatever is to be kept is taken into one of these at once.
class SourceList final {
public:
    SourceList() = default;
    /// Copies the runtime's array. A count beyond 100 000 cannot be true: it is reported on the log once, and the list
    /// then ends before the first entry that is unreadable or has no name, or after 100 000 entries.
    SourceList(const NDIlib_source_t *sources, std::uint32_t count);

    int count() const { return m_array.size(); }
    /// The array, null when it is empty; good while this object or a copy of it lives unchanged.
    const NDIlib_source_t *data() const { return m_array.isEmpty() ? nullptr : m_array.constData(); }
    const NdiSource &at(int index) const { return m_owned.at(index); }

private:
    QVector<NdiSource> m_owned;
    QVector<NDIlib_source_t> m_array; ///< points into m_owned's bytes
};
