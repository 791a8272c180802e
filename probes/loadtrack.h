#pragma once

#include "probes/loadabort.h"

#include <QObject>

#include <atomic>
#include <chrono>
#include <memory>

class LoadReader;

/// Measures about once a second how busy the processor and the graphics adapter are. Made without a
/// parent on its owner's thread, then moved to a QThread of its own, which start() keeps busy.
class LoadTrack final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LoadTrack)

public:
    LoadTrack();
    /// Takes the figures from another reader, with another pause between two cycles. For tests.
    LoadTrack(std::unique_ptr<LoadReader> reader, std::chrono::milliseconds pause);
    ~LoadTrack() override;

    /// The loop runs while it is true. The owner sets it before the thread starts; any thread may clear
    /// it. The cycle under way, up to 31 s, is still completed and reported.
    std::atomic<bool> running{false};

signals:
    /// One sample per cycle, whole percent; a figure that cannot be told is 0. cpuLoad: 0 to 100, 0 in
    /// the process's first cycle. gpuLoad: the sum of all engines, not limited to 100.
    void gpuCpuLoad(int cpuLoad, int gpuLoad);
    /// The loop has ended, or never began; once per start().
    void terminate();

public slots:
    /// Runs the loop; returns when running is false.
    void start();

private:
    friend class CpuGpuTrack;
    /// Ends the loop within about 100 ms: no sleep and no child process is waited for any longer. Only
    /// for the destructor of the owner. Any thread.
    void abort() { m_abort.request(); }

    std::unique_ptr<LoadReader> m_reader;
    std::chrono::milliseconds m_pause;
    LoadAbort m_abort;
};
