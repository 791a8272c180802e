#pragma once

#include <QObject>
#include <QTime>

#include <functional>
#include <memory>

class AnalysisWorker;
class QThread;

/// The analysis tool at work: one worker on a thread of its own for each run. What an earlier run still
/// has to say is not passed on. GUI thread.
class AnalysisRun final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AnalysisRun)

public:
    using MakeWorker = std::function<std::unique_ptr<AnalysisWorker>()>;

    explicit AnalysisRun(QObject *parent = nullptr);
    /// Another worker than the installed tool's; for tests.
    explicit AnalysisRun(MakeWorker makeWorker, QObject *parent = nullptr);
    /// Ends the tool and waits for it: about a second at most.
    ~AnalysisRun() override;

    /// Starts the tool for a source; ends an earlier run first. seconds: of the test.
    void start(const QString &sourceName, int seconds);
    /// Ends the tool, if it runs, and waits for it. ended() does not follow.
    void abort();
    bool isRunning() const { return m_thread != nullptr; }

signals:
    /// See AnalysisWorker.
    void gotVideoDataRate(QTime time, double rate);
    void gotVideoSize(QTime time, double min_value, double max_value, double avg_value);
    /// The tool has ended by itself, or was not there.
    void ended();

private:
    MakeWorker m_makeWorker;
    int m_run = 0; ///< number of the run, to tell late signals of an earlier one
    std::unique_ptr<QThread> m_thread;
    std::unique_ptr<AnalysisWorker> m_worker; ///< lives on m_thread while that runs
};
