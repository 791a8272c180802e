#pragma once

#include <QList>
#include <QWidget>

#include <memory>

class LoadChartGeometry;
class LoadTrack;
class QPainter;
class QThread;

/// Strip chart of the last minute of processor and graphics load. It owns the sampler and the thread
/// that it runs on; sampling starts with the construction. GUI thread only.
class CpuGpuTrack final : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CpuGpuTrack)

public:
    explicit CpuGpuTrack(QWidget *parent = nullptr);
    /// Shows what another sampler reports. For tests.
    explicit CpuGpuTrack(std::unique_ptr<LoadTrack> loadTrack, QWidget *parent = nullptr);
    /// Ends the sampler if it still runs; takes less than 200 ms even with a cycle under way.
    ~CpuGpuTrack() override;

    const std::unique_ptr<LoadTrack> sampler; ///< clear its running flag to end the sampling
    const std::unique_ptr<QThread> samplerThread;
    const double maxLoad = 100.0;      ///< top of the vertical axis, percent
    const double historyLength = 60.0; ///< samples kept per figure, width of the horizontal axis
    const double loadStep = 20.0;      ///< between horizontal grid lines, percent
    const double sampleStep = 10.0;    ///< between vertical grid lines, samples
    QList<int> cpuHistory;             ///< percent, oldest first, as long as gpuHistory
    QList<int> gpuHistory;             ///< percent, oldest first

signals:
    /// The sampling has ended.
    void finished();

public slots:
    /// Takes one sample, whole percent, and forgets the oldest one when the history is full.
    void gpuCpuLoad(int cpuLoad, int gpuLoad);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void drawGrid(QPainter &painter, const LoadChartGeometry &geometry) const;
};
