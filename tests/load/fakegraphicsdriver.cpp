#include "tests/load/fakegraphicsdriver.h"

#include <cstdio>
#include <cstdlib>

#if defined(_WIN32) // the only line between the two systems' way to export
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif

namespace {

FakeDriverCounts counts;

/// Leaves the file named in VEXA_FAKE_DRIVER_MARK when the library is loaded.
struct LoadMark {
    LoadMark()
    {
        const char *const path = std::getenv("VEXA_FAKE_DRIVER_MARK");
        if (std::FILE *const file = path ? std::fopen(path, "w") : nullptr)
            std::fclose(file);
    }
};
const LoadMark loadMark;

int initialise()
{
    ++counts.initialised;
    return 0;
}

int anythingElse()
{
    ++counts.otherCalls;
    return 0;
}

} // namespace

EXPORTED const FakeDriverCounts *fakeDriverCounts()
{
    return &counts;
}

EXPORTED int nvmlInit_v2()
{
    return initialise();
}

EXPORTED int nvmlShutdown()
{
    return anythingElse();
}

EXPORTED void (*nvapi_QueryInterface(unsigned int id))()
{
    if (counts.queries < 3)
        counts.firstQueries[counts.queries] = id;
    ++counts.queries;
    if (id == 0x0150E828)
        return reinterpret_cast<void (*)()>(initialise);
    if (id == 0x189A1FDF && std::getenv("VEXA_FAKE_DRIVER_IS_INCOMPLETE"))
        return nullptr;
    return reinterpret_cast<void (*)()>(anythingElse);
}
