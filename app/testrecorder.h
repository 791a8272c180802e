#pragma once

#include "ndi/measurementsink.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>

class Journal;

/// The record of one test at a time: its rows in memory and, in case the process does not live to write
/// them, the journal that the receivers feed besides. One thread at a time, but for what sink() gives.
class TestRecorder final {
public:
    TestRecorder();
    /// Rows that no record was written of stay in the journal, for the next start of the program.
    ~TestRecorder();
    TestRecorder(const TestRecorder &) = delete;
    TestRecorder &operator=(const TestRecorder &) = delete;

    /// A new test: no rows. names: of all sources, by source index.
    void begin(const QStringList &names, const QDateTime &startTime = QDateTime::currentDateTime());
    /// Where the receivers of this test report to besides; null before begin().
    std::shared_ptr<MeasurementSink> sink() const;

    /// Takes a measurement into the record, unless it is of no picture.
    void add(const Measurement &measurement);
    bool hasRows() const { return !m_rows.isEmpty(); }
    /// Forgets the rows, and the journal with them.
    void clear();
    /// Ends the test: writes the record, be it without rows, and forgets the rows. False when it could
    /// not be written; then the journal stays. recordPath() tells where it is.
    bool write();

private:
    QStringList m_rows;
    QStringList m_names;
    std::unique_ptr<Journal> m_journal; ///< of the test that is not written yet
};
