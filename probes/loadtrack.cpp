#include "probes/loadtrack.h"

#include "probes/loadreader.h"

#include <QThread>

LoadTrack::LoadTrack() : LoadTrack(makeLoadReader(), std::chrono::seconds(1)) {}

LoadTrack::LoadTrack(std::unique_ptr<LoadReader> reader, std::chrono::milliseconds pause)
    : m_reader(std::move(reader)), m_pause(pause)
{
}

LoadTrack::~LoadTrack() = default;

void LoadTrack::start()
{
    Q_ASSERT(QThread::currentThread() == thread());
    while (running && m_abort.sleepFor(m_pause)) {
        const int cpuLoad = m_reader->processorPercent().value_or(0);
        const int gpuLoad = m_reader->graphicsPercent(m_abort).value_or(0);
        emit gpuCpuLoad(cpuLoad, gpuLoad);
    }
    emit terminate();
}
