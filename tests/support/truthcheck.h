#pragma once

#include "loopback/truthreader.h"
#include "tests/support/testrecord.h"

#include <QString>
#include <QVector>

/// What the loopback did for one receiver.
struct ReceiverTruth {
    std::int64_t createdNs = 0;
    QVector<loopback::TruthRecord> frames; ///< video frames with a size, in the order handed over

    /// Whole milliseconds from the receiver's creation to a frame.
    int timeMs(int frame) const { return int((frames.at(frame).timeNs - createdNs) / 1000000); }
};

/// The truth file sorted by receiver, in order of creation.
QVector<ReceiverTruth> truthOfReceivers(const std::vector<loopback::TruthRecord> &records);

/// Finds for every receiver of the record, 1-based and as many as the truth has, the one of the truth
/// whose frames its rows are: row n is frame n, its time at most toleranceMs off. Their order of
/// creation is the threads' affair, so any pairing will do that gives each its own. Returns what is
/// wrong, or nothing and the pairing.
QString pairWithTruth(const TestRecord &record, const QVector<ReceiverTruth> &truth, int toleranceMs,
                      QVector<int> *pairing);

/// Checks what holds for the rows of any receiver: times never go back, each interval is the difference
/// of two times, they add up to the last time less the first, and each rate is that of the window of
/// nominal-many arrivals. Returns what is wrong, or nothing.
QString checkRowsAmongThemselves(const QVector<TestRecordRow> &rows);
