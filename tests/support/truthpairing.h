#pragma once

#include "tests/support/truthcheck.h"

/// How near the times of a receiver's rows must be to the truth. Nearly all are close; the system may take the core
/// away between a frame and the reading of its time, so a few are not.
struct Nearness {
    int closeMs = 0; ///< of all but one row of `fewOf`
    int farMs = 0;   ///< of every row
    int fewOf = 1000;
};

/// As pairWithTruth(), for rows of which a few may be further from the truth than the others.
QString pairNearTruth(const TestRecord &record, const QVector<ReceiverTruth> &truth, Nearness nearness,
                      QVector<int> *pairing);
