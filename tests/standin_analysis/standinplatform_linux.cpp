#include "tests/standin_analysis/standinplatform.h"

#include <cerrno>
#include <csignal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

namespace standin {

namespace {

int connection = -1;

} // namespace

std::vector<std::string> arguments(int argc, char *argv[])
{
    return std::vector<std::string>(argv + 1, argv + argc);
}

bool connectTo(unsigned short port)
{
    connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connect(connection, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
}

bool sendText(const std::string &text)
{
    return send(connection, text.data(), text.size(), MSG_NOSIGNAL) == ssize_t(text.size());
}

std::size_t receive(char *buffer, std::size_t size)
{
    const ssize_t length = recv(connection, buffer, size, 0);
    return length > 0 ? std::size_t(length) : 0;
}

bool isOutputTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

bool writeNow(int descriptor, const char *bytes, std::size_t length)
{
    while (length > 0) {
        const ssize_t written = write(descriptor, bytes, length);
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0) {
            bytes += written;
            length -= std::size_t(written);
        }
    }
    return true;
}

std::size_t readInput(char *buffer, std::size_t size)
{
    const ssize_t length = read(STDIN_FILENO, buffer, size);
    return length > 0 ? std::size_t(length) : 0;
}

bool startAnother(char *argv[], bool ownSession)
{
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    if (ownSession)
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t process = -1;
    const bool isStarted = posix_spawn(&process, argv[0], nullptr, &attributes, argv, environ) == 0;
    posix_spawnattr_destroy(&attributes);
    return isStarted;
}

void die()
{
    kill(getpid(), SIGKILL);
}

} // namespace standin
