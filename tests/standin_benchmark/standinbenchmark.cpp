// Stands in for the benchmark tool. What it does is told by its environment:
//   VEXA_STANDIN_OUTPUT  file that it prints to standard output
//   VEXA_STANDIN_ERRORS  file that it prints to standard error, after that
//   VEXA_STANDIN_STATUS  its exit status, 0 by default
//   VEXA_STANDIN_HANG    any text: it does not end by itself within a minute

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#ifdef _WIN32 // the bytes of the file as they are
#include <fcntl.h>
#include <io.h>
#endif

namespace {

void printFile(const char *path, std::FILE *to)
{
    if (!path)
        return;
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::fwrite(text.data(), 1, text.size(), to);
    std::fflush(to);
}

} // namespace

int main(int argc, char **)
{
    if (argc != 1)
        return 99; // the tool is started without arguments
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
#endif
    printFile(std::getenv("VEXA_STANDIN_OUTPUT"), stdout);
    printFile(std::getenv("VEXA_STANDIN_ERRORS"), stderr);
    const char *hang = std::getenv("VEXA_STANDIN_HANG");
    if (hang && *hang)
        std::this_thread::sleep_for(std::chrono::minutes(1));
    const char *status = std::getenv("VEXA_STANDIN_STATUS");
    return status ? std::atoi(status) : 0;
}
