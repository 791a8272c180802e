#include "loopback/truthlog.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace loopback {
namespace {

// kind receiver time number note: columns of a line, each followed by a space, the last by \n
constexpr std::size_t kKindAt = 0;
constexpr std::size_t kReceiverAt = 9;
constexpr std::size_t kTimeAt = 16;
constexpr std::size_t kNumberAt = 35;
constexpr std::size_t kNoteAt = 48;
constexpr std::size_t kKindWidth = 8;
constexpr std::size_t kReceiverWidth = 6;
constexpr std::size_t kTimeWidth = 18;
constexpr std::size_t kNumberWidth = 12;
constexpr std::size_t kNoteWidth = 15;
constexpr std::size_t kEndAt = TruthLog::kLineBytes - 1;

static_assert(kNoteAt + kNoteWidth == kEndAt);

/// Right-aligned; a number too long for its column is cut to as many nines.
void putNumber(char *column, std::size_t width, std::int64_t value) noexcept
{
    char digits[24];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    const auto length = static_cast<std::size_t>(end.ptr - digits);
    if (length > width)
        std::memset(column, '9', width);
    else
        std::memcpy(column + (width - length), digits, length);
}

void putText(char *column, std::size_t width, const char *text) noexcept
{
    std::copy_n(text, std::min(width, std::strlen(text)), column);
}

/// The last byte makes a line valid for a reader in another thread or process.
void publish(char *line) noexcept
{
    __atomic_store_n(line + kEndAt, '\n', __ATOMIC_RELEASE); // std::atomic_ref comes with C++20
}

} // namespace

bool TruthLog::open(const std::string &path, std::size_t records, std::string &error)
{
    m_records = std::max<std::size_t>(records, 2);
    return m_file.open(path, m_records * kLineBytes, error);
}

void TruthLog::write(const char *kind, std::int64_t receiver, std::int64_t number, const char *note) noexcept
{
    if (!isOpen())
        return;
    const std::size_t slot = m_next.fetch_add(1, std::memory_order_relaxed);
    if (slot + 1 >= m_records) { // the last line says that the file is full
        countLost();
        return;
    }
    char *line = m_file.data() + slot * kLineBytes;
    std::memset(line, ' ', kEndAt);
    putText(line + kKindAt, kKindWidth, kind);
    putNumber(line + kReceiverAt, kReceiverWidth, receiver);
    putNumber(line + kNumberAt, kNumberWidth, number);
    putText(line + kNoteAt, kNoteWidth, note);
    putNumber(line + kTimeAt, kTimeWidth, steadyNowNs());
    publish(line);
}

void TruthLog::write(const char *kind, std::int64_t receiver, std::int64_t number, std::int64_t second) noexcept
{
    char note[24] = {};
    std::to_chars(note, note + sizeof note - 1, second);
    write(kind, receiver, number, note);
}

void TruthLog::writeSize(const char *kind, std::int64_t receiver, std::int64_t number, std::int32_t width,
                         std::int32_t height) noexcept
{
    if (!isOpen())
        return;
    constexpr std::int32_t most = 999'999; // two of them and the sign fit the column
    char note[24] = {};
    char *at = std::to_chars(note, note + 8, std::clamp(width, -most, most)).ptr;
    *at++ = 'x';
    std::to_chars(at, at + 8, std::clamp(height, -most, most));
    write(kind, receiver, number, note);
}

void TruthLog::countLost() noexcept
{
    const std::lock_guard<std::mutex> lock(m_lostMutex);
    ++m_lost;
    char *line = m_file.data() + (m_records - 1) * kLineBytes;
    if (m_lost == 1) {
        std::memset(line, ' ', kEndAt);
        putText(line + kKindAt, kKindWidth, "full");
        putNumber(line + kReceiverAt, kReceiverWidth, -1);
        putNumber(line + kTimeAt, kTimeWidth, steadyNowNs());
    }
    putNumber(line + kNumberAt, kNumberWidth, m_lost);
    publish(line);
}

} // namespace loopback
