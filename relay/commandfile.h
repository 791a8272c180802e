#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace relay {

/// The one command of a command file, in the bytes of the file (UTF-8). None of them is empty or holds a NUL.
struct Command {
    std::string tool;    ///< full path of the program; no quotation mark
    std::string source;  ///< any bytes: whoever is on the network chose it
    std::string seconds; ///< decimal digits
};

struct ParsedCommandFile {
    std::optional<Command> command;
    std::string problem; ///< why there is no command, else empty
};

constexpr std::size_t maxCommandFileBytes = 65536;

/// Takes a command file apart: `"TOOL" /source:"SOURCE" /time:SECONDS` and nothing before or after it. The source
/// reaches to the last `" /time:`, so that it may hold quotation marks, line ends and even that text.
ParsedCommandFile parseCommandFile(std::string_view text);

/// The tool's arguments, as it is to find them in its argument list.
std::string sourceArgument(const Command &command);
std::string timeArgument(const Command &command);

} // namespace relay
