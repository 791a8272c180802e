#include "app/testrecorder.h"

#include "app/journal.h"
#include "app/recordfile.h"

#include <QFile>

#include <utility>

TestRecorder::TestRecorder() = default;

TestRecorder::~TestRecorder() = default;

void TestRecorder::begin(const QStringList &names, const QDateTime &startTime)
{
    clear();
    m_names = names;
    m_journal = std::make_unique<Journal>(journalFolder(), names, startTime);
}

std::shared_ptr<MeasurementSink> TestRecorder::sink() const
{
    return m_journal ? m_journal->sink() : nullptr;
}

void TestRecorder::add(const Measurement &measurement)
{
    if (!measurement.hasPicture())
        return;
    m_rows.append(recordRow(m_names.value(measurement.sourceIndex), measurement));
}

void TestRecorder::clear()
{
    m_rows.clear();
    if (m_journal)
        m_journal->end(Journal::End::Remove);
    m_journal.reset();
}

bool TestRecorder::write()
{
    const QStringList rows = std::exchange(m_rows, {});
    const std::unique_ptr<Journal> journal = std::move(m_journal);
    if (journal)
        journal->close(); // it stays until the record is there
    // Asked first: a journal that misses its last rows only because the record has filled the disk is kept.
    const bool isCutOff = journal && journal->isCutOff();
    bool isWritten = writeRecord(rows);
    if (!isWritten && isCutOff && !recordPath().isEmpty()) {
        // The file is there, so space is short; a journal that is cut off is worth less than the record.
        journal->end(Journal::End::Remove);
        QFile::remove(recordPath()); // the next second gives the next try another name
        isWritten = writeRecord(rows);
    }
    if (journal)
        journal->end(isWritten ? Journal::End::Remove : Journal::End::Keep);
    return isWritten;
}
