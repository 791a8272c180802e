#pragma once

#include "probes/loadabort.h"
#include "probes/loadreader.h"

#include <functional>

/// A reader that says what a test wants; a function left out knows nothing.
class ScriptedReader final : public LoadReader {
public:
    std::optional<int> processorPercent() override { return processor ? processor() : std::nullopt; }
    std::optional<int> graphicsPercent(const LoadAbort &abort) override
    {
        return graphics ? graphics(abort) : std::nullopt;
    }

    std::function<std::optional<int>()> processor;
    std::function<std::optional<int>(const LoadAbort &)> graphics;
};
