#pragma once

#include "probes/benchmarktool.h"

#include <QDialog>
#include <QTimer>

class QLabel;
class QProgressBar;
class QProgressIndicator;

/// Runs the benchmark tool and shows its two results as bars. Three pages: a start button; work in
/// progress; results. It is a window of its own without a frame; show it with exec(). A run is final:
/// another one needs another dialog. GUI thread only; while the tool runs, that thread waits for it.
class BenchmarkDlg final : public QDialog {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BenchmarkDlg)

public:
    /// toolTimeoutMs: how long the tool may run; then its results so far are shown.
    explicit BenchmarkDlg(int toolTimeoutMs = benchmarkTimeoutMs);

public slots:
    /// Runs the tool that is found in the program's folder or on the search path, then shows the
    /// results: zeros when there is none. Blocks until the tool ends or its time is over.
    void startBenchmark();
    /// Beyond the bar's 24 only the label follows.
    void setCpuCores(int value);
    /// Beyond the bar's 100 only the label and the colour follow.
    void setFPSValue(int value);

private:
    QWidget *makeStartPage();
    QWidget *makeProgressPage();
    QWidget *makeResultPage();
    QWidget *makeBar(QProgressBar *bar, QLabel *caption, QLabel *value);
    void showProgressPage();

    const int m_toolTimeoutMs;
    QTimer m_startDelay; ///< gives the page of the work in progress time to be painted
    QWidget *m_startPage = nullptr;
    QWidget *m_progressPage = nullptr;
    QWidget *m_resultPage = nullptr;
    QProgressIndicator *m_spinner = nullptr;
    QProgressBar *m_coresBar = nullptr;
    QProgressBar *m_streamsBar = nullptr;
    QLabel *m_coresLabel = nullptr;
    QLabel *m_streamsLabel = nullptr;
};
