#pragma once

#include "ndi/measurementsink.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class Journal;

/// The record of one test at a time: its measurements in memory, 40 bytes each, and, in case the process dies before
/// it has written them, the journal that the receivers feed besides. One thread at a time, but for what sink() gives.
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
    bool hasRows() const { return !m_rows.empty(); }
    /// Forgets the rows, and the journal with them.
    void clear();
    /// Ends the test without a record: the rows stay in the journal, for the next start of the program. A journal
    /// without rows is removed.
    void leaveToJournal();
    /// Ends the test: writes the record, even without rows, to recordPath() and forgets the rows. Returns false when
    /// the record could not be written. The journal then stays, and dropUnfinishedRecord() removes the unfinished
    /// record or keeps its rows if the journal lacks some.
    bool write();

private:
    using Rows = std::vector<std::vector<Measurement>>; ///< in chunks, so that no growth copies measurements

    Rows m_rows;
    QStringList m_names;
    std::unique_ptr<Journal> m_journal; ///< of the test that is not written yet
};
