#include "relay/argumentquoting.h"

namespace relay {

std::string quotedForWindows(std::string_view text)
{
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char character : text) {
        if (character == '"')
            quoted.append(backslashes + 1, '\\');
        backslashes = character == '\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, '\\');
    quoted += '"';
    return quoted;
}

std::string windowsCommandLine(const Command &command)
{
    // The first word has rules of its own: no escapes, up to the next quotation mark, and a path holds none.
    return '"' + command.tool + "\" /source:" + quotedForWindows(command.source) + ' ' + timeArgument(command);
}

} // namespace relay
