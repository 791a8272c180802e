#include "tests/support/truthcheck.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <numeric>

namespace {

/// What does not fit between a receiver's rows and a receiver's frames, or nothing.
QString misfit(const QVector<TestRecordRow> &rows, const ReceiverTruth &truth, int toleranceMs)
{
    if (rows.size() > truth.frames.size())
        return QStringLiteral("%1 rows of %2 frames").arg(rows.size()).arg(truth.frames.size());
    for (int i = 0; i < rows.size(); ++i) {
        const int trueMs = truth.timeMs(i);
        if (std::abs(rows.at(i).timeMs - trueMs) > toleranceMs)
            return QStringLiteral("row %1 says %2 ms, it was %3 ms").arg(i).arg(rows.at(i).timeMs).arg(trueMs);
    }
    return {};
}

} // namespace

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
    const int count = truth.size();
    QVector<QVector<bool>> fits(count, QVector<bool>(count, false));
    QString firstMisfit;
    for (int receiver = 0; receiver < count; ++receiver) {
        const QVector<TestRecordRow> rows = record.rowsOf(receiver + 1);
        for (int candidate = 0; candidate < count; ++candidate) {
            const QString wrong = misfit(rows, truth.at(candidate), toleranceMs);
            fits[receiver][candidate] = wrong.isEmpty();
            if (firstMisfit.isEmpty())
                firstMisfit = wrong;
        }
    }
    QVector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    do {
        bool all = true;
        for (int receiver = 0; receiver < count && all; ++receiver)
            all = fits.at(receiver).at(order.at(receiver));
        if (all) {
            *pairing = order;
            return {};
        }
    } while (std::next_permutation(order.begin(), order.end()));
    return QStringLiteral("the rows are not those of the frames; one pairing: ") + firstMisfit;
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
