#pragma once

#include <QObject>
#include <QString>
#include <QTime>

#include <atomic>

class QProcess;

/// One run of the analysis tool against one source, through the relay program. Made without a parent; createAnalysis()
/// is called first, by the thread that made it; then it is moved to a thread of its own, which calls process() and is
/// busy with it. All but requestAbort() belongs to one thread at a time.
class AnalysisWorker final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AnalysisWorker)

public:
    /// Uses the installed tool and the relay beside the program.
    AnalysisWorker();
    /// `tool`: full path, empty: none is installed. `relay`: its path, empty: there is none.
    AnalysisWorker(const QString &tool, const QString &relay);

    /// Any thread; returns at once. The tool is ended and process() returns within a second, or does nothing when it
    /// has not begun.
    void requestAbort() noexcept { m_abort = true; }

signals:
    void finished();                                ///< the run is over; the last signal, exactly once per process()
    void error(QString err);                        ///< never sent
    void gotVideoDataRate(QTime time, double rate); ///< MB/s, above 0
    void gotVideoSize(QTime time, double min_value, double max_value, double avg_value); ///< video receive times, ms

public slots:
    /// Runs the tool and returns when it has ended; does nothing when createAnalysis() wrote no command file.
    void process();
    /// Does not end a run: only requestAbort() does.
    void quit();
    /// Reads what the running tool has printed; nothing outside of process().
    void readAnalysis();
    /// Writes the command file, NDIAnalysis.bat in the working folder, for `tm` seconds. Without a name it does
    /// nothing.
    void createAnalysis(QString ndi_device, int tm);

private:
    void run(QProcess *process);
    void readErrors();

    const QString m_tool;
    const QString m_relay;
    std::atomic<bool> m_abort{false};
    std::atomic<bool> processFinished{false};
    bool m_isCommandWritten = false;
    QProcess *m_process = nullptr; ///< while process() runs; made and owned by it
};
