#include "ndi/readablememory.h"

#include <windows.h>

bool copyIfReadable(const void *from, void *to, std::size_t bytes)
{
    SIZE_T copied = 0;
    return ReadProcessMemory(GetCurrentProcess(), from, to, bytes, &copied) && copied == bytes;
}
