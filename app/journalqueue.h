#pragma once

#include "ndi/measurementsink.h"

#include <QVector>

#include <atomic>
#include <cstdint>
#include <memory>

/// Carries measurements from the capturing threads to the one that writes the journal, without a lock:
/// a bounded ring, of which each cell says in which round it may be filled or emptied. Shared by the
/// receivers, which may outlive the test, and the journal.
class JournalQueue final : public MeasurementSink {
public:
    /// capacity: rows, a power of two. Memory is taken and touched here.
    explicit JournalQueue(std::uint32_t capacity);
    JournalQueue(const JournalQueue &) = delete;
    JournalQueue &operator=(const JournalQueue &) = delete;

    /// Measurements without a picture size, which no record has, and those after close() are passed
    /// over. When the ring is full the row is counted as lost.
    void add(const Measurement &measurement) noexcept override;
    void close() noexcept { m_isOpen.store(false, std::memory_order_release); }
    /// For tests.
    bool isOpen() const noexcept { return m_isOpen.load(std::memory_order_acquire); }

    /// Appends what is there to *rows, `most` rows at most. One thread, always the same one.
    void take(int most, QVector<Measurement> *rows);
    /// Rows that found the ring full, since the beginning.
    std::uint32_t lostRows() const noexcept { return m_lost.load(std::memory_order_relaxed); }

private:
    struct alignas(64) Cell { // a cache line: receivers do not touch each other's
        std::atomic<std::uint32_t> round{0};
        Measurement row;
    };

    const std::uint32_t m_capacity;
    const std::unique_ptr<Cell[]> m_cells;
    std::atomic<bool> m_isOpen{true};
    std::atomic<std::uint32_t> m_lost{0};
    alignas(64) std::atomic<std::uint32_t> m_tail{0}; ///< next to fill
    alignas(64) std::uint32_t m_head = 0;             ///< next to empty; the taking thread's
};
