#pragma once

#include "loopback/truthreader.h"
#include "tests/support/testrecord.h"

#include <QString>
#include <QVector>

/// What the loopback did for one receiver.
struct ReceiverTruth {
    std::int64_t createdNs = 0;
    std::int64_t askedNs = 0;              ///< when the program first asked for a frame
    QVector<loopback::TruthRecord> frames; ///< video frames with a size, in the order handed over
    QVector<std::int64_t> freedNs;         ///< when each of them was given back; the far future: never

    /// Whole milliseconds from the receiver's creation to a frame.
    int timeMs(int frame) const { return int((frames.at(frame).timeNs - createdNs) / 1000000); }
};

/// The truth file sorted by receiver, in order of creation.
QVector<ReceiverTruth> truthOfReceivers(const std::vector<loopback::TruthRecord> &records);

/// Checks that a receiver's rows are its frames: row n is frame n, its time is when the program had it. The program
/// starts the receiver's clock between its creation and the first request for a frame, and reads it between the
/// hand-over of a frame and giving it back. One start of the clock must do for all rows; how long the machine kept the
/// program waiting at either place is no matter. Returns what is wrong, or nothing.
QString checkRowTimes(const QVector<TestRecordRow> &rows, const ReceiverTruth &truth);

/// Finds for every receiver of the record, 1-based and as many as the truth has, the one of the truth
/// whose frames its rows are, by checkRowTimes(). Their order of creation is the threads' affair, so any
/// pairing will do that gives each its own. Returns what is wrong, or nothing and the pairing.
QString pairWithTruth(const TestRecord &record, const QVector<ReceiverTruth> &truth, QVector<int> *pairing);

/// How long the program kept a receiver's frames, the median in ms: its reading of the clock is no later than that.
double medianHeldMs(const ReceiverTruth &truth);

/// The interval that a row of a receiver must have: the time since the row before. The first row has none,
/// nor has the second when the first frame came in the receiver's first millisecond: 0 stands for no frame yet.
int expectedIntervalMs(const QVector<TestRecordRow> &rows, int row);

/// Checks what holds for the rows of any receiver: times never go back, each interval is the one expected,
/// and each rate is that of the window of nominal-many arrivals. Returns what is wrong, or nothing.
QString checkRowsAmongThemselves(const QVector<TestRecordRow> &rows);
