#pragma once

#include "ndi/ndisource.h"

#include <QObject>
#include <QVector>

#include <deque>
#include <memory>
#include <vector>

/// Finds out the video format of every source of a list: connects to each until its first frame. At most
/// eight at a time; one without an answer after ten seconds makes room for the next and has its turn again
/// later. Each receiver has a thread of its own. GUI thread.
class FormatProbes final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FormatProbes)

public:
    static constexpr int atOnce = 8;

    /// patienceMs: how long a source may keep its place without an answer; other values are for tests.
    explicit FormatProbes(int patienceMs = 10000, QObject *parent = nullptr);
    /// Stops, and waits for the receivers: about a second at most.
    ~FormatProbes() override;

    /// Begins with a new list; what the former one still reports is not passed on.
    void start(const QVector<NdiSource> &sources);
    /// Asks every receiver to stop and does not wait. Nothing is reported any more.
    void stop();
    /// Whether no receiver is left, not even one that was asked to stop.
    bool isIdle() const { return m_probes.empty(); }

signals:
    /// The format of the source at this place of the list; all 0 when the connection failed.
    void formatFound(int index, double fps, int fourCC, int width, int height);
    /// The last receiver has gone.
    void idle();

private:
    struct Probe;

    void launchWaiting();
    void launch(int index);
    void giveUp(Probe *probe);
    void remove(Probe *probe);

    const int m_patienceMs;
    QVector<NdiSource> m_sources;
    std::deque<int> m_waiting; ///< places in the list, the next one first
    std::vector<std::unique_ptr<Probe>> m_probes;
};
