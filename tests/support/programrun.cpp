#include "tests/support/programrun.h"

#include "tests/support/processcontrol.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

namespace {

constexpr int longestFolderUseMs = 10000;

QString pathBetween(const QByteArray &text, const QByteArray &before, const QByteArray &after)
{
    const int start = text.indexOf(before);
    const int end = text.indexOf(after, start);
    if (start < 0 || end < 0)
        return {};
    return QString::fromUtf8(text.mid(start + before.size(), end - start - before.size()));
}

} // namespace

ProgramRun::ProgramRun(const QStringList &arguments)
    : m_environment(QProcessEnvironment::systemEnvironment()), m_program(programPath()), m_arguments(arguments)
{
    QDir().mkpath(home());
    m_environment.insert(QStringLiteral("HOME"), home());
    m_environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home() + QLatin1String("/.config"));
    m_environment.insert(QStringLiteral("VEXA_JOURNAL_FOLDER"), home() + QLatin1String("/journal"));
    m_environment.remove(QStringLiteral("VEXA_LOOPBACK_SCENARIO"));
    m_environment.remove(QStringLiteral("VEXA_LOOPBACK_TRUTH"));
    for (const char *variable : {"NDI_RUNTIME_DIR_V5", "NDI_RUNTIME_DIR_V4", "NDI_RUNTIME_DIR_V3"})
        m_environment.remove(QString::fromLatin1(variable));
    setRuntimeFolder(loopbackFolder());
    m_process.setWorkingDirectory(m_folder.path());
    prepareForInterrupts(&m_process);
}

ProgramRun::~ProgramRun()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
    // On Windows the folder stays in use for a moment after the end of the program, or of one that it had started.
    const QDeadlineTimer deadline(longestFolderUseMs);
    while (!QDir(m_folder.path()).removeRecursively() && !deadline.hasExpired())
        QThread::msleep(20);
}

void ProgramRun::setScenario(const QByteArray &json)
{
    QFile file(m_folder.filePath(QStringLiteral("scenario.json")));
    if (file.open(QIODevice::WriteOnly))
        file.write(json);
    m_environment.insert(QStringLiteral("VEXA_LOOPBACK_SCENARIO"), file.fileName());
}

void ProgramRun::setRuntimeFolder(const QString &folder)
{
    if (folder.isEmpty())
        m_environment.remove(QStringLiteral("NDI_RUNTIME_DIR_V6"));
    else
        m_environment.insert(QStringLiteral("NDI_RUNTIME_DIR_V6"), folder);
}

void ProgramRun::keepTruth()
{
    m_environment.insert(QStringLiteral("VEXA_LOOPBACK_TRUTH"), truthPath());
}

void ProgramRun::setVariable(const QString &name, const QString &value)
{
    if (value.isNull())
        m_environment.remove(name);
    else
        m_environment.insert(name, value);
}

void ProgramRun::startThrough(const QString &program, const QStringList &arguments)
{
    m_arguments = arguments + QStringList(m_program) + m_arguments;
    m_program = program;
}

void ProgramRun::start()
{
    m_process.setProcessEnvironment(m_environment);
    m_process.start(m_program, m_arguments);
    m_process.closeWriteChannel();
}

bool ProgramRun::waitForFinished(int timeoutMs)
{
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(timeoutMs);
}

bool ProgramRun::waitForError(const QByteArray &text, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!standardError().contains(text)) {
        if (m_process.state() == QProcess::NotRunning || clock.elapsed() > timeoutMs)
            return standardError().contains(text);
        m_process.setReadChannel(QProcess::StandardError);
        m_process.waitForReadyRead(100);
    }
    return true;
}

bool ProgramRun::waitForDots(int count, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (standardOutput().size() < count) {
        if (m_process.state() == QProcess::NotRunning || clock.elapsed() > timeoutMs)
            return standardOutput().size() >= count;
        m_process.setReadChannel(QProcess::StandardOutput);
        m_process.waitForReadyRead(100);
    }
    return true;
}

void ProgramRun::interrupt(Interrupt kind)
{
    interruptProcess(m_process.processId(), kind);
}

bool ProgramRun::endedWith(int status) const
{
    // The error stays "timed out" when one of the waits before has been.
    return m_process.state() == QProcess::NotRunning && m_process.exitStatus() == QProcess::NormalExit
           && m_process.error() != QProcess::FailedToStart && m_process.exitCode() == status;
}

QByteArray ProgramRun::standardOutput()
{
    m_standardOutput += m_process.readAllStandardOutput();
    return m_standardOutput;
}

QByteArray ProgramRun::standardError()
{
    m_standardError += m_process.readAllStandardError();
    return m_standardError;
}

QString ProgramRun::recordPath()
{
    return pathBetween(standardError(), "Created the recorded file(", ") for your testing!!!!!\n");
}

QString ProgramRun::recoverRecord(QByteArray *said) const
{
    QProcess next;
    next.setProcessEnvironment(m_environment);
    next.setWorkingDirectory(m_folder.path());
    next.start(programPath(),
               {QStringLiteral("-test"), QStringLiteral("x"), QStringLiteral("-time"), QStringLiteral("0")});
    next.waitForFinished();
    const QByteArray text = next.readAllStandardError();
    if (said)
        *said = text;
    return pathBetween(text, "Recovered the record of an interrupted test (", "), ");
}

QStringList ProgramRun::journals() const
{
    return QDir(home() + QLatin1String("/journal")).entryList(QDir::Files);
}

QString ProgramRun::truthPath() const
{
    return m_folder.filePath(QStringLiteral("truth.txt"));
}

QByteArray ProgramRun::account()
{
    QByteArray state = "the program is still running";
    if (m_process.state() == QProcess::NotRunning) {
        state = m_process.exitStatus() == QProcess::CrashExit ? "the program crashed with " : "the program ended with ";
        state += QByteArray::number(m_process.exitCode());
    }
    return state + ", " + m_process.errorString().toUtf8() + "; it said:\n" + standardError();
}

QString ProgramRun::programPath()
{
    return QFileInfo(QStringLiteral(VEXA_PROGRAM)).absoluteFilePath();
}

QString ProgramRun::loopbackFolder()
{
    return QFileInfo(QStringLiteral(VEXA_LOOPBACK_DIR)).absoluteFilePath();
}
