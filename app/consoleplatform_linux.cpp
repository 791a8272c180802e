#include "app/consoleplatform.h"

#include <cstdio>
#include <cstdlib>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

const char folderSeparator = '/';

void restrictLibrarySearch() {}

void attachConsole()
{
    // A file opened later must not land on a standard descriptor and receive our output.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1)
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_RDONLY : O_WRONLY));
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void releaseConsole() {}

bool goesToTerminal(std::FILE *stream)
{
    return isatty(fileno(stream)) == 1;
}

std::vector<std::string> commandLine(int argc, char *argv[])
{
    return {argv, argv + argc};
}

void endProcess(int status)
{
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(status);
}
