#include "mainwindow/analysisview.h"

#include "mainwindow/figures.h"
#include "ui_ndiwindow.h"

void AnalysisView::wait()
{
    analysisStart = QTime();
    m_isWaiting = true;
    ui->waiting_spinner->show();
    ui->waiting_spinner->startAnimation();
    ui->progress_viewer->hide();
}

bool AnalysisView::takeSample(QTime time)
{
    if (!analysisStart.isValid())
        analysisStart = time;
    if (!m_isWaiting)
        return false;
    m_isWaiting = false;
    showProgress();
    return true;
}

void AnalysisView::end()
{
    m_isWaiting = false;
    showProgress();
}

void AnalysisView::showProgress()
{
    ui->waiting_spinner->stopAnimation();
    ui->waiting_spinner->hide();
    ui->progress_viewer->show();
}

int AnalysisView::msSinceStart(QTime time) const
{
    const auto sinceMidnight = [](QTime of) { return of.isValid() ? of.msecsSinceStartOfDay() : 0; };
    return sinceMidnight(time) - sinceMidnight(analysisStart);
}

void AnalysisView::showDataRate(double megabytesPerSecond)
{
    ui->lblDataRateValue->setText(sixDigits(megabytesPerSecond) + QStringLiteral("MBps"));
}

void AnalysisView::showLatency(double min, double max, double average)
{
    ui->lblLatencyValue->setText(
        QStringLiteral("Avg: %1mS  Min: %2mS  Max: %3mS").arg(sixDigits(average), sixDigits(min), sixDigits(max)));
}
