#include "tests/standin_analysis/workerrun.h"

#include <QtTest>

namespace {

constexpr int waitMs = 30000;

} // namespace

WorkerRun::~WorkerRun()
{
    endThread();
    QDir::setCurrent(m_formerFolder);
}

void WorkerRun::endThread()
{
    if (!thread)
        return;
    worker->requestAbort();
    thread->quit();
    thread->wait();
    thread.reset();
}

void WorkerRun::makeWorker(const QString &tool, const QString &relay)
{
    endThread();
    worker = std::make_unique<AnalysisWorker>(tool, relay);
    rates.clear();
    sizes.clear();
    finishedCount = 0;
    errorCount = 0;
    AnalysisWorker *sender = worker.get();
    QObject::connect(sender, &AnalysisWorker::gotVideoDataRate, &m_receiver, [this](QTime time, double rate) {
        rates.append(QVariantList{time, rate});
    });
    QObject::connect(sender, &AnalysisWorker::gotVideoSize, &m_receiver,
                     [this](QTime time, double min, double max, double avg) {
                         sizes.append(QVariantList{time, min, max, avg});
                     });
    QObject::connect(sender, &AnalysisWorker::finished, &m_receiver, [this] { ++finishedCount; });
    QObject::connect(sender, &AnalysisWorker::error, &m_receiver, [this] { ++errorCount; });
}

void WorkerRun::startThread()
{
    thread = std::make_unique<QThread>();
    worker->moveToThread(thread.get());
    QObject::connect(thread.get(), &QThread::started, worker.get(), &AnalysisWorker::process);
    QObject::connect(worker.get(), &AnalysisWorker::finished, thread.get(), &QThread::quit);
    thread->start();
}

bool WorkerRun::start(const QByteArray &source)
{
    makeWorker(StandinControl::toolPath(), StandinControl::relayPath());
    worker->createAnalysis(QString::fromUtf8(source), 60);
    startThread();
    return tools->waitForTools();
}

bool WorkerRun::waitForEnd()
{
    return QTest::qWaitFor([this] { return finishedCount > 0 && thread->isFinished(); }, waitMs) && finishedCount == 1
           && errorCount == 0;
}

QList<double> WorkerRun::rateValues() const
{
    QList<double> values;
    for (const QVariantList &arguments : rates)
        values.append(arguments.at(1).toDouble());
    return values;
}
