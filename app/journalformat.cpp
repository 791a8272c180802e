#include "app/journalformat.h"

#include <QtEndian>

#include <array>
#include <cmath>
#include <cstring>

namespace {

constexpr char magic[] = {'V', 'X', 'J', 'B'};
constexpr std::uint16_t formatVersion = 1;
constexpr std::uint16_t startKind = 1;
constexpr std::uint16_t namesKind = 2;
constexpr std::uint16_t rowsKind = 3;

constexpr int headBytes = 20;    // magic, version, kind, payload bytes, sequence, checksum
constexpr int checksumAt = 16;   // the checksum covers what stands before it and the payload
constexpr int startBytes = 32;   // process, its start, test's start, offset, number of names
constexpr int rowsHeadBytes = 4; // lost rows
constexpr qint64 mostPayloadBytes = 262144;
constexpr int namesBlockBytes = 32 * 1024; // a new block is begun beyond this
constexpr int mostNameBytes = 64 * 1024;
constexpr std::uint32_t mostNames = 1000000;
constexpr int longestOffsetS = 14 * 3600; // of a time zone

static_assert(rowsHeadBytes + journalRowBytes * journalRowsPerBlock <= mostPayloadBytes);
static_assert(namesBlockBytes + mostNameBytes + 8 <= mostPayloadBytes);

constexpr std::array<std::uint32_t, 256> makeCrcTable()
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1U) != 0 ? 0x82f63b78U : 0U);
        table[i] = value;
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> crcTable = makeCrcTable();

template <typename Number>
void put(QByteArray *bytes, Number number)
{
    char text[sizeof(Number)];
    qToLittleEndian(number, text);
    bytes->append(text, int(sizeof text));
}

template <typename Number>
Number get(const char *bytes)
{
    return qFromLittleEndian<Number>(bytes);
}

void putDouble(QByteArray *bytes, double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    put(bytes, bits);
}

double getDouble(const char *bytes)
{
    const std::uint64_t bits = get<std::uint64_t>(bytes);
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

Measurement rowAt(const char *bytes)
{
    Measurement row;
    row.fps = getDouble(bytes);
    row.defaultFps = getDouble(bytes + 8);
    row.timeMs = get<std::int32_t>(bytes + 16);
    row.width = get<std::int32_t>(bytes + 20);
    row.height = get<std::int32_t>(bytes + 24);
    row.intervalMs = get<std::int32_t>(bytes + 28);
    row.sourceIndex = get<std::int32_t>(bytes + 32);
    row.graph = get<std::int32_t>(bytes + 36);
    return row;
}

} // namespace

std::uint32_t crc32c(const char *bytes, std::size_t count, std::uint32_t crc) noexcept
{
    crc = ~crc;
    for (std::size_t i = 0; i < count; ++i)
        crc = (crc >> 8) ^ crcTable[(crc ^ static_cast<unsigned char>(bytes[i])) & 0xffU];
    return ~crc;
}

void JournalEncoder::beginBlock(QByteArray *block) const
{
    block->append(headBytes, '\0');
}

void JournalEncoder::endBlock(QByteArray *block, qint64 begin, std::uint16_t kind)
{
    char *const head = block->data() + begin;
    const auto payloadBytes = std::uint32_t(block->size() - begin - headBytes);
    std::memcpy(head, magic, sizeof magic);
    qToLittleEndian(formatVersion, head + 4);
    qToLittleEndian(kind, head + 6);
    qToLittleEndian(payloadBytes, head + 8);
    qToLittleEndian(m_sequence, head + 12);
    ++m_sequence;
    const std::uint32_t crc = crc32c(head + headBytes, payloadBytes, crc32c(head, checksumAt));
    qToLittleEndian(crc, head + checksumAt);
}

QByteArray JournalEncoder::start(const JournalStart &start)
{
    QByteArray bytes;
    beginBlock(&bytes);
    put(&bytes, start.owner.processId);
    put(&bytes, start.owner.startToken);
    put(&bytes, std::int64_t(start.startTime.toMSecsSinceEpoch()));
    put(&bytes, std::int32_t(start.startTime.offsetFromUtc()));
    put(&bytes, std::uint32_t(start.names.size()));
    endBlock(&bytes, 0, startKind);

    for (int next = 0; next < start.names.size();) {
        const int begin = bytes.size();
        beginBlock(&bytes);
        put(&bytes, std::uint32_t(next));
        while (next < start.names.size() && bytes.size() - begin < namesBlockBytes) {
            const QByteArray name = start.names.at(next).toUtf8().left(mostNameBytes);
            put(&bytes, std::uint32_t(name.size()));
            bytes.append(name);
            ++next;
        }
        endBlock(&bytes, begin, namesKind);
    }
    return bytes;
}

void JournalEncoder::rows(const QVector<Measurement> &rows, std::uint32_t lostRows, QByteArray *block)
{
    Q_ASSERT(rows.size() <= journalRowsPerBlock);
    block->resize(0); // keeps the memory
    beginBlock(block);
    put(block, lostRows);
    for (const Measurement &row : rows) {
        putDouble(block, row.fps);
        putDouble(block, row.defaultFps);
        for (const int number : {row.timeMs, row.width, row.height, row.intervalMs, row.sourceIndex, row.graph})
            put(block, std::int32_t(number));
    }
    endBlock(block, 0, rowsKind);
}

