#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// Starts the real program in a folder and a home of its own, on the loopback runtime, and keeps what
/// it says. The process does not outlive the object.
class ProgramRun {
public:
    /// Ways to ask a program to end. On Windows there are Interrupt, which reaches all runs of this
    /// test, and Break; elsewhere all but Break.
    enum class Interrupt { Interrupt, Terminate, HangUp, Break };

    explicit ProgramRun(const QStringList &arguments);
    ~ProgramRun();
    ProgramRun(const ProgramRun &) = delete;
    ProgramRun &operator=(const ProgramRun &) = delete;

    /// Before start(): the sources, as JSON text; else the loopback's default ones.
    void setScenario(const QByteArray &json);
    /// Before start(): another folder to look for the runtime in; empty: none.
    void setRuntimeFolder(const QString &folder);
    /// Before start(): what the loopback did is written to truthPath().
    void keepTruth();
    /// Before start(): one more variable of its environment; null takes it away.
    void setVariable(const QString &name, const QString &value);
    /// Before start(): another program that starts ours, which follows its arguments.
    void startThrough(const QString &program, const QStringList &arguments);

    void start();
    bool waitForFinished(int timeoutMs = 30000);
    /// Waits until standard error holds this text.
    bool waitForError(const QByteArray &text, int timeoutMs = 30000);
    /// Waits until this many dots stand on standard output.
    bool waitForDots(int count, int timeoutMs = 30000);
    void interrupt(Interrupt kind);

    /// Whether it has ended by itself with this status, not by a crash.
    bool endedWith(int status) const;
    QByteArray standardOutput();
    QByteArray standardError();
    /// The record that it says it made, empty when it says none.
    QString recordPath();
    /// Starts the program once more in the same home, after its end, with a test whose time is refused. The path of the
    /// record that it says it recovered, empty when it says none; *said: what it said.
    QString recoverRecord(QByteArray *said = nullptr) const;
    /// The journals in its home.
    QStringList journals() const;
    QString truthPath() const;
    QString folder() const { return m_folder.path(); }
    QString home() const { return m_folder.filePath(QStringLiteral("home")); }
    QProcess &process() { return m_process; }
    /// For the message of a failed check: how it ended and what it said.
    QByteArray account();

    static QString programPath();
    static QString loopbackFolder();

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    QProcessEnvironment m_environment;
    QString m_program;
    QStringList m_arguments;
    QByteArray m_standardOutput;
    QByteArray m_standardError;
};
