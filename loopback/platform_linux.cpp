#include "loopback/platform.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

namespace loopback {
namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;

std::int64_t clockNs(clockid_t clock) noexcept
{
    timespec now{};
    clock_gettime(clock, &now);
    return std::int64_t{now.tv_sec} * kNsPerSecond + now.tv_nsec;
}

std::string systemError()
{
    return std::strerror(errno);
}

struct FileCloser {
    void operator()(std::FILE *file) const noexcept { std::fclose(file); }
};

} // namespace

std::int64_t steadyNowNs() noexcept
{
    return clockNs(CLOCK_MONOTONIC);
}

std::int64_t wallNow100ns() noexcept
{
    return clockNs(CLOCK_REALTIME) / 100;
}

std::optional<std::string> environment(const char *name)
{
    const char *value = std::getenv(name);
    if (value == nullptr || *value == '\0')
        return std::nullopt;
    return std::string(value);
}

std::optional<std::string> readFile(const std::string &path, std::string &error)
{
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rbe"));
    if (!file) {
        error = systemError();
        return std::nullopt;
    }
    std::string content;
    char buffer[65536];
    for (std::size_t got = 0; (got = std::fread(buffer, 1, sizeof buffer, file.get())) > 0;)
        content.append(buffer, got);
    if (std::ferror(file.get()) != 0) {
        error = systemError();
        return std::nullopt;
    }
    return content;
}

void preparePacingThread() noexcept
{
    pthread_setname_np(pthread_self(), "loopback");
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL); // default 50 us would show up as jitter
}

void pinLibrary() noexcept {} // linked with -z nodelete

void waitUntilNs(std::condition_variable &condition, std::unique_lock<std::mutex> &lock, std::int64_t deadlineNs)
{
    // libstdc++'s steady clock is CLOCK_MONOTONIC, so this is an absolute wait on it
    condition.wait_until(lock, std::chrono::steady_clock::time_point(std::chrono::nanoseconds(deadlineNs)));
}

struct DeadlineTimer::System {
    std::mutex mutex;
    std::condition_variable changed;
    bool stopped = false; ///< guarded by mutex
};

DeadlineTimer::DeadlineTimer() : m_system(std::make_unique<System>()) {}
DeadlineTimer::~DeadlineTimer() = default;

// A timed wait on CLOCK_MONOTONIC uses the same kernel timer as clock_nanosleep with TIMER_ABSTIME
// and, other than that, can be ended at once by stop().
bool DeadlineTimer::sleepUntil(std::int64_t deadlineNs)
{
    std::unique_lock<std::mutex> lock(m_system->mutex);
    while (!m_system->stopped && steadyNowNs() < deadlineNs)
        waitUntilNs(m_system->changed, lock, deadlineNs);
    return !m_system->stopped;
}

void DeadlineTimer::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_system->mutex);
        m_system->stopped = true;
    }
    m_system->changed.notify_all();
}

void DeadlineTimer::rearm()
{
    const std::lock_guard<std::mutex> lock(m_system->mutex);
    m_system->stopped = false;
}

MappedFile::~MappedFile()
{
    if (m_data != nullptr)
        munmap(m_data, m_sizeBytes);
}

bool MappedFile::open(const std::string &path, std::size_t sizeBytes, std::string &error)
{
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        error = systemError();
        return false;
    }
    void *memory = MAP_FAILED;
    if (ftruncate(descriptor, static_cast<off_t>(sizeBytes)) == 0)
        memory = mmap(nullptr, sizeBytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED)
        error = systemError();
    ::close(descriptor);
    if (memory == MAP_FAILED)
        return false;
    m_data = static_cast<char *>(memory);
    m_sizeBytes = sizeBytes;
    return true;
}

} // namespace loopback
