#include "tests/support/truthcheck.h"

#include "tests/support/truthpairing.h"

#include <cmath>
#include <deque>

QVector<ReceiverTruth> truthOfReceivers(const std::vector<loopback::TruthRecord> &records)
{
    QVector<ReceiverTruth> receivers;
    for (const loopback::TruthRecord &record : records) {
        if (record.receiver < 0)
            continue;
        if (receivers.size() <= record.receiver)
            receivers.resize(record.receiver + 1);
        ReceiverTruth &receiver = receivers[record.receiver];
        if (record.kind == "create")
            receiver.createdNs = record.timeNs;
        if (record.kind == "video" && record.note != "0x0")
            receiver.frames.append(record);
    }
    return receivers;
}

QString pairWithTruth(const TestRecord &record, const QVector<ReceiverTruth> &truth, int toleranceMs,
                      QVector<int> *pairing)
{
    return pairNearTruth(record, truth, {toleranceMs, toleranceMs}, pairing);
}

int expectedIntervalMs(const QVector<TestRecordRow> &rows, int row)
{
    const int previousMs = row == 0 ? 0 : rows.at(row - 1).timeMs;
    return previousMs == 0 ? 0 : rows.at(row).timeMs - previousMs;
}

QString checkRowsAmongThemselves(const QVector<TestRecordRow> &rows)
{
    std::deque<int> window{0};
    for (int i = 0; i < rows.size(); ++i) {
        const TestRecordRow &row = rows.at(i);
        if (i > 0 && row.timeMs < rows.at(i - 1).timeMs)
            return QStringLiteral("row %1: time goes back").arg(i);
        const int expectedMs = expectedIntervalMs(rows, i);
        if (row.intervalMs != expectedMs)
            return QStringLiteral("row %1: interval %2, not %3").arg(i).arg(row.intervalMs).arg(expectedMs);

        window.push_back(row.timeMs);
        if (double(window.size()) > row.defaultFps)
            window.pop_front();
        const double rate = (double(window.size()) - 1.0) * 1000.0 / double(row.timeMs - window.front());
        // Six digits are written.
        if (std::isfinite(rate) ? std::abs(row.fps - rate) > rate * 1e-5 : !std::isinf(row.fps))
            return QStringLiteral("row %1: rate %2, not %3").arg(i).arg(row.fps).arg(rate);
    }
    return {};
}
