#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

/// Turns any number of requests into at most one repaint for each frame of the display, and never more than 60 a
/// second; for measurements, which come all the time, into at most 20 a second. GUI thread; lives as a member of what
/// it paces.
class RepaintPacer final : public QObject {
    Q_OBJECT

public:
    explicit RepaintPacer(QObject *parent = nullptr);

    /// Asks for a repaint: due() follows from the event loop, at once when the last one is long enough ago.
    void request();
    /// The same for a measurement: due() follows within 1/20 s, at the same time for all pacers, because a paint of the
    /// window costs much the same for one widget as for several. It does not hold up a request().
    void requestForMeasurement();
    /// framesPerSecond of the display; values above 60 or not above 0 count as 60.
    void setDisplayRate(double framesPerSecond);
    int intervalMs() const { return m_intervalMs; }

signals:
    void due();

private:
    void fire();

    QTimer m_timer;
    QElapsedTimer m_sinceLast; ///< invalid before the first due()
    int m_intervalMs;
};
