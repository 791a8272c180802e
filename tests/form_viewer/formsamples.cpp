#include "tests/form_viewer/formsamples.h"

#include "mainwindow/customheader.h"
#include "mainwindow/resulttables.h"

#include <QCheckBox>

#include <array>
#include <cmath>

namespace {

const QString tabLook = QStringLiteral("#%1{%2border:none;border-top-left-radius:5px;border-top-right-radius:5px;}");
constexpr int lengthS = 60;

QString sourceName(int index)
{
    static const QStringList studios{QStringLiteral("STUDIO-A"), QStringLiteral("GALLERY 2"),
                                     QStringLiteral("OB-VAN 7"), QStringLiteral("PLAYOUT")};
    static const QStringList feeds{QStringLiteral("Camera 1"), QStringLiteral("Camera 2"), QStringLiteral("Programme"),
                                   QStringLiteral("Clean feed, without graphics and with a long name")};
    return QStringLiteral("%1 (%2 %3)").arg(studios.at(index % 4), feeds.at(index / 4 % 4)).arg(index + 1);
}

} // namespace

FormSample::FormSample()
{
    m_form.setupUi(this);
    QPalette palette = m_form.progress_viewer->palette();
    palette.setColor(QPalette::Window, QColor(32, 32, 32));
    palette.setColor(QPalette::AlternateBase, QColor(32, 32, 32));
    palette.setColor(QPalette::Highlight, QColor(21, 207, 187));
    palette.setColor(QPalette::Text, QColor(21, 207, 187));
    palette.setColor(QPalette::Base, QColor(23, 23, 23));
    palette.setColor(QPalette::Shadow, QColor(23, 23, 23));
    m_form.progress_viewer->setPalette(palette);
    m_form.progress_viewer->setFormat(QStringLiteral("%p"));
    m_form.progress_viewer->setValue(37.0);
    m_form.waiting_spinner->setColor(QColor(21, 207, 187));
    for (CustomPlot *chart :
         {m_form.fpsPlot, m_form.dataPlot, m_form.pingPlot, m_form.analysis_latency_plot, m_form.analysis_data_plot})
        chart->setupLayout();
    fillTables();
    fillTabs();
    for (int i = 0; i < m_checks.size(); ++i)
        m_form.sourceList->addItem(sourceName(i));
    m_form.label_videoFormat->setText(QStringLiteral("UYVY"));
    m_form.label_videoFPS->setText(QStringLiteral("59.9401fps"));
    m_form.label_videoWidth->setText(QStringLiteral("1920"));
    m_form.label_videoHeight->setText(QStringLiteral("1080"));
    m_form.L4->setText(QStringLiteral("59.9401fps"));
    m_form.L8->setText(QStringLiteral("17 ms"));
    m_form.lblDataRateValue->setText(QStringLiteral("15.4321MBps"));
    m_form.lblLatencyValue->setText(QStringLiteral("Avg: 12.3456mS  Min: 10.1234mS  Max: 23.4567mS"));
    for (int load = 0; load < lengthS; ++load)
        m_form.loadTrack->gpuCpuLoad(35 + load % 17, 10 + load % 7);
}

void FormSample::fillTables()
{
    constexpr int sources = 30;
    CustomHeader *const header = setUpSourceTable(m_form.sourceTable);
    setUpDetailTable(m_form.detailTable);
    setUpStatusTable(m_form.tblStatus);
    m_form.sourceTable->setRowCount(sources);
    m_form.detailTable->setRowCount(sources);
    for (int i = 0; i < sources; ++i) {
        const QString name = sourceName(i);
        m_checks.append(fillSourceRow(m_form.sourceTable, i, name));
        m_checks.last()->setChecked(i % 5 < 2 && i < 15);
        fillDetailRow(m_form.detailTable, i, name, QStringLiteral("192.168.100.%1:5961").arg(100 + i));
        if (i % 6 != 4)
            fillDetailFormat(m_form.detailTable, i, QStringLiteral("UYVY"), i % 2 ? 59 : 50, 1920, 1080);
    }
    updateStatusTable(m_form.tblStatus, *m_form.sourceTable, m_checks, header);
    for (int row = 0; row < m_form.tblStatus->rowCount(); ++row) {
        setCellText(m_form.tblStatus, row, 2, QStringLiteral("59.9401fps"));
        setCellText(m_form.tblStatus, row, 3, QStringLiteral("%1ms").arg(16 + row % 3));
    }
}

