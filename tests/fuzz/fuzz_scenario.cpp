// Scenario files of the loopback runtime, as somebody writes them by hand.
#include "loopback/scenario.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const loopback::ScenarioResult result =
        loopback::parseScenario(std::string(reinterpret_cast<const char *>(data), size));
    // Either a scenario or a reason why not.
    if (result.scenario.has_value() != result.error.empty())
        std::abort();
    return 0;
}
