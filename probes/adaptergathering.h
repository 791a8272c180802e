#pragma once

#include "probes/machinefactsreader.h"

/// One run of a MachineFactsReader, on its thread.
class AdapterGathering final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AdapterGathering)

public:
    /// Once the flag is set, by any thread, it sends no signal any more.
    AdapterGathering(AdapterProbes probes, std::shared_ptr<const std::atomic<bool>> abort)
        : m_probes(std::move(probes)), m_abort(std::move(abort))
    {
    }

public slots:
    void run();

signals:
    void adaptersRead(const QVector<NetworkAdapterInfo> &adapters);
    void linkSpeedRead(int index, const QString &linkSpeed);
    void finished();

private:
    AdapterProbes m_probes;
    std::shared_ptr<const std::atomic<bool>> m_abort;
};
