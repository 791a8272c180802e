// The grammar of the command file, and the way from there to a Windows program's arguments.
#include "relay/argumentquoting.h"
#include "relay/commandfile.h"
#include "tests/standin_analysis/argumentrules.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    const relay::ParsedCommandFile parsed = relay::parseCommandFile(text);
    if (parsed.command.has_value() != parsed.problem.empty())
        std::abort();
    if (!parsed.command)
        return 0;
    const relay::Command &command = *parsed.command;
    if ('"' + command.tool + "\" /source:\"" + command.source + "\" /time:" + command.seconds != text)
        std::abort();
    const std::vector<std::string> expected{command.tool, relay::sourceArgument(command), relay::timeArgument(command)};
    if (windowsArguments(relay::windowsCommandLine(command)) != expected)
        std::abort();
    return 0;
}