void FormSample::fillCharts(int receivers)
{
    m_form.fpsPlot->setMetaInfo(lengthS, 90, receivers);
    m_form.pingPlot->setMetaInfo(lengthS, 30, receivers);
    m_form.analysis_latency_plot->setMetaInfo(lengthS, 40, 1);
    m_form.analysis_data_plot->setMetaInfo(lengthS, 30, 1);
    for (int ms = 0; ms < 40000; ms += 250) {
        const double wave = std::sin(ms / 3000.0);
        for (int i = 0; i < receivers; ++i) {
            m_form.fpsPlot->appendNewData(i, ms, 60.0 - 4.0 * i + 1.5 * wave);
            m_form.pingPlot->appendNewData(i, ms, 16.0 + i + 2.0 * wave);
        }
        m_form.analysis_latency_plot->appendNewMultiData(0, ms, 10.0 + wave, 25.0 + 3.0 * wave, 15.0 + wave);
        m_form.analysis_data_plot->appendNewData(0, ms, 15.0 + wave);
    }
    orderFocus(m_form);
}

void FormSample::fillTabs()
{
    m_form.label_cpu_val->setText(QStringLiteral("11th Gen Intel(R) Core(TM) i7-11800H @ 2.30GHz"));
    m_form.label_cores_val->setText(QStringLiteral("8"));
    m_form.label_logical_val->setText(QStringLiteral("16"));
    m_form.label_instruction_val->setText(
        QStringLiteral("MMX x64 ABM RDRAND BMI1 BMI2 ADX SSE SSE2 SSE3 SSSE3 SSE41 SSE42 AES SHA AVX FMA3 AVX2 AVX512F "
                       "AVX512CD AVX512VL AVX512BW AVX512DQ AVX512IFMA AVX512VBMI "));
    m_form.label_memory_val->setText(QStringLiteral("31.7G"));
    m_form.label_gpu_val->setText(QStringLiteral("NVIDIA GeForce RTX 3070 Laptop GPU\nIntel(R) UHD Graphics"));
    m_form.label_system_val->setText(QStringLiteral("Windows 10 Version 2009"));
    m_form.lblSystemBuildVersionValue->setText(QStringLiteral("19045"));
    m_form.label_gpu_driver->setText(QStringLiteral("Host Name"));
    m_form.label_gpu_driver_val->setText(QStringLiteral("MEASURE-01"));
    m_form.label_display_val->setText(QStringLiteral("1920x1080 (32bit) 60 Hz\n3840x2160 (32bit) 60 Hz"));
    m_form.lblUptimeValue->setText(QStringLiteral("1 : 2 : 3 : 4"));
    m_form.cmbNetworkAdapters->clear();
    m_form.cmbNetworkAdapters->addItem(QStringLiteral("Wi-Fi"));
    m_form.lblNetDescriptionValue->setText(QStringLiteral("Intel(R) Ethernet Controller X550-T2 for 10 Gigabit"));
    m_form.lblNetLinkSpeedValue->setText(QStringLiteral("1000/1000Mbps"));
    m_form.lblNetAutoConfigurationValue->setText(QStringLiteral("Enabled"));
    m_form.lblNetDHCPValue->setText(QStringLiteral("Enabled"));
    m_form.lblNetIPAddressValue->setText(QStringLiteral("192.168.100.20(Preferred)"));
    m_form.lblNetSubnetValue->setText(QStringLiteral("255.255.255.0"));
    m_form.lblNetGatewayValue->setText(QStringLiteral("192.168.100.1"));
}

