#pragma once

#include "relay/commandfile.h"

#include <string>

namespace relay {

/// Exit statuses of the relay's own; all others are the tool's.
constexpr int statusUnusable = 125;   ///< wrong arguments, a command file that does not have the form, no resources
constexpr int statusNotStarted = 127; ///< the tool could not be started
constexpr int statusSignalBase = 128; ///< Linux: the tool or the relay was ended by the signal of this plus its number
constexpr int statusOutputClosed = statusSignalBase + 13; ///< nobody reads the output any more, so the tool was ended

/// One line on standard error, whatever control characters the text holds.
void complain(const std::string &text);

/// Runs the tool without any command interpreter and passes its standard output on as it comes, until the tool has
/// ended. Its standard error and standard input are the relay's own. The tool never outlives the relay. Returns the
/// exit status.
int runTool(const Command &command);

} // namespace relay
