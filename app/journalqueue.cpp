#include "app/journalqueue.h"

#include <QtGlobal>

JournalQueue::JournalQueue(std::uint32_t capacity) : m_capacity(capacity), m_cells(std::make_unique<Cell[]>(capacity))
{
    Q_ASSERT(capacity > 1 && (capacity & (capacity - 1)) == 0);
    for (std::uint32_t i = 0; i < capacity; ++i)
        m_cells[i].round.store(i, std::memory_order_relaxed);
}

void JournalQueue::add(const Measurement &measurement) noexcept
{
    if (!m_isOpen.load(std::memory_order_acquire) || !measurement.hasPicture())
        return;
    std::uint32_t place = m_tail.load(std::memory_order_relaxed);
    for (;;) {
        Cell &cell = m_cells[place & (m_capacity - 1)];
        const auto ahead = std::int32_t(cell.round.load(std::memory_order_acquire) - place);
        if (ahead == 0) {
            // Whoever moves the tail owns the cell. A loser begins again with the tail as it is now.
            if (m_tail.compare_exchange_weak(place, place + 1, std::memory_order_relaxed)) {
                cell.row = measurement;
                cell.round.store(place + 1, std::memory_order_release);
                return;
            }
        } else if (ahead < 0) { // still holds the row of the round before
            m_lost.fetch_add(1, std::memory_order_relaxed);
            return;
        } else {
            place = m_tail.load(std::memory_order_relaxed);
        }
    }
}

void JournalQueue::take(int most, QVector<Measurement> *rows)
{
    for (int taken = 0; taken < most; ++taken) {
        Cell &cell = m_cells[m_head & (m_capacity - 1)];
        if (cell.round.load(std::memory_order_acquire) != m_head + 1)
            return;
        rows->append(cell.row);
        cell.round.store(m_head + m_capacity, std::memory_order_release);
        ++m_head;
    }
}
