#include "app/runtimecheck.h"

#include "ndi/ndilib.h"

RuntimeCheck checkRuntime()
{
    if (NDIlib_initialize())
        return RuntimeCheck::Usable;
    return ndiRuntimeProblem().isEmpty() ? RuntimeCheck::Refused : RuntimeCheck::Missing;
}
