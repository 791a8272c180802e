#pragma once

#include "relay/commandfile.h"

#include <string>
#include <string_view>

namespace relay {

/// Text in quotation marks that a Windows program's start-up code reads back as it was: quotation marks get a
/// backslash, backslashes before one are doubled, also before the closing one. For anything but a command interpreter.
std::string quotedForWindows(std::string_view text);

/// The command line that gives a Windows program the arguments of the command. It looks like the command file itself,
/// except where the source needs escapes: a tool that reads the line by itself finds what it expects.
std::string windowsCommandLine(const Command &command);

} // namespace relay
