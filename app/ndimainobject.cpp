#include "app/ndimainobject.h"

#include "app/recordfile.h"
#include "app/sourcediscovery.h"
#include "app/testrun.h"
#include "ndi/ndilib.h"
#include "ndi/sourcelist.h"

namespace {

constexpr int longestDotDelayMs = 50; ///< dots are gathered: a write for each would cost as much as the measurement

} // namespace

NDIMainObject::NDIMainObject(QObject *parent)
    : QObject(parent), testTimer(std::make_unique<QTimer>()), m_test(std::make_unique<TestRun>())
{
    worker.setObjectName(QStringLiteral("console test"));
    connect(m_test.get(), &TestRun::frameReceived, this, &NDIMainObject::sourceFrameReceived);
    connect(m_test.get(), &TestRun::sourceFinished, this, &NDIMainObject::sourceTestFinished);
    m_dotTimer.setSingleShot(true);
    m_dotTimer.setTimerType(Qt::PreciseTimer);
    m_dotTimer.setInterval(longestDotDelayMs);
    connect(&m_dotTimer, &QTimer::timeout, this, [this] { m_console->flushDots(); });
    connect(&worker, &QThread::finished, &m_dotTimer, &QTimer::stop, Qt::DirectConnection); // still on worker
    if (!parent) { // an object with a parent cannot leave the parent's thread
        m_test->moveToThread(&worker);
        m_dotTimer.moveToThread(&worker);
        moveToThread(&worker);
        worker.start(QThread::InheritPriority);
    }
    testTimer->setSingleShot(true);
    testTimer->setTimerType(Qt::PreciseTimer);
}

template <typename Function>
void NDIMainObject::callHere(const Function &function)
{
    if (thread() == QThread::currentThread())
        function();
    else
        QMetaObject::invokeMethod(this, function, Qt::BlockingQueuedConnection);
}

NDIMainObject::~NDIMainObject()
{
    worker.quit();
    worker.wait();
    if (!m_test->isRunning())
        return;
    // The receivers need the event loop of the thread that they report to until they have ended.
    if (thread() == &worker)
        worker.start();
    callHere([this] {
        m_test->disconnect(this);
        m_test.reset();
    });
    worker.quit();
    worker.wait();
}

QString NDIMainObject::shownName(const QString &name) const
{
    return m_console->isTerminal() ? withoutControls(name) : name;
}

bool NDIMainObject::printUsage()
{
    static const char *const lines[] = {
        "Usage :",
        "-help",
        "\tShow command line usage.",
        "-findsources",
        "\tFind and list NDI sources.",
        "-test NDI_SOURCE_NAME [-time TIME] [-receivers RECEIVER_COUNT]",
        "\tStart testing during TIME[min(s)].\n",
        "\tDefault TIME value is 1.",
        "\tTIME is available as 1, 2, 3, 4, or 5.\n",
        "\tReceivers could be defined for multiple receivers.",
        "\tRECEIVER_COUNT is number of receivers.",
        "\tDefault RECEIVER_COUNT value is 1.",
        "\tRECEIVER_COUNT is available as 1, 2, 3, 4, 5, 6, 7 or 8.\n",
        "Examples:",
        "\tTessalyNDIVexa -findsources",
        "\tTessalyNDIVexa -test NDI_Camera -time 2 -receivers 2",
        "\tTessalyNDIVexa -test \"DESKTOP-123 (VLC)\" -time 2",
    };
    for (const char *line : lines)
        print(QString::fromLatin1(line));
    return true;
}

void NDIMainObject::printRuntimeProblem()
{
    const QString problem = ndiRuntimeProblem();
    if (!problem.isEmpty())
        print(consoleTextFromUnicode(problem));
}

void NDIMainObject::runDiscovery(bool *finderMade, bool *endedQuiet)
{
    print(QStringLiteral("Checking NDI sources...\n"));
    const DiscoveredSources found = discoverSources();
    m_sourceList = found.sources;
    sources = m_sourceList.data();
    count = m_sourceList.count();
    *finderMade = found.finder != nullptr;
    *endedQuiet = found.endedQuiet;
}

bool NDIMainObject::findSources(bool print)
{
    bool finderMade = false;
    bool endedQuiet = false;
    runDiscovery(&finderMade, &endedQuiet);
    if (!finderMade) {
        if (print) {
            printSources(nullptr, noFinderCount);
            printRuntimeProblem();
        }
        return false;
    }
    if (!print)
        return false;
    if (endedQuiet && count == 0)
        this->print(QStringLiteral("Can not find NDI sources"));
    printSources(sources, count);
    return false;
}

