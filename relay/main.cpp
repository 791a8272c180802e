#include "relay/relay.h"

#include <cstdio>
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

int run(int argc, const char *const argv[])
{
    if (argc != 2) {
        complain("one argument is needed, the name of a command file");
        return statusUnusable;
    }
    const std::string name = argv[1];
    const CommandFileText file = readCommandFile(name);
    if (!file.text) {
        complain(file.problem);
        return statusUnusable;
    }
    const ParsedCommandFile parsed = parseCommandFile(*file.text);
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
