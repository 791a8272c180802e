#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// A line of a record, read back.
struct TestRecordRow {
    QByteArray sourceName;
    int width = 0;
    int height = 0;
    double defaultFps = 0.0;
    int timeMs = 0;
    int receiver = 0; ///< 1-based
    double fps = 0.0;
    int intervalMs = 0;
};

/// A record file, read back strictly: whatever does not fit the format to the letter is a problem.
struct TestRecord {
    QByteArray header;
    QVector<TestRecordRow> rows;
    QString problem; ///< empty when the file is as it should be

    static TestRecord read(const QString &path);
    /// The rows of one receiver, 1-based, in their order.
    QVector<TestRecordRow> rowsOf(int receiver) const;
};

/// The middle one of the received rates of the last rows, so many at most: a machine under load may hold the very last
/// frames up. 0 without rows.
double medianRate(const QVector<TestRecordRow> &rows, int last);