JournalReader::JournalReader(const QByteArray &bytes) : m_bytes(bytes)
{
    const QByteArray begin = QByteArray::fromRawData(magic, int(sizeof magic));
    qint64 offset = 0;
    bool isSkipped = false; // bytes that no good block has followed yet
    std::int64_t lastSequence = -1;
    while (m_checksLeft > 0) {
        Block block;
        if (!blockAt(offset, &block)) {
            isSkipped = true;
            const int next = m_bytes.indexOf(begin, int(offset) + 1);
            if (offset >= m_bytes.size() || next < 0)
                break;
            offset = next;
            continue;
        }
        offset += headBytes + block.payloadBytes;
        if (block.version != formatVersion) {
            if (lastSequence < 0) {
                m_kind = Kind::OtherVersion;
                return;
            }
            continue;
        }
        if (block.sequence <= lastSequence) // a block twice: the first one counts
            continue;
        const bool isNext = !isSkipped && block.sequence == lastSequence + 1;
        const bool onlyStartIsMissing = lastSequence < 0 && block.sequence == 1;
        m_isDamaged = m_isDamaged || (!isNext && !onlyStartIsMissing);
        isSkipped = false;
        lastSequence = block.sequence;
        take(block);
    }
    if (m_hasStart || m_rowCount > 0)
        m_kind = Kind::Journal;
}

QString JournalReader::sourceName(int index) const
{
    const QString name = m_start.names.value(index);
    const bool wasThere = !m_hasStart || std::uint32_t(index) < m_nameCount;
    return name.isNull() && wasThere ? QStringLiteral("Source %1").arg(qint64(index) + 1) : name;
}

bool JournalReader::blockAt(qint64 offset, Block *block)
{
    const qint64 left = m_bytes.size() - offset;
    if (left < headBytes)
        return false;
    const char *const head = m_bytes.constData() + offset;
    if (std::memcmp(head, magic, sizeof magic) != 0)
        return false;
    block->version = get<std::uint16_t>(head + 4);
    block->kind = get<std::uint16_t>(head + 6);
    block->payloadBytes = get<std::uint32_t>(head + 8);
    block->sequence = get<std::uint32_t>(head + 12);
    block->payload = head + headBytes;
    if (block->payloadBytes > mostPayloadBytes || block->payloadBytes > left - headBytes)
        return false;
    const std::uint32_t crc = crc32c(block->payload, std::size_t(block->payloadBytes), crc32c(head, checksumAt));
    if (crc == get<std::uint32_t>(head + checksumAt))
        return true;
    --m_checksLeft;
    return false;
}

void JournalReader::take(const Block &block)
{
    const char *const payload = block.payload;
    if (block.kind == startKind && !m_hasStart && block.payloadBytes >= startBytes) {
        m_start.owner.processId = get<std::int64_t>(payload);
        m_start.owner.startToken = get<std::uint64_t>(payload + 8);
        const int offsetS = qBound(-longestOffsetS, get<std::int32_t>(payload + 24), longestOffsetS);
        m_start.startTime = QDateTime::fromMSecsSinceEpoch(get<std::int64_t>(payload + 16), Qt::OffsetFromUTC, offsetS);
        m_nameCount = get<std::uint32_t>(payload + 28);
        m_hasStart = true;
    } else if (block.kind == namesKind && block.payloadBytes >= 4) {
        takeNames(block);
    } else if (block.kind == rowsKind && block.payloadBytes >= rowsHeadBytes) {
        m_lostRows = get<std::uint32_t>(payload);
        m_rowCount += (block.payloadBytes - rowsHeadBytes) / journalRowBytes;
        m_rowBlocks.append(block);
    }
}

void JournalReader::takeNames(const Block &block)
{
    const char *at = block.payload + 4;
    const char *const end = block.payload + block.payloadBytes;
    std::uint32_t index = get<std::uint32_t>(block.payload);
    while (end - at >= 4 && index < mostNames) {
        const std::uint32_t bytes = get<std::uint32_t>(at);
        at += 4;
        if (bytes > std::uint32_t(end - at))
            return;
        while (std::uint32_t(m_start.names.size()) <= index) // names of a lost block are null
            m_start.names.append(QString());
        m_start.names[int(index)] = QLatin1String("") + QString::fromUtf8(at, int(bytes)); // not null when empty
        at += bytes;
        ++index;
    }
}

bool JournalReader::nextRow(Measurement *row)
{
    while (m_block < m_rowBlocks.size()) {
        const Block &block = m_rowBlocks.at(m_block);
        const qint64 rows = (block.payloadBytes - rowsHeadBytes) / journalRowBytes;
        if (m_rowInBlock < rows) {
            *row = rowAt(block.payload + rowsHeadBytes + m_rowInBlock * journalRowBytes);
            ++m_rowInBlock;
            return true;
        }
        ++m_block;
        m_rowInBlock = 0;
    }
    return false;
}
