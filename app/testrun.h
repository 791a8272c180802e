#pragma once

#include "app/testrecorder.h"
#include "ndi/framecopybudget.h"
#include "ndi/ndisource.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <cstdint>
#include <memory>

class ReceiverController;

/// A running test, in the window and in the console alike: its receivers, the rows of its record, its
/// journal. The sources' names are frozen at the start, so that a new source list does not touch a running
/// test. Lives on one thread, which needs an event loop.
class TestRun final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TestRun)

public:
    // What a user may choose.
    static constexpr int shortestMinutes = 1;
    static constexpr int longestMinutes = 5;
    static constexpr int fewestReceivers = 1; ///< of one source
    static constexpr int mostReceivers = 8;

    explicit TestRun(QObject *parent = nullptr);
    /// Waits until running receivers have ended, about a second at most. On the object's thread, unless there
    /// are none.
    ~TestRun() override;

    /// A new test: no rows. names: of all sources, by source index. Its journal begins.
    void begin(const QStringList &names);
    /// Starts receivers (fewestReceivers to mostReceivers) on a source; they report as graph, graph + 1, ...
    void startSource(const NdiSource &source, int sourceIndex, int receivers, int graph);
    /// Asks all receivers to stop and does not wait; each ends within a second. Measurements that still wait in this
    /// thread's event queue are emitted by frameReceived() before this returns, so a record written next has them.
    void stopReceivers();
    /// True while any receiver exists, including ones that are shutting down.
    bool isRunning() const { return !controllers.isEmpty(); }

    /// Takes a measurement into the record, unless it is of no picture; the arguments are those of frameReceived().
    void addRow(double fps, int timeMs, double defaultFps, int width, int height, int intervalMs, int sourceIndex,
                int graph);
    bool hasRows() const { return m_recorder.hasRows(); }
    /// Forgets the rows; no record of this test will be written.
    void clearRows() { m_recorder.clear(); }
    /// Ends the test without a record; see TestRecorder::leaveToJournal().
    void leaveRowsToJournal() { m_recorder.leaveToJournal(); }
    /// Ends the test's record: writes it, if there is something to write, and forgets the rows in any case.
    /// False when there was something and it could not be written.
    bool writeRecordIfAny();
    /// The same, but a test without rows leaves a record too.
    bool writeRecord();

    /// The source index that frameData() is wanted from, or FrameCopyBudget::noSource, as at first. Stays for later
    /// tests; takes effect at once.
    void setPictureSource(int sourceIndex) { m_copyBudget->setSource(sourceIndex); }
    /// Asks for one more picture: the next frame of that source comes by frameData(), if it has pixels.
    void requestPicture() { m_copyBudget->request(); }

    /// Takes the last controller of this source out of the list; it has reported its end.
    void forget(int sourceIndex);

signals:
    /// See ReceiverController::sourceFrameReceived().
    void frameReceived(double fps, int time, int format, double defaultFPS, int width, int height, int dataRate,
                       int ping, int sourceIndex, int indexNum);
    /// One picture for each requestPicture(); see ReceiverController::frameData(). The listener frees pData with
    /// delete[]. Connect before startSource().
    void frameData(int sourceIndex, int type, int width, int height, uint8_t *pData);
    /// All receivers of a source are gone. Never emitted inside stopReceivers().
    void sourceFinished(int sourceIndex);

private:
    /// On their way here; the preview holds one more.
    static constexpr int maxCopiesInFlight = 2;

    QList<ReceiverController *> controllers; ///< in order of their start
    TestRecorder m_recorder;
    const std::shared_ptr<FrameCopyBudget> m_copyBudget;
};
