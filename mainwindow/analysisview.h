#pragma once

#include <QTime>

namespace Ui {
class NDIWindow;
}

/// What the window shows of a running analysis: that it waits for the first sample, the latest figures, and how
/// long after the first sample each one was taken. GUI thread; the form has to live as long.
class AnalysisView final {
public:
    explicit AnalysisView(const Ui::NDIWindow *form) : ui(form) {}

    /// The tool was started: the waiting indicator takes the place of the progress.
    void wait();
    bool isWaiting() const { return m_isWaiting; }
    /// A sample was taken at that time of day. True for the first one, which brings the progress back.
    bool takeSample(QTime time);
    /// The analysis is over, whether it had samples or not.
    void end();

    /// Milliseconds from the first sample to time; negative past midnight. An invalid time counts as midnight.
    int msSinceStart(QTime time) const;
    void showDataRate(double megabytesPerSecond);
    /// Receive times, ms.
    void showLatency(double min, double max, double average);

private:
    void showProgress();

    const Ui::NDIWindow *ui;
    QTime analysisStart; ///< time stamp of the first sample, invalid before it
    bool m_isWaiting = false;
};
