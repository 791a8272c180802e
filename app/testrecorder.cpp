#include "app/testrecorder.h"

#include "app/journal.h"
#include "app/recordfile.h"

#include <utility>

namespace {

constexpr std::size_t rowsPerChunk = 4096;
static_assert(sizeof(Measurement) <= 40);

} // namespace

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
    if (m_rows.empty() || m_rows.back().size() == rowsPerChunk) {
        m_rows.emplace_back();
        m_rows.back().reserve(rowsPerChunk);
    }
    m_rows.back().push_back(measurement);
}

void TestRecorder::clear()
{
    m_rows.clear();
    if (m_journal)
        m_journal->end(Journal::End::Remove);
    m_journal.reset();
}

void TestRecorder::leaveToJournal()
{
    m_rows.clear();
    if (m_journal)
        m_journal->end(Journal::End::Keep);
    m_journal.reset();
}

bool TestRecorder::write()
{
    const Rows chunks = std::exchange(m_rows, {});
    const std::unique_ptr<Journal> journal = std::move(m_journal);
    if (journal)
        journal->close(); // it stays until the record is there
    auto chunk = chunks.cbegin();
    std::size_t next = 0;
    const bool isWritten = writeRecord([&](QString *row) {
        if (chunk == chunks.cend())
            return false;
        const Measurement &measurement = chunk->at(next);
        *row = recordRow(m_names.value(measurement.sourceIndex), measurement);
        if (++next == chunk->size()) {
            ++chunk;
            next = 0;
        }
        return true;
    });
    if (journal)
        journal->end(isWritten ? Journal::End::Remove : Journal::End::Keep);
    if (!isWritten)
        dropUnfinishedRecord(!journal || journal->isIncomplete());
    return isWritten;
}
