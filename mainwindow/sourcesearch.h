#pragma once

#include "ndi/sourcefinder.h"

#include <QThread>

/// A SourceFinder and the thread that it keeps busy. GUI thread; the NDI library has to stay in use as long.
class SourceSearch final {
    Q_DISABLE_COPY_MOVE(SourceSearch)

public:
    /// Shows a message box when the runtime gives no finder.
    SourceSearch();
    /// Waits for the search under way.
    ~SourceSearch();

    const SourceFinder &finder() const { return sourceFinder; }

    /// Starts a search unless one is under way, and says whether it did.
    bool start();
    bool isRunning() const { return finderThread.isRunning(); }
    /// The thread ends after the search under way.
    void requestEnd();

private:
    SourceFinder sourceFinder; ///< lives on finderThread
    QThread finderThread;
};
