#include "ndi/overflowstack.h"

#include <windows.h>

namespace {

constexpr ULONG reservedBytes = 64 * 1024;

} // namespace

OverflowStack::OverflowStack()
{
    // Kept free at the end of the thread's own stack, until the thread ends.
    ULONG reserve = reservedBytes;
    SetThreadStackGuarantee(&reserve);
}

OverflowStack::~OverflowStack() = default;
