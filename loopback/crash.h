#pragma once

#include "loopback/scenario.h"

#include <atomic>
#include <cstdint>
#include <optional>

namespace loopback {

/// Crashes the process at the call of the runtime that the scenario names, on the thread that makes it. Any thread.
class CrashPoint final {
public:
    explicit CrashPoint(const std::optional<CrashSpec> &spec) : m_spec(spec) {}

    /// To be told of each call; returns unless it is the one.
    void pass(CrashCall call)
    {
        if (m_spec && m_spec->call == call && ++m_passed == m_spec->number)
            crash(m_spec->kind);
    }

private:
    static void crash(CrashKind kind);

    const std::optional<CrashSpec> m_spec;
    std::atomic<std::int64_t> m_passed{0}; ///< calls of the named kind
};

} // namespace loopback
