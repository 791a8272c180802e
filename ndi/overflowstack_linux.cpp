#include "ndi/overflowstack.h"

#include <csignal>

#include <sys/mman.h>

namespace {

/// The dump is written on another stack still; processors with wide registers save several kilobytes of them here.
/// Only pages that are used take memory.
constexpr std::size_t stackBytes = 64 * std::size_t(1024);

} // namespace

OverflowStack::OverflowStack()
{
    stack_t present = {};
    if (sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0)
        return;
    void *const memory = mmap(nullptr, stackBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return;
    stack_t own = {};
    own.ss_sp = memory;
    own.ss_size = stackBytes;
    if (sigaltstack(&own, nullptr) == 0)
        m_memory = memory;
    else
        munmap(memory, stackBytes);
}

OverflowStack::~OverflowStack()
{
    if (!m_memory)
        return;
    stack_t none = {};
    none.ss_flags = SS_DISABLE;
    if (sigaltstack(&none, nullptr) == 0)
        munmap(m_memory, stackBytes);
}
