#include "probes/machinefactsreader.h"

#include "probes/adaptergathering.h"
#include "probes/linkspeed.h"
#include "probes/networkadapters.h"

#include <QThread>

AdapterProbes AdapterProbes::ofThisMachine()
{
    return {readNetworkAdapters, [](const NetworkAdapterInfo &adapter, const std::atomic<bool> &abort) {
                return getLinkSpeed(linkSpeedKey(adapter), abort);
            }};
}

MachineFactsReader::MachineFactsReader(QObject *parent) : MachineFactsReader(AdapterProbes::ofThisMachine(), parent) {}

MachineFactsReader::MachineFactsReader(AdapterProbes probes, QObject *parent)
    : QObject(parent), m_probes(std::move(probes))
{
    qRegisterMetaType<QVector<NetworkAdapterInfo>>();
}

MachineFactsReader::~MachineFactsReader()
{
    stop();
}

void MachineFactsReader::start()
{
    Q_ASSERT(QThread::currentThread() == thread());
    stop();
    m_thread = std::make_unique<QThread>();
    m_thread->setObjectName(QStringLiteral("machine facts"));
    m_abort = std::make_shared<std::atomic<bool>>(false);
    auto *gathering = new AdapterGathering(m_probes, m_abort);
    gathering->moveToThread(m_thread.get());
    connect(m_thread.get(), &QThread::started, gathering, &AdapterGathering::run);
    connect(m_thread.get(), &QThread::finished, gathering, &QObject::deleteLater);
    // What an earlier run has sent may still be on its way.
    const int run = ++m_run;
    connect(gathering, &AdapterGathering::adaptersRead, this, [this, run](const NetworkAdapters &adapters) {
        if (run == m_run)
            emit adaptersRead(adapters);
    });
    connect(gathering, &AdapterGathering::linkSpeedRead, this, [this, run](int index, const QString &linkSpeed) {
        if (run == m_run)
            emit linkSpeedRead(index, linkSpeed);
    });
    connect(gathering, &AdapterGathering::finished, this, [this, run] {
        if (run == m_run)
            emit finished();
    });
    m_thread->start();
}

void MachineFactsReader::stop()
{
    if (!m_thread)
        return;
    *m_abort = true;
    m_thread->quit();
    constexpr unsigned long patienceMs = 180;
    if (!m_thread->wait(patienceMs)) {
        // It hangs in a call that nothing can end. Should it return, the thread deletes itself.
        QThread *thread = m_thread.release();
        connect(thread, &QThread::finished, thread, &QObject::deleteLater);
        if (thread->isFinished())
            thread->deleteLater();
    }
    m_thread.reset();
}