void NDIMainObject::printSources(const NDIlib_source_t *list, int length)
{
    if (length == noFinderCount) {
        print(QStringLiteral("Can not init NDI instance"));
        return;
    }
    if (length == 0 || length == noSourceCount) {
        print(QStringLiteral("Can not find NDI sources"));
        return;
    }
    print(QStringLiteral("NDI Sources : %1").arg(length));
    for (int i = 0; i < length; ++i)
        print(QStringLiteral("[%1] %2").arg(QString::number(i + 1), shownName(consoleText(list[i].p_ndi_name))));
}

bool NDIMainObject::startTest(const QString &name, int time, int receivers)
{
    if (time < TestRun::shortestMinutes || time > TestRun::longestMinutes) {
        print(QStringLiteral("Invalidated time parameter."));
        return false;
    }
    if (receivers < TestRun::fewestReceivers || receivers > TestRun::mostReceivers) {
        print(QStringLiteral("Invalidated receivers parameter."));
        return false;
    }
    bool finderMade = false;
    bool endedQuiet = false;
    runDiscovery(&finderMade, &endedQuiet);
    int found = 0;
    while (found < count && consoleText(sources[found].p_ndi_name) != name)
        ++found;
    if (found == count) {
        print(QStringLiteral("Not found NDI source [") + shownName(name) + QLatin1Char(']'));
        if (!finderMade)
            printRuntimeProblem();
        return false;
    }
    print(QStringLiteral("NDI Source : ") + shownName(name));
    print(QStringLiteral("Time : %1 min(s)").arg(time));
    print(QStringLiteral("Number of Receiver : %1\n").arg(receivers));
    print(QStringLiteral("Start Testing..."));

    // Everything that the measurements touch is made on the thread that they arrive on.
    callHere([this, found, receivers] { startReceivers(found, receivers); });

    testTimer->start(time * m_minuteMs);
    disconnect(testTimer.get(), &QTimer::timeout, this, &NDIMainObject::stopTest);
    connect(testTimer.get(), &QTimer::timeout, this, &NDIMainObject::stopTest);
    return true;
}

void NDIMainObject::startReceivers(int sourceIndex, int receivers)
{
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(QString::fromUtf8(sources[i].p_ndi_name));
    m_testEnded = false;
    m_test->begin(names);
    m_test->startSource(NdiSource(sources[sourceIndex]), sourceIndex, receivers, 0);
}

void NDIMainObject::sourceFrameReceived(double fps, int time, int format, double defaultFPS, int width, int height,
                                        int dataRate, int ping, int sourceIndex, int indexNum)
{
    Q_UNUSED(format)
    Q_UNUSED(dataRate)
    if (width == 0 && height == 0)
        return;
    m_console->writeDot();
    if (!m_dotTimer.isActive())
        m_dotTimer.start();
    m_test->addRow(fps, time, defaultFPS, width, height, ping, sourceIndex, indexNum);
}

void NDIMainObject::stopTest()
{
    if (m_testEnded)
        return;
    m_testEnded = true;
    QMetaObject::invokeMethod(testTimer.get(), &QTimer::stop, Qt::QueuedConnection); // it lives elsewhere
    m_test->stopReceivers();
    if (m_test->writeRecord()) {
        print(QStringLiteral("\nCompleted to test!!!\n"));
        printRecordCreated();
    } else {
        printRecordFailed();
    }
    worker.quit();
    emit quitApplication();
}

void NDIMainObject::sourceTestFinished(int index)
{
    m_test->forget(index);
    print(QStringLiteral("Receiver [%1] has been closed.").arg(index));
    if (m_test->isRunning())
        return;
    print(QStringLiteral("All Receivers have been closed."));
    m_testEnded = true;
    m_test->leaveRowsToJournal();
    emit quitApplication();
}

void NDIMainObject::printRecordCreated()
{
    print(QStringLiteral("Created the recorded file(%1) for your testing!!!!!\n")
              .arg(consoleTextFromUnicode(recordPath())));
}

void NDIMainObject::printRecordFailed()
{
    print(QStringLiteral("\nFinished to test. But not created the recorded file(csv) by some reason!!!\n"));
}
