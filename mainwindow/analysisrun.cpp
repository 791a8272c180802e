#include "mainwindow/analysisrun.h"

#include "probes/analysisworker.h"

#include <QThread>

AnalysisRun::AnalysisRun(QObject *parent) : AnalysisRun([] { return std::make_unique<AnalysisWorker>(); }, parent) {}

AnalysisRun::AnalysisRun(MakeWorker makeWorker, QObject *parent) : QObject(parent), m_makeWorker(std::move(makeWorker))
{
}

AnalysisRun::~AnalysisRun()
{
    abort();
}

void AnalysisRun::start(const QString &sourceName, int seconds)
{
    abort();
    m_worker = m_makeWorker();
    m_thread = std::make_unique<QThread>();
    m_thread->setObjectName(QStringLiteral("analysis"));
    m_worker->createAnalysis(sourceName, seconds);
    m_worker->moveToThread(m_thread.get());

    connect(m_thread.get(), &QThread::started, m_worker.get(), &AnalysisWorker::process);
    connect(m_worker.get(), &AnalysisWorker::finished, m_thread.get(), &QThread::quit, Qt::DirectConnection);
    // What a run has sent still waits in the event queue when the run has been aborted.
    const int run = m_run;
    connect(m_worker.get(), &AnalysisWorker::gotVideoDataRate, this, [this, run](QTime time, double rate) {
        if (run == m_run)
            emit gotVideoDataRate(time, rate);
    });
    connect(m_worker.get(), &AnalysisWorker::gotVideoSize, this,
            [this, run](QTime time, double minimum, double maximum, double average) {
                if (run == m_run)
                    emit gotVideoSize(time, minimum, maximum, average);
            });
    // Behind the samples in the same queue, so that nothing of this run comes after it.
    connect(m_worker.get(), &AnalysisWorker::finished, this, [this, run] {
        if (run != m_run)
            return;
        abort();
        emit ended();
    });
    m_thread->start(QThread::InheritPriority);
}

void AnalysisRun::abort()
{
    ++m_run;
    if (!m_thread)
        return;
    m_worker->disconnect(this);
    m_worker->requestAbort();
    m_thread->quit();
    m_thread->wait();
    m_thread.reset();
    m_worker.reset(); // no event for it is left to arrive
}
