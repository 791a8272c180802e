#pragma once

#include <QObject>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

class QThread;

/// recoverJournals() on a thread of its own, which ends with the object. Owner: the life of the program; made
/// and destroyed on one thread, with an event loop in between.
class BackgroundRecovery final {
public:
    /// tell is called on this thread, once at most, not when there is nothing to tell or the object is gone by then.
    explicit BackgroundRecovery(const std::function<void(const QStringList &)> &tell);
    /// Waits for the journal that is being dealt with; the next start takes those that are left.
    ~BackgroundRecovery();
    BackgroundRecovery(const BackgroundRecovery &) = delete;
    BackgroundRecovery &operator=(const BackgroundRecovery &) = delete;

private:
    std::atomic<bool> m_isEnough{false};
    std::mutex m_mutex;
    QStringList m_lines; ///< guarded by m_mutex
    QObject m_listener;  ///< what the thread has still sent to it goes with it
    const std::unique_ptr<QThread> m_thread;
};
