#include "mainwindow/machinetabs.h"

#include "probes/cpuinfo.h"
#include "probes/displayinfo.h"
#include "probes/memoryinfo.h"
#include "probes/systembuild.h"
#include "probes/uptime.h"
#include "ui_ndiwindow.h"

#include <QSysInfo>

#include <array>

namespace {

constexpr int uptimeIntervalMs = 100;

} // namespace

MachineTabs::MachineTabs(const Ui::NDIWindow *form, AdapterProbes probes, QObject *parent)
    : QObject(parent), ui(form), m_reader(std::move(probes))
{
    connect(&uptimeTimer, &QTimer::timeout, this, &MachineTabs::updateUptime);
    connect(&m_reader, &MachineFactsReader::adaptersRead, this, &MachineTabs::takeAdapters);
    connect(&m_reader, &MachineFactsReader::linkSpeedRead, this, &MachineTabs::takeLinkSpeed);
    connect(ui->cmbNetworkAdapters, qOverload<int>(&QComboBox::currentIndexChanged), this, &MachineTabs::showAdapter);
}

void MachineTabs::showInfoTab(int index)
{
    struct Tab {
        QToolButton *button;
        QWidget *pane;
    };
    const std::array<Tab, 3> tabs{
        {{ui->btn_dev, ui->dev_info}, {ui->btn_system, ui->sys_info}, {ui->btn_network, ui->net_info}}};
    const std::size_t chosen = index == 0 || index == 1 ? static_cast<std::size_t>(index) : 2;
    for (const Tab &tab : tabs) {
        const bool inFront = &tab == &tabs[chosen];
        const QString look = inFront ? QStringLiteral("background-color:#202020;color:#15cfbb;border:none;"
                                                      "border-top-left-radius:5px;border-top-right-radius:5px;")
                                     : QStringLiteral("background-color:#1a1a1a;color:#424242;border:none;"
                                                      "border-top-left-radius:5px;border-top-right-radius:5px;");
        tab.button->setStyleSheet(QStringLiteral("#%1{%2}").arg(tab.button->objectName(), look));
        tab.pane->hide(); // all of them first: two at a time would make the window grow
    }
    tabs[chosen].pane->show();
}

void MachineTabs::fill()
{
    QString brand;
    QString instructions;
    int cores = 0;
    int logical = 0;
    getCpuInfo(brand, cores, logical, instructions);
    ui->label_cpu_val->setText(brand);
    ui->label_cores_val->setText(QString::number(cores));
    ui->label_logical_val->setText(QString::number(logical));
    ui->label_instruction_val->setText(instructions);
    ui->label_memory_val->setText(memoryText(getTotalMemoryGB()));

    QStringList adapters;
    QStringList modes;
    getDisplayInfo(adapters, modes);
    ui->label_gpu_val->setText(adapters.join(QLatin1Char('\n')));
    ui->label_system_val->setText(QSysInfo::prettyProductName());
    ui->label_display_val->setText(modes.join(QLatin1Char('\n')));
    ui->label_gpu_driver->setText(QStringLiteral("Host Name"));
    ui->label_gpu_driver_val->setText(QSysInfo::machineHostName());
    ui->w23->setToolTip(tr("Name of this computer in the network"));

    ui->widSystemUptime->hide();
    uptimeTimer.start(uptimeIntervalMs);
}

void MachineTabs::updateUptime()
{
    const QString text = uptimeText(systemUptimeMs());
    if (ui->lblUptimeValue->text() != text)
        ui->lblUptimeValue->setText(text);
    ui->widSystemUptime->setVisible(true);
}

void MachineTabs::fillNetwork()
{
    m_reader.start();
    ui->widSystemBuildVersion->show();
    ui->lblSystemBuildVersionValue->setText(systemBuildVersion());
}

void MachineTabs::takeAdapters(const NetworkAdapters &adapters)
{
    m_adapters = adapters; // before the combo box asks for them
    ui->cmbNetworkAdapters->clear();
    for (const NetworkAdapterInfo &adapter : adapters)
        ui->cmbNetworkAdapters->addItem(adapter.name);
    if (adapters.isEmpty())
        ui->btn_network->setEnabled(false);
    else
        ui->cmbNetworkAdapters->setCurrentIndex(0);
}

void MachineTabs::takeLinkSpeed(int index, const QString &linkSpeed)
{
    if (index < 0 || index >= m_adapters.size())
        return;
    m_adapters[index].linkSpeed = linkSpeed;
    if (index == ui->cmbNetworkAdapters->currentIndex())
        showAdapter(index);
}

void MachineTabs::showAdapter(int index)
{
    if (index < 0 || index >= m_adapters.size())
        return;
    const NetworkAdapterInfo &adapter = m_adapters.at(index);
    const auto show = [](QWidget *row, QLabel *value, const QString &text) {
        value->setText(text);
        row->setVisible(!text.isEmpty());
    };
    show(ui->widNetDescription, ui->lblNetDescriptionValue, adapter.description);
    show(ui->widNetLinkSpeed, ui->lblNetLinkSpeedValue, adapter.linkSpeed);
    show(ui->widNetAutoConfiguration, ui->lblNetAutoConfigurationValue, adapter.autoConfiguration);
    show(ui->widNetDHCP, ui->lblNetDHCPValue, adapter.dhcp);
    show(ui->widNetIPAddress, ui->lblNetIPAddressValue, adapter.ipv4Address);
    show(ui->widNetSubnet, ui->lblNetSubnetValue, adapter.subnetMask);
    show(ui->widNetGateway, ui->lblNetGatewayValue, adapter.defaultGateway);
}
