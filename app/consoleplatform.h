#pragma once

#include <cstdio>
#include <string>
#include <vector>

/// What the program needs of the system around it before Qt exists.

/// Keeps libraries in the working folder, which anybody may have put there, from being loaded by the program or its
/// libraries. First in main(). Does nothing on Linux, whose loader does not look there.
void restrictLibrarySearch();

/// Makes the standard streams usable: on Windows attaches to the console of the program that started
/// this one and opens the streams on it, but leaves a stream alone that goes to a file or a pipe; on
/// Linux opens closed descriptors on /dev/null and takes broken pipes and file size limits as errors.
void attachConsole();

/// Puts the console back as attachConsole() found it. endProcess() does so too.
void releaseConsole();

/// True when a person reads this stream on a terminal or in a console.
bool goesToTerminal(std::FILE *stream);

/// The command line as UTF-8 bytes on Windows, as given on Linux; the program's name first.
std::vector<std::string> commandLine(int argc, char *argv[]);

/// Ends the process at once with this status: the standard streams are flushed, nothing is unwound,
/// since other threads may be inside the NDI runtime. Any thread.
[[noreturn]] void endProcess(int status);

/// Separates the crash folder from the working directory: "\" on Windows, "/" on Linux.
extern const char folderSeparator;
