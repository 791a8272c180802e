#pragma once

#include "app/consolewriter.h"
#include "ndi/sourcelist.h"

#include <QObject>
#include <QThread>
#include <QTimer>

#include <memory>

class TestRun;

/// The console program: prints the usage, lists the sources, or runs one timed test and writes its
/// record. Lives on a thread of its own, which it starts, or with its parent if it has one; printUsage(),
/// findSources(), printSources() and startTest() are called on the thread that made it, which needs an event loop
/// during a test.
class NDIMainObject final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NDIMainObject)

public:
    explicit NDIMainObject(QObject *parent = nullptr);
    /// Waits until running receivers have ended, about a second at most. Not on worker.
    ~NDIMainObject() override;

    /// Always true.
    bool printUsage();
    /// Searches and, if print is true, lists what was found. Always false.
    bool findSources(bool print);
    void printSources(const NDIlib_source_t *sources, int count);
    /// Tests the named source for 1 to 5 minutes with 1 to 8 receivers. name is a console text. True
    /// when the test runs; false after a message that tells why not.
    bool startTest(const QString &name, int time, int receivers);

    /// Other output and another length of the minute, for tests; before anything else is called.
    void setConsole(ConsoleWriter *console) { m_console = console; }
    void setMinuteMs(int minuteMs) { m_minuteMs = minuteMs; }

signals:
    /// Nothing is left to do. Sent on the object's own thread.
    void quitApplication();

public slots:
    /// All receivers of the source at this position are gone.
    void sourceTestFinished(int index);
    /// Collects one measurement; see ReceiverController::sourceFrameReceived().
    void sourceFrameReceived(double fps, int time, int format, double defaultFPS, int width, int height, int dataRate,
                             int ping, int sourceIndex, int indexNum);
    /// Ends the test and writes the record; once for each test, any further call does nothing.
    void stopTest();

private:
    /// Calls function on this object's thread and waits for its end.
    template <typename Function>
    void callHere(const Function &function);
    /// The name as the console may show it.
    QString shownName(const QString &name) const;
    void print(const QString &text) { printConsoleLine(m_console, text); }
    void printRuntimeProblem();
    void runDiscovery(bool *finderMade, bool *endedQuiet);
    void startReceivers(int sourceIndex, int receivers);
    void printRecordCreated();
    void printRecordFailed();

    const NDIlib_source_t *sources = nullptr; ///< the array of m_sourceList
    int count = 0;                            ///< its length
    std::unique_ptr<QTimer> testTimer;        ///< lives on the thread that made this object
    QThread worker;                           ///< not started for an object with a parent
    std::unique_ptr<TestRun> m_test;          ///< on this object's thread
    QTimer m_dotTimer;                        ///< on this object's thread
    SourceList m_sourceList;                  ///< from the last search
    StandardConsoleWriter m_standardConsole;
    ConsoleWriter *m_console = &m_standardConsole;
    int m_minuteMs = 60000;
    bool m_testEnded = false; ///< own thread
};
