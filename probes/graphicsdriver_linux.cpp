#include "probes/graphicsdriver.h"

#include <dlfcn.h>

#include <mutex>

void initialiseGraphicsDriver()
{
    static std::once_flag once;
    std::call_once(once, [] {
        void *const library = dlopen("libnvidia-ml.so.1", RTLD_NOW | RTLD_LOCAL);
        if (!library)
            return;
        const auto initialise = reinterpret_cast<int (*)()>(dlsym(library, "nvmlInit_v2"));
        if (initialise)
            initialise();
    });
}
