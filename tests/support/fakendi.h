#pragma once

#include "ndi/ndifunctions.h"

#include <QByteArray>
#include <QVector>

#include <functional>
#include <vector>

/// What one call to capture gives.
struct FakeFrame {
    NDIlib_frame_type_e type = NDIlib_frame_type_none;
    NDIlib_video_frame_v2_t video;

    static FakeFrame ofType(int type);
    static FakeFrame ofVideo(int width, int height, int rateN, int rateD);
};

/// A scripted NDI runtime in the place of the real one, from construction to destruction. One at a
/// time. Every receiver plays the same script from its start; after its end captures bring nothing.
/// Settings may be changed and counts read at any time, by any thread.
class FakeNdi final {
public:
    struct Counts {
        int initialized = 0;
        int libraryLeft = 0; ///< calls of destroy
        int findersCreated = 0;
        int findersDestroyed = 0;
        int waits = 0;
        int created = 0;
        int destroyed = 0;
        int captures = 0;
        int videoFreed = 0;
        int audioFreed = 0;
        int misuses = 0; ///< dead handles, frames freed twice, structures not reset
    };

    FakeNdi();
    ~FakeNdi();
    FakeNdi(const FakeNdi &) = delete;
    FakeNdi &operator=(const FakeNdi &) = delete;

    void setScript(std::vector<FakeFrame> script);
    void setInitializeFails(bool fails);
    void setFinderFails(bool fails);
    void setReceiverFails(bool fails);
    /// One list for each query, an empty one when none is left; a wait is true while lists are left. A list is
    /// spoilt by the next call on the finder, as in the runtime.
    void setSourceLists(const QVector<QVector<QByteArray>> &lists);
    /// Called in every capture before it returns, with the number of that receiver's capture, 0-based.
    void setOnCapture(std::function<void(int)> onCapture);

    Counts counts() const;
    NDIlib_recv_create_v3_t lastSettings() const; ///< its strings are good while this object lives
    QByteArray lastSourceName() const;
    QByteArray lastReceiverName() const;
};
