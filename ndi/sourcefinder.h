#pragma once

#include "ndi/ndimetatypes.h"
#include "ndi/sourcelist.h"

#include <QObject>

/// Asks the NDI runtime once for the sources on the network, each time start() is called.
/// Made on the GUI thread (a failure shows a message box there), then moved to a worker thread that
/// start() keeps busy for up to five seconds. The owner joins that thread before deleting it.
class SourceFinder final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SourceFinder)

public:
    /// Result codes in the place of a count.
    static constexpr int finderFailed = noFinderCount;
    static constexpr int noSourceAppeared = noSourceCount;

    SourceFinder();
    ~SourceFinder() override;

signals:
    /// sources: an array of this object's, good until the next list but one has been sent; null with a
    /// result code. no: its length, or a result code.
    void didFindNIDSources(const NDIlib_source_t *sources, int no);
    /// The search is over; sent just before its result.
    void finished();

public slots:
    void start();

private:
    NDIlib_find_instance_t finder = nullptr;
    const NDIlib_source_t *sources = nullptr; ///< the array last sent
    int count = 0;
    SourceList m_current;
    SourceList m_previous; ///< may still lie unread in the window's event queue
};
