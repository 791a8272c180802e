#include "mainwindow/formatprobes.h"

#include "ndi/streamreceiver.h"

#include <QThread>
#include <QTimer>

#include <algorithm>

struct FormatProbes::Probe {
    int index = 0;
    bool wanted = true; ///< its answer is of the present list and has not come
    QThread thread;
    StreamReceiver receiver;
    QTimer patience;
};

FormatProbes::FormatProbes(int patienceMs, QObject *parent) : QObject(parent), m_patienceMs(patienceMs) {}

FormatProbes::~FormatProbes()
{
    stop();
    for (const std::unique_ptr<Probe> &probe : m_probes) {
        probe->thread.disconnect(this);
        probe->thread.quit();
        probe->thread.wait();
    }
}

void FormatProbes::start(const QVector<NdiSource> &sources)
{
    stop();
    m_sources = sources;
    for (int i = 0; i < sources.size(); ++i)
        m_waiting.push_back(i);
    launchWaiting();
}

void FormatProbes::stop()
{
    m_waiting.clear();
    for (const std::unique_ptr<Probe> &probe : m_probes) {
        probe->wanted = false;
        probe->patience.stop();
        probe->receiver.requestStop();
    }
}

void FormatProbes::launchWaiting()
{
    while (!m_waiting.empty() && m_probes.size() < atOnce) {
        const int index = m_waiting.front();
        m_waiting.pop_front();
        launch(index);
    }
}

void FormatProbes::launch(int index)
{
    m_probes.push_back(std::make_unique<Probe>());
    Probe *probe = m_probes.back().get();
    probe->index = index;
    probe->receiver.setSource(m_sources.at(index).view());
    probe->receiver.mode = StreamReceiver::InformationMode;
    probe->thread.setObjectName(QStringLiteral("format probe"));
    probe->receiver.moveToThread(&probe->thread);

    connect(&probe->thread, &QThread::started, &probe->receiver, &StreamReceiver::start);
    connect(&probe->receiver, &StreamReceiver::finished, &probe->thread, &QThread::quit, Qt::DirectConnection);
    connect(&probe->receiver, &StreamReceiver::streamInfo, this,
            [this, probe](double fps, int fourCC, int width, int height) {
                if (!probe->wanted)
                    return;
                probe->wanted = false;
                emit formatFound(probe->index, fps, fourCC, width, height);
            });
    connect(&probe->thread, &QThread::finished, this, [this, probe] { remove(probe); });

    probe->patience.setSingleShot(true);
    connect(&probe->patience, &QTimer::timeout, this, [this, probe] { giveUp(probe); });
    probe->patience.start(m_patienceMs);
    probe->thread.start(QThread::InheritPriority);
}

void FormatProbes::giveUp(Probe *probe)
{
    if (!probe->wanted)
        return;
    if (m_waiting.empty()) { // nobody needs the place
        probe->patience.start(m_patienceMs);
        return;
    }
    probe->wanted = false;
    m_waiting.push_back(probe->index);
    probe->receiver.requestStop();
}

void FormatProbes::remove(Probe *probe)
{
    const auto gone = std::find_if(m_probes.begin(), m_probes.end(),
                                   [probe](const std::unique_ptr<Probe> &one) { return one.get() == probe; });
    if (gone == m_probes.end())
        return;
    probe->thread.wait(); // finished() comes a moment before the thread has ended
    m_probes.erase(gone);
    launchWaiting();
    if (m_probes.empty())
        emit idle();
}
