#include "probes/graphicsdriver.h"

#include <windows.h>

#include <mutex>

void initialiseGraphicsDriver()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const HMODULE library = LoadLibraryExW(L"nvapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        if (!library)
            return;
        using AnyFunction = void (*)();
        using QueryInterface = AnyFunction (*)(unsigned int);
        const auto anyFunction = reinterpret_cast<AnyFunction>(GetProcAddress(library, "nvapi_QueryInterface"));
        const auto queryInterface = reinterpret_cast<QueryInterface>(anyFunction);
        if (!queryInterface)
            return;
        const auto initialise = reinterpret_cast<int (*)()>(queryInterface(0x0150E828));
        const AnyFunction enumerateAdapters = queryInterface(0xE5AC921F);
        const AnyFunction adapterUsages = queryInterface(0x189A1FDF);
        if (initialise && enumerateAdapters && adapterUsages) // a driver without one of them is too old
            initialise();
    });
}
