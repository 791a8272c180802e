#include "tests/support/testrecord.h"

#include <QFile>
#include <QList>

#include <algorithm>
#include <vector>

namespace {

constexpr int columnsAfterTheName = 7;

bool readRow(const QByteArray &line, TestRecordRow *row)
{
    // Counted from the right: a source's name may hold commas.
    QList<QByteArray> fields = line.split(',');
    if (fields.size() <= columnsAfterTheName)
        return false;
    const QList<QByteArray> numbers = fields.mid(fields.size() - columnsAfterTheName);
    row->sourceName = fields.mid(0, fields.size() - columnsAfterTheName).join(',');
    bool good[columnsAfterTheName] = {};
    row->width = numbers.at(0).toInt(&good[0]);
    row->height = numbers.at(1).toInt(&good[1]);
    row->defaultFps = numbers.at(2).toDouble(&good[2]);
    row->timeMs = numbers.at(3).toInt(&good[3]);
    row->receiver = numbers.at(4).toInt(&good[4]);
    row->fps = numbers.at(5).toDouble(&good[5]);
    row->intervalMs = numbers.at(6).toInt(&good[6]);
    for (const QByteArray &number : numbers) {
        if (number != number.trimmed())
            return false;
    }
    return std::all_of(std::begin(good), std::end(good), [](bool isGood) { return isGood; });
}

} // namespace

TestRecord TestRecord::read(const QString &path)
{
    TestRecord record;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        record.problem = QStringLiteral("cannot open '%1'").arg(path);
        return record;
    }
    const QByteArray text = file.readAll();
    if (text.contains('\r') || !text.endsWith('\n')) {
        record.problem = QStringLiteral("lines must end with a line feed alone");
        return record;
    }
    QList<QByteArray> lines = text.split('\n');
    lines.removeLast(); // what follows the last line feed
    record.header = lines.takeFirst();
    for (int i = 0; i < lines.size(); ++i) {
        TestRecordRow row;
        if (!readRow(lines.at(i), &row)) {
            record.problem = QStringLiteral("line %1 does not read: %2").arg(i + 2).arg(QString::fromUtf8(lines.at(i)));
            return record;
        }
        record.rows.append(row);
    }
    return record;
}

QVector<TestRecordRow> TestRecord::rowsOf(int receiver) const
{
    QVector<TestRecordRow> result;
    for (const TestRecordRow &row : rows) {
        if (row.receiver == receiver)
            result.append(row);
    }
    return result;
}

double medianRate(const QVector<TestRecordRow> &rows, int last)
{
    std::vector<double> rates;
    for (const TestRecordRow &row : rows.mid(qMax(0, rows.size() - last)))
        rates.push_back(row.fps);
    std::sort(rates.begin(), rates.end());
    return rates.empty() ? 0.0 : rates.at(rates.size() / 2);
}
