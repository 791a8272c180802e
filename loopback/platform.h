#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

/// What the loopback needs from the operating system. Every text is UTF-8 on every platform.
namespace loopback {

/// The one steady clock, in ns: CLOCK_MONOTONIC on Linux, the performance counter on Windows, so
/// that a figure compares with std::chrono::steady_clock and QElapsedTimer of the same machine.
std::int64_t steadyNowNs() noexcept;

/// Wall time since 1970 in units of 100 ns, as frames carry it.
std::int64_t wallNow100ns() noexcept;

/// An environment variable; nullopt when it is not set or empty.
std::optional<std::string> environment(const char *name);

/// The whole file; nullopt when it cannot be read, with the reason in `error`.
std::optional<std::string> readFile(const std::string &path, std::string &error);

/// Names the calling thread "loopback" and asks for the finest timers the system has.
void preparePacingThread() noexcept;

/// Keeps this library in memory for the life of the process, so that unloading it can never pull
/// the code away from under a thread.
void pinLibrary() noexcept;

/// Waits on `condition` until `deadlineNs` of the steady clock; may return early.
void waitUntilNs(std::condition_variable &condition, std::unique_lock<std::mutex> &lock, std::int64_t deadlineNs);

/// Sleeps of one thread to absolute deadlines; stop() may come from any thread.
class DeadlineTimer final {
public:
    DeadlineTimer();
    ~DeadlineTimer();
    DeadlineTimer(const DeadlineTimer &) = delete;
    DeadlineTimer &operator=(const DeadlineTimer &) = delete;

    /// True when the deadline has come, false as soon as stop() was called.
    bool sleepUntil(std::int64_t deadlineNs);
    void stop();
    /// Takes a stop() back. Only while no thread sleeps.
    void rearm();

private:
    struct System; ///< what the system's timer needs
    const std::unique_ptr<System> m_system;
};

/// A file of fixed size mapped for writing. What was written survives any end of the process.
class MappedFile final {
public:
    MappedFile() = default;
    ~MappedFile();
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    /// Makes or empties `path` and maps `sizeBytes` NUL bytes. False with the reason in `error`.
    bool open(const std::string &path, std::size_t sizeBytes, std::string &error);
    char *data() const noexcept { return m_data; }

private:
    char *m_data = nullptr;
    std::size_t m_sizeBytes = 0;
};

} // namespace loopback
