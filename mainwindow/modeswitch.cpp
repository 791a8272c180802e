#include "mainwindow/modeswitch.h"

#include "mainwindow/previewchoice.h"
#include "mainwindow/resulttables.h"
#include "ui_ndiwindow.h"
#include "widgets/custommessagebox.h"

#include <QPointer>

#include <utility>

ModeSwitch::ModeSwitch(const Ui::NDIWindow *form, PreviewChoice *preview, std::function<bool()> analysisToolThere,
                       QWidget *window)
    : ui(form), m_preview(preview), m_analysisToolThere(std::move(analysisToolThere)), m_window(window)
{
}

const QString &ModeSwitch::toolMissingText()
{
    static const QString text = QStringLiteral("Please install NewTek NDI Analysis tool from https://ndi.video/tools");
    return text;
}

void ModeSwitch::connectOptions()
{
    connect(ui->singleOption, &QRadioButton::clicked, this, [this] {
        expandDetails(false);
        switchTo(Mode::single);
    });
    connect(ui->multiOption, &QRadioButton::clicked, this, [this] { switchTo(Mode::multiple); });
    connect(ui->analysisOption, &QRadioButton::clicked, this, [this] { switchTo(Mode::analysis); });
    connect(ui->benchmarkOption, &QRadioButton::clicked, this, [this] { switchTo(Mode::benchmark); });
}

void ModeSwitch::choose(QRadioButton *option)
{
    option->setChecked(true);
    emit option->clicked(true);
}

void ModeSwitch::expandDetails(bool expanded)
{
    ui->middleContainer->setVisible(!expanded);
    ui->btn_expanding->setVisible(!expanded);
    ui->multiInfoContainer->setVisible(expanded);
    ui->btn_collapsing->setVisible(expanded);
}

void ModeSwitch::switchTo(Mode mode)
{
    if (mode == Mode::benchmark) {
        showBenchmark();
    } else if (mode == Mode::analysis && !m_analysisToolThere()) {
        refuseAnalysis();
    } else {
        showCharts(mode);
        ui->vW1->show();
        ui->SourceContainer->show();
        ui->benchmark_container->hide();
    }
}

void ModeSwitch::showBenchmark()
{
    m_lastOption = ui->benchmarkOption;
    ui->vW1->hide();
    ui->SourceContainer->hide();
    ui->benchmark_container->show();
    ui->widReceiverCount->show();
    ui->cmbPreviewSources->setEnabled(true);
}

void ModeSwitch::showCharts(Mode mode)
{
    if (mode == Mode::analysis) {
        m_lastOption = ui->analysisOption;
        ui->SourceContainer->setCurrentIndex(0);
        ui->CentralContainer->setCurrentIndex(1);
        ui->widReceiverCount->hide();
        m_preview->chooseNone();
        ui->cmbPreviewSources->setEnabled(false);
        return;
    }
    const bool isMultiple = mode == Mode::multiple;
    m_lastOption = isMultiple ? ui->multiOption : ui->singleOption;
    ui->SourceContainer->setCurrentIndex(isMultiple ? 1 : 0);
    ui->CentralContainer->setCurrentIndex(0);
    ui->L2->setText(isMultiple ? QStringLiteral("  MULTIPLE") : ui->sourceList->currentText());
    ui->wid_info->setVisible(!isMultiple);
    ui->widStatusTable->setVisible(isMultiple);
    if (isMultiple)
        sizeStatusColumns(ui->tblStatus);
    ui->widReceiverCount->show();
    ui->cmbPreviewSources->setEnabled(true);
}

void ModeSwitch::refuseAnalysis()
{
    CustomMessageBox box(m_window);
    box.setTitle(QStringLiteral("FAIL"));
    box.setMessage(QStringLiteral("FAIL"), QString(), QString(), toolMissingText());
    box.setButtonText(QStringLiteral("OK"));
    const QPointer<ModeSwitch> self(this);
    const bool accepted = box.exec() == QDialog::Accepted;
    if (!self)
        return;
    if (accepted || !m_lastOption)
        choose(ui->singleOption);
    else
        m_lastOption->setChecked(true);
}
