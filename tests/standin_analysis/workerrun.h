#pragma once

#include "probes/analysisworker.h"
#include "tests/standin_analysis/standincontrol.h"
#include "tests/standin_analysis/testfolder.h"

#include <QDir>
#include <QList>
#include <QThread>
#include <QVariant>

#include <memory>

/// A worker in a working folder of its own, ready for stand-ins to connect. What is left of its run ends with it.
class WorkerRun final {
public:
    WorkerRun() { QDir::setCurrent(m_folder.path()); }
    ~WorkerRun();
    WorkerRun(const WorkerRun &) = delete;
    WorkerRun &operator=(const WorkerRun &) = delete;

    void makeWorker(const QString &tool, const QString &relay);
    /// On a thread of its own, as the window does it.
    void startThread();
    /// A worker for the stand-in, and waits until that has connected.
    bool start(const QByteArray &source = "MACHINE (Camera 1)");
    bool waitForEnd();
    QList<double> rateValues() const; ///< without their times
    QString folder() const { return m_folder.path(); }

    std::unique_ptr<StandinControl> tools = std::make_unique<StandinControl>();
    std::unique_ptr<AnalysisWorker> worker;
    std::unique_ptr<QThread> thread;
    // What came so far, in the thread of the test.
    QList<QVariantList> rates; ///< the arguments of each signal
    QList<QVariantList> sizes;
    int finishedCount = 0;
    int errorCount = 0;

private:
    void endThread();

    QObject m_receiver;
    const QString m_formerFolder = QDir::currentPath();
    TestFolder m_folder;
};
