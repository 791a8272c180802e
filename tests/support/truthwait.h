#pragma once

#include "loopback/truthreader.h"

#include <QString>
#include <QtTest>

/// Waits until the truth file holds so many events of a kind. The event loop runs meanwhile. False when they have
/// not come in time.
inline bool waitForTruth(const QString &truthPath, const std::string &kind, int count, int timeoutMs = 30000)
{
    const auto isThere = [&] {
        return loopback::countTruth(loopback::readTruth(truthPath.toStdString()), kind) >= count;
    };
    return QTest::qWaitFor(isThere, timeoutMs);
}
