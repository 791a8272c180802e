#include "probes/analysisworker.h"

#include "probes/analysisparser.h"
#include "probes/analysistool.h"

#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QThread>

namespace {

Q_LOGGING_CATEGORY(analysisLog, "vexa.analysis", QtWarningMsg)

constexpr int waitMs = 200;
constexpr int killWaitMs = 5000;
constexpr int extraSeconds = 10; // the tool outlasts the test

QString commandFileName()
{
    return QStringLiteral("NDIAnalysis.bat");
}

/// Returns false unless every byte is in a file that this call has created, not through a link and for this user alone.
bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile::remove(path); // removes a link, not its target
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::NewOnly))
        return false;
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    return file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

AnalysisWorker::AnalysisWorker() : AnalysisWorker(installedAnalysisTool(), analysisRelay()) {}

AnalysisWorker::AnalysisWorker(const QString &tool, const QString &relay) : m_tool(tool), m_relay(relay) {}

// cppcheck-suppress passedByValue ; others connect to this signature
void AnalysisWorker::createAnalysis(QString ndi_device, int tm) // NOLINT(performance-unnecessary-value-param)
{
    if (ndi_device.isEmpty())
        return;
    QByteArray command;
    if (!m_tool.isEmpty()) {
        // The name is written as it is. The relay takes the file apart by its form and shows it to no command
        // interpreter.
        command = '"' + m_tool.toUtf8() + "\" /source:\"" + ndi_device.toUtf8()
                  + "\" /time:" + QByteArray::number(tm + extraSeconds);
    }
    m_isCommandWritten = writeFile(commandFileName(), command);
}

void AnalysisWorker::process()
{
    Q_ASSERT(QThread::currentThread() == thread());
    // An older file, with another source in it, must not be run.
    if (m_isCommandWritten && !m_relay.isEmpty() && !m_abort) {
        QProcess process;
        m_process = &process;
        connect(&process, &QProcess::readyReadStandardOutput, this, &AnalysisWorker::readAnalysis);
        connect(&process, &QProcess::readyReadStandardError, this, &AnalysisWorker::readErrors);
        run(&process);
        m_process = nullptr;
    }
    emit finished();
}

void AnalysisWorker::run(QProcess *process)
{
    process->start(m_relay, {commandFileName()}, QIODevice::ReadWrite);
    processFinished = false;
    bool hasEnded = false; // apart from processFinished, which quit() sets, too
    while (!hasEnded && process->state() != QProcess::NotRunning && !m_abort) {
        hasEnded = process->waitForFinished(waitMs);
        processFinished = hasEnded;
    }
    if (process->state() != QProcess::NotRunning) {
        process->kill(); // the relay takes the tool along
        process->waitForFinished(killWaitMs);
    }
}

void AnalysisWorker::quit()
{
    processFinished = true;
}

void AnalysisWorker::readAnalysis()
{
    if (!m_process)
        return;
    const QStringList lines = analysisLines(m_process->readAllStandardOutput());
    for (const QString &text : lines) {
        if (m_abort) {
            m_process->kill(); // a wait in which output never pauses does not end by its time
            return;
        }
        const AnalysisLine line = parseAnalysisLine(text);
        if (line.dataRate)
            emit gotVideoDataRate(line.dataRate->time, line.dataRate->megabytesPerSecond);
        if (line.receiveTime)
            emit gotVideoSize(line.receiveTime->time, line.receiveTime->minMs, line.receiveTime->maxMs,
                              line.receiveTime->averageMs);
    }
}

void AnalysisWorker::readErrors()
{
    if (!m_process)
        return;
    if (m_abort)
        m_process->kill();
    const QByteArray text = m_process->readAllStandardError(); // else it would pile up
    qCDebug(analysisLog) << text;
}
