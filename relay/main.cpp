#include "relay/relay.h"

#include <cstdio>
#include <fstream>
#include <optional>
#include <string>

namespace relay {

void complain(const std::string &text)
{
    std::string line = "pipe_stdout: " + text;
    for (char &character : line) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7f)
            character = '?';
    }
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

namespace {

/// Up to one byte more than a command file may have.
std::optional<std::string> readFile(const char *path)
{
    std::ifstream file(path, std::ios::binary);
    std::string bytes(maxCommandFileBytes + 1, '\0');
    if (!file.is_open() || file.read(&bytes[0], std::streamsize(bytes.size())).bad())
        return std::nullopt;
    if (!file.eof() && file.gcount() == 0)
        return std::nullopt;
    bytes.resize(std::size_t(file.gcount()));
    return bytes;
}

int run(int argc, char *argv[])
{
    if (argc != 2) {
        complain("one argument is needed, the name of a command file");
        return statusUnusable;
    }
    const std::string name = argv[1];
    const std::optional<std::string> text = readFile(argv[1]);
    if (!text) {
        complain("cannot read '" + name + "'");
        return statusUnusable;
    }
    const ParsedCommandFile parsed = parseCommandFile(*text);
    if (!parsed.command) {
        complain("'" + name + "' is not a command for the analysis tool: " + parsed.problem);
        return statusUnusable;
    }
    return runTool(*parsed.command);
}

} // namespace
} // namespace relay

int main(int argc, char *argv[])
{
    return relay::run(argc, argv);
}
