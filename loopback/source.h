#pragma once

#include "loopback/itemmaker.h"
#include "loopback/platform.h"
#include "loopback/receiver.h"
#include "loopback/scenario.h"
#include "loopback/timeline.h"
#include "loopback/truthlog.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace loopback {

/// A source of frames. Its clock starts with its first receiver and then runs on for ever; a thread
/// of its own paces the frames while there are receivers. One thread per source in use, because
/// then a big picture being drawn delays no other source, and sources that are only listed cost
/// nothing. Any thread.
class Source final {
public:
    /// `spec` and `truth` must outlive it. `ordinal` is its place in the scenario.
    Source(const SourceSpec &spec, int ordinal, TruthLog &truth);
    ~Source();
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    const SourceSpec &spec() const { return m_spec; }

    /// Frames flow to the receiver from `joinNs` of the steady clock on.
    void add(std::shared_ptr<Receiver> receiver, std::int64_t joinNs);
    /// After it nothing reaches the receiver. Waits for the thread if it was the last one.
    void remove(const Receiver *receiver);
    /// Sends no more frames to anyone.
    void removeAll();

    /// For a receiver that pulls its frames: plays the source from its beginning, as fast as it is
    /// asked.
    std::unique_ptr<Feed> makeFeed(int receiverOrdinal);

    /// When the clock started, steady clock; nullopt before the first receiver.
    std::optional<std::int64_t> clockStartNs() const;
    /// Whether an event keeps it out of the discovery list now; `changeNs` becomes the time of the
    /// next change if that is earlier.
    bool isVanished(std::int64_t nowNs, std::int64_t &changeNs) const;
    /// Whether isVanished() can ever be true.
    bool canVanish() const { return m_canVanish; }

    const FramePool &pool() const { return m_maker.pool(); }

private:
    void run();
    void deliver(const Step &step, std::optional<QueueItem> item);
    void stopThread();

    const SourceSpec &m_spec;
    const int m_ordinal;
    TruthLog &m_truth;
    const bool m_canVanish;
    ItemMaker m_maker;
    DeadlineTimer m_timer;
    std::mutex m_controlMutex;                      ///< start and stop of the thread
    std::thread m_thread;                           ///< guarded by m_controlMutex
    std::unique_ptr<Timeline> m_timeline;           ///< the thread's; under m_controlMutex without one
    std::optional<Step> m_step;                     ///< likewise: taken and not delivered yet
    std::int64_t m_resumeNs = 0;                    ///< set before the thread starts: what was due earlier is past
    std::vector<Window> m_vanished;                 ///< set before m_startNs, constant then
    std::atomic<std::int64_t> m_startNs{INT64_MIN}; ///< INT64_MIN: the clock stands
    std::mutex m_receiversMutex;
    std::vector<std::shared_ptr<Receiver>> m_receivers; ///< guarded by m_receiversMutex
};

} // namespace loopback
