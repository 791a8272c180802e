#include "tests/support/truthcheck.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <numeric>

namespace {

constexpr std::int64_t nsPerMs = 1000000;
constexpr std::int64_t neverNs = std::numeric_limits<std::int64_t>::max() / 2;
/// The program and the loopback each turn the system's ticks into nanoseconds, rounding in their own ways.
constexpr std::int64_t clockToleranceNs = 100000;

/// Marks the newest frame of this number that is not yet given back.
void noteFree(ReceiverTruth *receiver, const loopback::TruthRecord &record)
{
    for (int frame = receiver->frames.size() - 1; frame >= 0; --frame) {
        if (receiver->frames.at(frame).number == record.number && receiver->freedNs.at(frame) == neverNs) {
            receiver->freedNs[frame] = record.timeNs;
            return;
        }
    }
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
        if (record.kind == "ask")
            receiver.askedNs = record.timeNs;
        if (record.kind == "video" && record.note != "0x0") {
            receiver.frames.append(record);
            receiver.freedNs.append(neverNs);
        }
        if (record.kind == "free")
            noteFree(&receiver, record);
    }
    return receivers;
}

QString checkRowTimes(const QVector<TestRecordRow> &rows, const ReceiverTruth &truth)
{
    if (rows.size() > truth.frames.size())
        return QStringLiteral("%1 rows of %2 frames").arg(rows.size()).arg(truth.frames.size());
    // The clock's start is somewhere in here; every row narrows it down.
    std::int64_t earliestNs = truth.createdNs - clockToleranceNs;
    std::int64_t latestNs = truth.askedNs + clockToleranceNs;
    for (int i = 0; i < rows.size(); ++i) {
        const std::int64_t rowNs = rows.at(i).timeMs * nsPerMs;
        earliestNs = std::max(earliestNs, truth.frames.at(i).timeNs - rowNs - nsPerMs - clockToleranceNs);
        latestNs = std::min(latestNs, truth.freedNs.at(i) - rowNs + clockToleranceNs);
        if (earliestNs > latestNs)
            return QStringLiteral("row %1 says %2 ms, %3 ms off")
                .arg(i)
                .arg(rows.at(i).timeMs)
                .arg(double(earliestNs - latestNs) / nsPerMs);
    }
    return {};
}

QString pairWithTruth(const TestRecord &record, const QVector<ReceiverTruth> &truth, QVector<int> *pairing)
{
    QVector<QVector<bool>> fits;
    QStringList misfits;
    for (int receiver = 1; receiver <= truth.size(); ++receiver) {
        const QVector<TestRecordRow> rows = record.rowsOf(receiver);
        QVector<bool> candidates;
        for (int candidate = 0; candidate < truth.size(); ++candidate) {
            const QString wrong = checkRowTimes(rows, truth.at(candidate));
            candidates.append(wrong.isEmpty());
            if (!wrong.isEmpty())
                misfits.append(QStringLiteral("%1 as %2: %3").arg(receiver).arg(candidate).arg(wrong));
        }
        fits.append(candidates);
    }
    QVector<int> order(truth.size());
    std::iota(order.begin(), order.end(), 0);
    do {
        bool all = true;
        for (int receiver = 0; receiver < order.size() && all; ++receiver)
            all = fits.at(receiver).at(order.at(receiver));
        if (all) {
            *pairing = order;
            return {};
        }
    } while (std::next_permutation(order.begin(), order.end()));
    return QStringLiteral("the rows are not those of the frames:\n") + misfits.join(QLatin1Char('\n'));
}

double medianHeldMs(const ReceiverTruth &truth)
{
    if (truth.frames.isEmpty())
        return 0.0;
    QVector<std::int64_t> heldNs;
    for (int frame = 0; frame < truth.frames.size(); ++frame)
        heldNs.append(truth.freedNs.at(frame) - truth.frames.at(frame).timeNs);
    const auto middle = heldNs.begin() + heldNs.size() / 2;
    std::nth_element(heldNs.begin(), middle, heldNs.end());
    return double(*middle) / nsPerMs;
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
