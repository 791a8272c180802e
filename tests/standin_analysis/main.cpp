// Stands in for the analysis tool. It says which arguments it got to the test that started it, over a connection to
// the port in STANDIN_ANALYSIS_PORT, then does what the test tells it, line by line, and answers "ok" to each:
//   out HEX, err HEX      writes the bytes to standard output or error, at once
//   print HEX             the same through the C library's buffer, without a flush
//   slow MS HEX           byte by byte, with so many milliseconds after each
//   repeat N HEX          so many times; forever HEX: without end
//   copy                  copies its standard input to its output
//   another, stranger     starts one more of itself, in the same session or in one of its own
//   exit N                ends with this status
//   die                   is killed
// It ends when the test goes. Without the variable it prints nothing and ends at once.
#include "tests/standin_analysis/standinplatform.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <thread>

namespace {

std::string toHex(const std::string &bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        hex += digits[value >> 4];
        hex += digits[value & 15];
    }
    return hex;
}

std::string fromHex(const std::string &hex)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += char(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
    return bytes;
}

std::optional<std::string> receiveLine()
{
    static std::string received;
    std::size_t end = received.find('\n');
    while (end == std::string::npos) {
        char buffer[4096];
        const std::size_t length = standin::receive(buffer, sizeof buffer);
        if (length == 0)
            return std::nullopt;
        const std::size_t before = received.size();
        received.append(buffer, length);
        end = received.find('\n', before);
    }
    const std::string line = received.substr(0, end);
    received.erase(0, end + 1);
    return line;
}

bool writeAll(int descriptor, const std::string &bytes)
{
    return standin::writeNow(descriptor, bytes.data(), bytes.size());
}

void writeSlowly(const std::string &bytes, int pauseMs)
{
    for (const char &byte : bytes) {
        standin::writeNow(1, &byte, 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
    }
}

void copyInput()
{
    char buffer[4096];
    std::size_t length = standin::readInput(buffer, sizeof buffer);
    while (length > 0 && standin::writeNow(1, buffer, length))
        length = standin::readInput(buffer, sizeof buffer);
}

void obey(const std::string &line, char *argv[])
{
    std::istringstream words(line);
    std::string order;
    std::string hex;
    int number = 0;
    words >> order;
    if (order == "slow" || order == "repeat" || order == "exit")
        words >> number;
    words >> hex;
    const std::string bytes = fromHex(hex);
    if (order == "out")
        writeAll(1, bytes);
    else if (order == "err")
        writeAll(2, bytes);
    else if (order == "print")
        std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    else if (order == "slow")
        writeSlowly(bytes, number);
    else if (order == "copy")
        copyInput();
    else if (order == "another")
        standin::startAnother(argv, false);
    else if (order == "stranger")
        standin::startAnother(argv, true);
    else if (order == "exit")
        std::exit(number);
    else if (order == "die")
        standin::die();
    else if (order == "repeat")
        for (int i = 0; i < number && writeAll(1, bytes); ++i) {
        }
    else if (order == "forever")
        while (writeAll(1, bytes)) {
        }
    else
        std::exit(99);
}

} // namespace

int main(int argc, char *argv[])
{
    const char *port = std::getenv("STANDIN_ANALYSIS_PORT");
    if (!port)
        return 0;
    if (!standin::connectTo(static_cast<unsigned short>(std::atoi(port))))
        return 98;
    std::string greeting = standin::isOutputTerminal() ? "terminal" : "pipe";
    for (const std::string &argument : standin::arguments(argc, argv))
        greeting += ' ' + toHex(argument);
    standin::sendText(greeting + '\n');
    while (const std::optional<std::string> line = receiveLine()) {
        obey(*line, argv);
        standin::sendText("ok\n");
    }
    return 97;
}
