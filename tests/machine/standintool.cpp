// Plays a system tool: tests say how it behaves.
//   print FILE         writes the file's bytes and ends
//   hang FILE MARKER   writes the file's bytes, then its process id into MARKER, and never ends
//   flood LINES        writes many lines
//   both               a line on standard output, one on standard error
//   read               says how much there is on standard input
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>

#ifdef _WIN32 // the only difference: files and streams change line ends there unless told not to
#include <fcntl.h>
#include <io.h>
#include <process.h>
static int processId()
{
    return _getpid();
}
static void keepLineEnds()
{
    _setmode(_fileno(stdout), _O_BINARY);
}
#else
#include <unistd.h>
static int processId()
{
    return getpid();
}
static void keepLineEnds() {}
#endif

int main(int argc, char *argv[])
{
    keepLineEnds();
    const auto argument = [argc, argv](int index) { return std::string(index < argc ? argv[index] : ""); };
    const std::string what = argument(1);
    if (what == "print" || what == "hang") {
        std::ifstream file(argument(2), std::ios::binary);
        std::cout << std::string(std::istreambuf_iterator<char>(file), {}) << std::flush;
    }
    if (what == "hang") {
        // Renamed, so that nobody sees it half written.
        const std::string marker = argument(3);
        std::ofstream(marker + ".new") << processId();
        if (std::rename((marker + ".new").c_str(), marker.c_str()) != 0)
            return EXIT_FAILURE;
        while (true)
            std::this_thread::sleep_for(std::chrono::hours(1));
    }
    if (what == "flood") {
        const int lines = std::stoi(argument(2));
        for (int line = 0; line < lines; ++line)
            std::cout << "   Description . . . . . . . . . . . : line " << line << '\n';
    }
    if (what == "both") {
        std::cout << "out\n" << std::flush;
        std::cerr << "err\n" << std::flush;
    }
    if (what == "read")
        std::cout << std::string(std::istreambuf_iterator<char>(std::cin), {}).size() << " bytes\n";
    return EXIT_SUCCESS;
}
