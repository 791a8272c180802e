#pragma once

#include "loopback/truthreader.h"
#include "tests/support/testrecord.h"

#include <QString>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

/// Holds the record of a test that was killed beside what the runtime had given out: of each receiver's frames
/// all but the last second must be there. Receivers are told apart by their counts alone, since the runtime
/// numbers them in the order in which their threads came; those of probes have the smallest counts. Empty when
/// all is well.
inline QString problemOfKilledTest(const TestRecord &record, const QString &truthPath, int receiverCount)
{
    constexpr std::int64_t mostLostNs = 1000000000;
    if (!record.problem.isEmpty())
        return record.problem;
    std::map<int, std::vector<std::int64_t>> given;
    std::int64_t lastNs = 0;
    for (const loopback::TruthRecord &event : loopback::readTruth(truthPath.toStdString())) {
        if (event.kind == "video") {
            given[event.receiver].push_back(event.timeNs);
            lastNs = std::max(lastNs, event.timeNs);
        }
    }
    std::vector<int> recoveredCounts;
    for (int receiver = 1; receiver <= receiverCount; ++receiver)
        recoveredCounts.push_back(record.rowsOf(receiver).size());
    std::vector<int> givenCounts;
    std::vector<int> dueCounts;
    for (const auto &[receiver, timesNs] : given) {
        givenCounts.push_back(int(timesNs.size()));
        const auto isDue = [=](std::int64_t timeNs) { return timeNs < lastNs - mostLostNs; };
        dueCounts.push_back(int(std::count_if(timesNs.begin(), timesNs.end(), isDue)));
    }
    for (std::vector<int> *counts : {&recoveredCounts, &givenCounts, &dueCounts})
        std::sort(counts->begin(), counts->end(), std::greater<int>());
    if (givenCounts.size() < recoveredCounts.size())
        return QStringLiteral("frames of %1 receivers").arg(givenCounts.size());
    for (std::size_t i = 0; i < recoveredCounts.size(); ++i) {
        if (recoveredCounts[i] < dueCounts[i] || recoveredCounts[i] > givenCounts[i])
            return QStringLiteral("%1 rows recovered of a receiver that had %2 frames, %3 a second before the end")
                .arg(recoveredCounts[i])
                .arg(givenCounts[i])
                .arg(dueCounts[i]);
    }
    return {};
}
