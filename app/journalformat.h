#pragma once

#include "ndi/measurementsink.h"

#include <QByteArray>
#include <QDateTime>
#include <QStringList>
#include <QVector>

#include <cstdint>

/// The bytes of a journal: blocks with a checksum each, little endian, described in docs/journal.md.
/// Pure functions; any thread.

/// The process that writes a journal. A process number is used again, together with its start it is not.
struct ProcessIdentity {
    std::int64_t processId = 0;
    std::uint64_t startToken = 0; ///< the platform's own measure of the moment in which it began
};

/// What a journal says of its test, besides the measurements.
struct JournalStart {
    ProcessIdentity owner;
    QDateTime startTime; ///< of the test, with the offset of the local time that it was
    QStringList names;   ///< of the sources, by source index
};

constexpr int journalRowBytes = 40;
constexpr int journalRowsPerBlock = 1024; ///< at most

/// CRC-32C (Castagnoli) of the bytes, going on from crc, which is that of what came before.
std::uint32_t crc32c(const char *bytes, std::size_t count, std::uint32_t crc = 0) noexcept;

/// Puts blocks together, with running numbers.
class JournalEncoder final {
public:
    /// The blocks that begin a journal.
    QByteArray start(const JournalStart &start);
    /// Replaces *block by the block of these rows, journalRowsPerBlock at most. lostRows: rows of the
    /// whole test so far that found no place in memory.
    void rows(const QVector<Measurement> &rows, std::uint32_t lostRows, QByteArray *block);

private:
    void beginBlock(QByteArray *block) const;
    void endBlock(QByteArray *block, qint64 begin, std::uint16_t kind);

    std::uint32_t m_sequence = 0;
};

/// Reads a journal from its bytes, whatever they are. Blocks that are torn or damaged are skipped.
class JournalReader final {
public:
    enum class Kind {
        Journal,     ///< there is a start, or there are rows
        Unknown,     ///< neither
        OtherVersion ///< from another version of the program
    };

    /// bytes: kept, not copied.
    explicit JournalReader(const QByteArray &bytes);

    Kind kind() const { return m_kind; }
    /// Whether the start block is good. Without it, owner and startTime of start() are not known.
    bool hasStart() const { return m_hasStart; }
    const JournalStart &start() const { return m_start; }
    /// The name of a source, or "Source 3" for the third one when its name was in a spoilt block.
    QString sourceName(int index) const;
    qint64 rowCount() const { return m_rowCount; }
    /// Rows that found no place in memory when they were measured.
    std::uint32_t lostRows() const { return m_lostRows; }
    /// Whether a block that may have held rows is missing or spoilt. The last one does not count, it may be torn.
    bool isDamaged() const { return m_isDamaged; }
    /// The next row in their order; false after the last.
    bool nextRow(Measurement *row);

private:
    struct Block {
        std::uint16_t version = 0;
        std::uint16_t kind = 0;
        std::uint32_t sequence = 0;
        const char *payload = nullptr;
        qint64 payloadBytes = 0;
    };

    /// The block at offset; false when there is none or its checksum is wrong.
    bool blockAt(qint64 offset, Block *block);
    void take(const Block &block);
    void takeNames(const Block &block);

    QByteArray m_bytes;
    Kind m_kind = Kind::Unknown;
    JournalStart m_start;
    bool m_hasStart = false;
    std::uint32_t m_nameCount = 0; ///< as the start block says
    QVector<Block> m_rowBlocks;
    qint64 m_rowCount = 0;
    std::uint32_t m_lostRows = 0;
    bool m_isDamaged = false;
    int m_checksLeft = 1000; ///< bounds the time for a file made to cost time
    int m_block = 0;         ///< of nextRow()
    qint64 m_rowInBlock = 0;
};
