#include "loopback/crash.h"

#include <array>
#include <cstddef>
#include <cstdlib>

// Each crash has a function of its own, to be found in what is told about it: the compiler may neither merge them with
// their callers nor see what they are up to.
#if __has_cpp_attribute(gnu::noclone)
#define LOOPBACK_CRASH [[gnu::noinline, gnu::noclone]]
#else // clang makes no clones
#define LOOPBACK_CRASH [[gnu::noinline]]
#endif

namespace loopback {
namespace {

std::atomic<int *> nowhere{nullptr};
std::atomic<int> finishedActs{0};

LOOPBACK_CRASH void crashByNullWrite()
{
    *nowhere.load() = 1;
}

LOOPBACK_CRASH void crashByAbort()
{
    std::abort();
}

/// Gives up beyond 1 GiB, on a system that does not limit its stacks.
LOOPBACK_CRASH int crashByStackOverflow(int depth)
{
    constexpr int deepest = 1 << 18;
    if (depth > deepest)
        return 0;
    std::array<std::atomic<char>, 4096> room; // NOLINT(cppcoreguidelines-pro-type-member-init): only its size counts
    const auto place = static_cast<std::size_t>(depth) % room.size();
    room[place] = static_cast<char>(depth);
    return crashByStackOverflow(depth + 1) + room[place];
}

} // namespace

// Not hidden in this file: the compiler would know the only class that can be meant, and call its function.
class Unfinished {
public:
    Unfinished(const Unfinished &) = delete;
    Unfinished &operator=(const Unfinished &) = delete;
    virtual void act() = 0;

protected:
    Unfinished();
    ~Unfinished() = default;
};

class Finished final : public Unfinished {
public:
    void act() override {}
};

namespace {

LOOPBACK_CRASH void crashByPureVirtualCall(Unfinished &object)
{
    object.act();   // NOLINT(clang-analyzer-cplusplus.PureVirtualCall): the crash that was asked for
    ++finishedActs; // so that the call stands on the stack
}

} // namespace

Unfinished::Unfinished()
{
    crashByPureVirtualCall(*this); // what makes act() is not there yet
}

void CrashPoint::crash(CrashKind kind)
{
    switch (kind) {
    case CrashKind::nullWrite:
        crashByNullWrite();
        break;
    case CrashKind::abort:
        crashByAbort();
        break;
    case CrashKind::stackOverflow:
        crashByStackOverflow(0);
        break;
    case CrashKind::pureVirtual:
        const Finished finished;
        break;
    }
}

} // namespace loopback
