#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace standin {

/// The arguments after the program's name, UTF-8.
std::vector<std::string> arguments(int argc, char *argv[]);

/// Connects to a port of this machine; false when nobody listens there.
bool connectTo(unsigned short port);
bool sendText(const std::string &text);
/// Waits for some bytes from the other side; 0 when it has gone.
std::size_t receive(char *buffer, std::size_t size);

bool isOutputTerminal();
/// At once, past the C library and unchanged. `descriptor`: 1 or 2. False when nobody can read it.
bool writeNow(int descriptor, const char *bytes, std::size_t length);
/// Waits for some bytes on standard input; 0 at its end.
std::size_t readInput(char *buffer, std::size_t size);
/// Starts this program once more, with the same arguments and standard streams. Linux: in a session of its own when
/// asked to.
bool startAnother(char *argv[], bool ownSession);
/// Ends as if somebody had killed it.
void die();

} // namespace standin
