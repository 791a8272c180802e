#pragma once

#include "probes/networkadapterinfo.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>

class QThread;

/// How the slow facts are gathered. Both run on the reader's thread and should end soon after the flag
/// is set; tests pass their own.
struct AdapterProbes {
    std::function<NetworkAdapters(const std::atomic<bool> &abort)> adapters;
    std::function<QString(const NetworkAdapterInfo &adapter, const std::atomic<bool> &abort)> linkSpeed;

    /// readNetworkAdapters() and getLinkSpeed().
    static AdapterProbes ofThisMachine();
};

/// Gathers the facts about this machine that may take long, the network adapters and their link speeds,
/// on a thread of its own, so that nobody waits for them. Belongs to its owner's thread, where its
/// signals arrive; the owner needs an event loop.
class MachineFactsReader final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MachineFactsReader)

public:
    explicit MachineFactsReader(QObject *parent = nullptr);
    explicit MachineFactsReader(AdapterProbes probes, QObject *parent = nullptr);
    /// Takes at most 200 ms. A call into the system that hangs is left behind on its thread.
    ~MachineFactsReader() override;

    /// Begins to gather, and returns at once. A gathering that is under way is given up without a signal.
    void start();

signals:
    /// Once per start(); the link speeds are still empty. Empty when the system tells of no adapter.
    void adaptersRead(const QVector<NetworkAdapterInfo> &adapters);
    /// After adaptersRead(), for each adapter that has a link speed. index: its place in that list.
    void linkSpeedRead(int index, const QString &linkSpeed);
    /// The last signal of a start().
    void finished();

private:
    void stop();

    AdapterProbes m_probes;
    std::unique_ptr<QThread> m_thread;          // empty before the first start() and after stop()
    std::shared_ptr<std::atomic<bool>> m_abort; // of the run on m_thread, which may outlive this object
    int m_run = 0;                              // counts start()
};
