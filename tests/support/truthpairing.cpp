#include "tests/support/truthpairing.h"

#include <QStringList>

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace {

/// What is wrong with a receiver's rows as those of a receiver of the truth, row n being frame n; or nothing.
QString farFromTruth(const QVector<TestRecordRow> &rows, const ReceiverTruth &truth, Nearness nearness)
{
    if (rows.size() > truth.frames.size())
        return QStringLiteral("%1 rows of %2 frames").arg(rows.size()).arg(truth.frames.size());
    int mostMs = 0;
    int notClose = 0;
    for (int i = 0; i < rows.size(); ++i) {
        const int offMs = std::abs(rows.at(i).timeMs - truth.timeMs(i));
        mostMs = std::max(mostMs, offMs);
        notClose += offMs > nearness.closeMs ? 1 : 0;
    }
    if (mostMs <= nearness.farMs && notClose * nearness.fewOf <= rows.size())
        return {};
    return QStringLiteral("%1 of %2 rows further than %3 ms, at most %4 ms")
        .arg(notClose)
        .arg(rows.size())
        .arg(nearness.closeMs)
        .arg(mostMs);
}

} // namespace

QString pairNearTruth(const TestRecord &record, const QVector<ReceiverTruth> &truth, Nearness nearness,
                      QVector<int> *pairing)
{
    QVector<QVector<bool>> fits;
    QStringList misfits;
    for (int receiver = 1; receiver <= truth.size(); ++receiver) {
        const QVector<TestRecordRow> rows = record.rowsOf(receiver);
        QVector<bool> candidates;
        for (int candidate = 0; candidate < truth.size(); ++candidate) {
            const QString wrong = farFromTruth(rows, truth.at(candidate), nearness);
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
