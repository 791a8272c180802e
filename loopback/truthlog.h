#pragma once

#include "loopback/platform.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace loopback {

/// Writes what the loopback really did, one line of 64 bytes per fact, into a mapped file: no
/// system call per line, and what is written survives any end of the process. Any thread.
/// docs/loopback.md describes the lines, truthreader.h reads them.
class TruthLog final {
public:
    static constexpr std::size_t kLineBytes = 64;
    static constexpr std::size_t kDefaultRecords = std::size_t{1} << 20;

    TruthLog() = default; ///< writes nothing
    TruthLog(const TruthLog &) = delete;
    TruthLog &operator=(const TruthLog &) = delete;

    /// Makes the file for `records` lines. False with the reason in `error`. Before any other use.
    bool open(const std::string &path, std::size_t records, std::string &error);
    bool isOpen() const noexcept { return m_file.data() != nullptr; }

    /// `receiver` is the order of creation, -1: none. `note` is cut to 15 characters. The time is
    /// taken as the last thing, when the rest of the line stands.
    void write(const char *kind, std::int64_t receiver, std::int64_t number, const char *note) noexcept;
    void write(const char *kind, std::int64_t receiver, std::int64_t number, std::int64_t second) noexcept;
    void writeSize(const char *kind, std::int64_t receiver, std::int64_t number, std::int32_t width,
                   std::int32_t height) noexcept;

private:
    void countLost() noexcept;

    MappedFile m_file;
    std::size_t m_records = 0;
    std::atomic<std::size_t> m_next{0};
    std::mutex m_lostMutex;
    std::int64_t m_lost = 0; ///< lines that found no room; guarded by m_lostMutex
};

} // namespace loopback