void FormSample::chooseTab(int index)
{
    const std::array<QToolButton *, 3> buttons{m_form.btn_dev, m_form.btn_system, m_form.btn_network};
    const std::array<QWidget *, 3> panes{m_form.dev_info, m_form.sys_info, m_form.net_info};
    // Never two at a time: the window would grow to hold them.
    for (QWidget *pane : panes)
        pane->hide();
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        const bool chosen = static_cast<int>(i) == index;
        buttons[i]->setStyleSheet(
            tabLook.arg(buttons[i]->objectName(), chosen ? QStringLiteral("background-color:#202020;color:#15cfbb;")
                                                         : QStringLiteral("background-color:#1a1a1a;color:#424242;")));
        panes[i]->setVisible(chosen);
    }
}

void FormSample::expand(bool expanded)
{
    m_form.middleContainer->setVisible(!expanded);
    m_form.btn_expanding->setVisible(!expanded);
    m_form.multiInfoContainer->setVisible(expanded);
    m_form.btn_collapsing->setVisible(expanded);
}

QStringList FormSample::states()
{
    return {QStringLiteral("idle"),      QStringLiteral("single"),    QStringLiteral("multiple"),
            QStringLiteral("expanded"),  QStringLiteral("analysis"),  QStringLiteral("waiting"),
            QStringLiteral("benchmark"), QStringLiteral("long names")};
}

void FormSample::show(const QString &state)
{
    const bool isMultiple = state == QLatin1String("multiple") || state == QLatin1String("expanded");
    const bool isAnalysis = state == QLatin1String("analysis") || state == QLatin1String("waiting");
    const bool isBenchmark = state == QLatin1String("benchmark");
    const bool isLong = state == QLatin1String("long names");
    const bool isIdle = state == QLatin1String("idle");
    chooseTab(isMultiple ? 1 : isAnalysis || isLong ? 2 : 0);
    expand(state == QLatin1String("expanded"));
    m_form.singleOption->setChecked(true);
    m_form.multiOption->setChecked(isMultiple);
    m_form.analysisOption->setChecked(isAnalysis);
    m_form.benchmarkOption->setChecked(isBenchmark);
    m_form.SourceContainer->setCurrentIndex(isMultiple ? 1 : 0);
    m_form.CentralContainer->setCurrentIndex(isAnalysis ? 1 : 0);
    m_form.wid_info->setVisible(!isMultiple);
    m_form.widStatusTable->setVisible(isMultiple);
    m_form.widReceiverCount->setVisible(!isAnalysis);
    m_form.vW1->setVisible(!isBenchmark);
    m_form.SourceContainer->setVisible(!isBenchmark);
    m_form.benchmark_container->setVisible(isBenchmark);
    m_form.waiting_spinner->setVisible(state == QLatin1String("waiting"));
    m_form.waiting_spinner->startAnimation();
    m_form.progress_viewer->setVisible(state != QLatin1String("waiting"));
    m_form.cmbPreviewSources->setEnabled(!isAnalysis);
    m_form.btn_test->setText(isIdle ? QStringLiteral("TEST") : QStringLiteral("STOP"));
    m_form.btn_test->setEnabled(!isAnalysis);
    for (QWidget *control : {static_cast<QWidget *>(m_form.btn_import1), static_cast<QWidget *>(m_form.btn_export1),
                             static_cast<QWidget *>(m_form.btn_export), static_cast<QWidget *>(m_form.btn_refresh)})
        control->setEnabled(isIdle || isLong || isBenchmark);
    m_form.analysisOption->setEnabled(!isMultiple);
    const QString name = isLong       ? QString(200, QLatin1Char('W'))
                         : isMultiple ? QStringLiteral("  MULTIPLE")
                                      : sourceName(3);
    m_form.L2->setText(name);
    m_form.lblAnalysisProgressStatusValue->setText(name);
    m_form.sourceList->setItemText(0, isLong ? name : sourceName(0));
    m_form.sourceList->setCurrentIndex(0);
    m_form.lblNetDescriptionValue->setText(isLong ? name : m_form.lblNetDescriptionValue->text());
    fillCharts(isLong ? 20 : isMultiple ? 6 : isIdle ? 0 : 3);
    sizeStatusColumns(m_form.tblStatus);
}
