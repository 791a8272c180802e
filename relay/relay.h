#pragma once

#include "relay/commandfile.h"

#include <optional>
#include <string>

namespace relay {

/// Exit statuses of the relay's own; all others are the tool's.
constexpr int statusUnusable = 125;   ///< wrong arguments, a command file that does not have the form, no resources
constexpr int statusNotStarted = 127; ///< the tool could not be started
constexpr int statusSignalBase = 128; ///< Linux: the tool or the relay was ended by the signal of this plus its number
constexpr int statusOutputClosed = statusSignalBase + 13; ///< nobody reads the output any more, so the tool was ended

/// One line on standard error, whatever control characters the text holds.
void complain(const std::string &text);

struct CommandFileText {
    std::optional<std::string> text;
    std::string problem; ///< why there is no text, else empty: one sentence with the file's name
};

/// The file's bytes, or one more than a command file may have. The file must be a regular one that belongs to this
/// process's user, and its name must not be a link: another user could have any program started through it.
CommandFileText readCommandFile(const std::string &name);

/// Runs the tool without any command interpreter and passes its standard output on as it comes, until the tool has
/// ended. Its standard error and standard input are the relay's own. The tool never outlives the relay. Returns the
/// exit status.
int runTool(const Command &command);

} // namespace relay
