#pragma once

#include "probes/machinefactsreader.h"

#include <QObject>
#include <QTimer>

namespace Ui {
class NDIWindow;
}

/// The tabs DEVICE, SYSTEM and NETWORK: what they show of the machine and which of them is in front.
/// GUI thread; the form has to live as long.
class MachineTabs final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MachineTabs)

public:
    MachineTabs(const Ui::NDIWindow *form, AdapterProbes probes, QObject *parent = nullptr);

    /// 0 DEVICE, 1 SYSTEM, any other NETWORK.
    void showInfoTab(int index);
    /// Fills DEVICE and SYSTEM, and starts the uptime.
    void fill();
    /// Begins to gather the network adapters, shows them when they are there, and shows the build number.
    void fillNetwork();

private:
    void updateUptime();
    void takeAdapters(const NetworkAdapters &adapters);
    void takeLinkSpeed(int index, const QString &linkSpeed);
    void showAdapter(int index);

    const Ui::NDIWindow *ui;
    QTimer uptimeTimer; ///< 100 ms
    NetworkAdapters m_adapters;
    MachineFactsReader m_reader;
};
