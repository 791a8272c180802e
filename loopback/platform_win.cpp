#include "loopback/platform.h"

#include <windows.h>

#include <mmsystem.h>

#include <algorithm>
#include <chrono>
#include <vector>

#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace loopback {
namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kUnixEpoch100ns = 116'444'736'000'000'000; // FILETIME counts from 1601

std::wstring toWide(const std::string &text)
{
    const int count = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(count, 1)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide.data(), count);
    wide.pop_back(); // the terminating NUL
    return wide;
}

std::string toUtf8(const wchar_t *text)
{
    const int count = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(count, 1)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), count, nullptr, nullptr);
    narrow.pop_back();
    return narrow;
}

std::string systemError()
{
    return "Windows error " + std::to_string(GetLastError());
}

/// Coarse timers are made 1 ms fine while one of these lives; needed before Windows 10 1803 only.
class FinePeriod final {
public:
    FinePeriod() { timeBeginPeriod(1); }
    ~FinePeriod() { timeEndPeriod(1); }
    FinePeriod(const FinePeriod &) = delete;
    FinePeriod &operator=(const FinePeriod &) = delete;
};

} // namespace

std::int64_t steadyNowNs() noexcept
{
    static const std::int64_t frequency = [] {
        LARGE_INTEGER ticks{};
        QueryPerformanceFrequency(&ticks);
        return std::int64_t{ticks.QuadPart};
    }();
    LARGE_INTEGER ticks{};
    QueryPerformanceCounter(&ticks);
    const std::int64_t seconds = ticks.QuadPart / frequency;
    return seconds * kNsPerSecond + (ticks.QuadPart - seconds * frequency) * kNsPerSecond / frequency;
}

std::int64_t wallNow100ns() noexcept
{
    FILETIME now{};
    GetSystemTimePreciseAsFileTime(&now);
    const auto since1601 = static_cast<std::int64_t>((std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime);
    return since1601 - kUnixEpoch100ns;
}

std::optional<std::string> environment(const char *name)
{
    const std::wstring wideName = toWide(name);
    std::vector<wchar_t> value(32768); // the longest the system allows
    const DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (length == 0 || length >= value.size())
        return std::nullopt;
    return toUtf8(value.data());
}

std::optional<std::string> readFile(const std::string &path, std::string &error)
{
    const HANDLE file = CreateFileW(toWide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        error = systemError();
        return std::nullopt;
    }
    std::string content;
    std::vector<char> buffer(65536);
    DWORD got = 0;
    bool good = true;
    while ((good = (ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) != 0)) && got > 0)
        content.append(buffer.data(), got);
    if (!good)
        error = systemError();
    CloseHandle(file);
    return good ? std::optional<std::string>(std::move(content)) : std::nullopt;
}

void preparePacingThread() noexcept
{
    static const FinePeriod finePeriod;
    using SetDescription = HRESULT(WINAPI *)(HANDLE, PCWSTR);
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription");
    if (const auto setDescription = reinterpret_cast<SetDescription>(reinterpret_cast<void *>(found)))
        setDescription(GetCurrentThread(), L"loopback");
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_HIGHEST);
}

void pinLibrary() noexcept
{
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(reinterpret_cast<void *>(&pinLibrary)), &self);
}

void waitUntilNs(std::condition_variable &condition, std::unique_lock<std::mutex> &lock, std::int64_t deadlineNs)
{
    const std::int64_t leftNs = deadlineNs - steadyNowNs();
    if (leftNs > 0)
        condition.wait_for(lock, std::chrono::nanoseconds(leftNs));
}

namespace {

struct HandleCloser {
    void operator()(void *handle) const noexcept { CloseHandle(handle); }
};
using UniqueHandle = std::unique_ptr<void, HandleCloser>;

UniqueHandle makeTimer()
{
    HANDLE timer = CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION, TIMER_ALL_ACCESS);
    if (timer == nullptr) // before Windows 10 1803
        timer = CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_ALL_ACCESS);
    return UniqueHandle(timer);
}

} // namespace

struct DeadlineTimer::System {
    const UniqueHandle timer = makeTimer();
    const UniqueHandle stopped{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

DeadlineTimer::DeadlineTimer() : m_system(std::make_unique<System>()) {}
DeadlineTimer::~DeadlineTimer() = default;

bool DeadlineTimer::sleepUntil(std::int64_t deadlineNs)
{
    for (;;) {
        // an absolute due time would be wall time, so the rest is measured anew on every turn
        const std::int64_t leftNs = deadlineNs - steadyNowNs();
        if (leftNs <= 0)
            return WaitForSingleObject(m_system->stopped.get(), 0) != WAIT_OBJECT_0;
        LARGE_INTEGER due{};
        due.QuadPart = -(leftNs / 100 + 1);
        SetWaitableTimer(m_system->timer.get(), &due, 0, nullptr, nullptr, FALSE);
        const HANDLE waited[2] = {m_system->stopped.get(), m_system->timer.get()};
        if (WaitForMultipleObjects(2, waited, FALSE, INFINITE) == WAIT_OBJECT_0)
            return false;
    }
}

void DeadlineTimer::stop()
{
    SetEvent(m_system->stopped.get());
}

void DeadlineTimer::rearm()
{
    ResetEvent(m_system->stopped.get());
}

MappedFile::~MappedFile()
{
    if (m_data != nullptr)
        UnmapViewOfFile(m_data);
}

bool MappedFile::open(const std::string &path, std::size_t sizeBytes, std::string &error)
{
    const HANDLE file = CreateFileW(toWide(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        error = systemError();
        return false;
    }
    const HANDLE mapping =
        CreateFileMappingW(file, nullptr, PAGE_READWRITE, static_cast<DWORD>(std::uint64_t{sizeBytes} >> 32),
                           static_cast<DWORD>(sizeBytes & 0xFFFFFFFFU), nullptr);
    void *memory = mapping == nullptr ? nullptr : MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, sizeBytes);
    if (memory == nullptr)
        error = systemError();
    if (mapping != nullptr)
        CloseHandle(mapping);
    CloseHandle(file);
    m_data = static_cast<char *>(memory);
    m_sizeBytes = sizeBytes;
    return m_data != nullptr;
}

} // namespace loopback
