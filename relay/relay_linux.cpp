#include "relay/relay.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace relay {

namespace {

/// After the tool's end: how long its terminal may be silent before it counts as empty. Only waited for when a program
/// that the tool left behind in a session of its own keeps the terminal open.
constexpr int silenceAfterEndMs = 300;
/// More than a terminal holds: what comes after so many bytes was written after the tool's end.
constexpr std::size_t maxBytesAfterEnd = 1024 * std::size_t(1024);

class Descriptor final {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor &&other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() { reset(); }

    int get() const { return m_number; }
    explicit operator bool() const { return m_number >= 0; }
    void reset()
    {
        if (m_number >= 0)
            close(std::exchange(m_number, -1));
    }

private:
    int m_number = -1;
};

std::string systemError(const std::string &what, int error)
{
    return what + ": " + std::strerror(error);
}

/// What is opened later must not become the tool's standard input, output or error.
void openMissingStandardDescriptors()
{
    int number = open("/dev/null", O_RDWR);
    while (number >= 0 && number <= STDERR_FILENO)
        number = open("/dev/null", O_RDWR);
    if (number >= 0)
        close(number);
}

/// A terminal that changes no byte and echoes nothing.
struct Terminal {
    Descriptor ours;
    Descriptor tools;
};

std::optional<Terminal> openTerminal()
{
    Terminal terminal;
    terminal.ours = Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!terminal.ours || grantpt(terminal.ours.get()) != 0 || unlockpt(terminal.ours.get()) != 0)
        return std::nullopt;
    std::array<char, 128> name = {};
    if (ptsname_r(terminal.ours.get(), name.data(), name.size()) != 0)
        return std::nullopt;
    terminal.tools = Descriptor(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios settings = {};
    if (!terminal.tools || tcgetattr(terminal.tools.get(), &settings) != 0)
        return std::nullopt;
    cfmakeraw(&settings);
    const winsize size = {50, 1000, 0, 0}; // wide: nobody is to fold lines
    if (tcsetattr(terminal.tools.get(), TCSANOW, &settings) != 0 || ioctl(terminal.tools.get(), TIOCSWINSZ, &size) != 0)
        return std::nullopt;
    return terminal;
}

bool isIgnored(int signalNumber)
{
    struct sigaction action = {};
    return sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void setHandler(int signalNumber, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signalNumber, &action, nullptr);
}

/// Makes the signals that matter readable from a descriptor. Requests to end that were ignored before stay ignored.
Descriptor openSignals()
{
    setHandler(SIGCHLD, SIG_DFL); // ignored, there would be no exit status
    setHandler(SIGPIPE, SIG_IGN);
    sigset_t handled;
    sigemptyset(&handled);
    sigaddset(&handled, SIGCHLD);
    for (const int signalNumber : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        if (!isIgnored(signalNumber))
            sigaddset(&handled, signalNumber);
    }
    if (sigprocmask(SIG_BLOCK, &handled, nullptr) != 0)
        return Descriptor();
    return Descriptor(signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK));
}

/// The tool's process, in a session of its own. Not the terminal's session: the end of a session's leader throws away
/// what the terminal still holds. Killed and waited for when the object goes.
class Tool final {
public:
    /// `standardOutput`: the descriptor it gets as its own. False when it did not start.
    bool start(const Command &command, int standardOutput);
    ~Tool() { end(); }
    Tool() = default;
    Tool(const Tool &) = delete;
    Tool &operator=(const Tool &) = delete;

    /// Ends what it started as well when it has ended itself. False while it runs.
    bool hasEnded();
    int exitStatus() const { return m_exitStatus; } ///< once it has ended
    void end();

private:
    void collect();

    pid_t m_process = -1; ///< -1: none, or waited for
    int m_exitStatus = statusNotStarted;
};

[[noreturn]] void becomeTool(const char *path, char *const arguments[], pid_t relayProcess, int standardOutput,
                             int failureReport)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != relayProcess) // it was ended before it could be said
        _exit(statusNotStarted);
    setsid();
    setHandler(SIGPIPE, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    if (dup2(standardOutput, STDOUT_FILENO) >= 0)
        execv(path, arguments);
    const int error = errno;
    static_cast<void>(!write(failureReport, &error, sizeof error));
    _exit(statusNotStarted);
}

bool Tool::start(const Command &command, int standardOutput)
{
    std::array<int, 2> ends = {-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        complain(systemError("cannot start the tool", errno));
        return false;
    }
    Descriptor report(ends[0]);
    Descriptor childsReport(ends[1]);
    std::string path = command.tool;
    std::string source = sourceArgument(command);
    std::string time = timeArgument(command);
    char *const arguments[] = {&path[0], &source[0], &time[0], nullptr};
    setenv("TERM", "dumb", 1); // no colours, no cursor movements
    const pid_t relayProcess = getpid();
    m_process = fork();
    if (m_process == 0)
        becomeTool(path.c_str(), arguments, relayProcess, standardOutput, childsReport.get());
    if (m_process < 0) {
        complain(systemError("cannot start the tool", errno));
        return false;
    }
    childsReport.reset();
    int error = 0;
    ssize_t length = 0;
    do {
        length = read(report.get(), &error, sizeof error);
    } while (length < 0 && errno == EINTR);
    if (length == 0) // closed by the start of the tool
        return true;
    complain(systemError("cannot start '" + command.tool + "'", error));
    end();
    return false;
}

bool Tool::hasEnded()
{
    siginfo_t info = {};
    if (m_process > 0 && waitid(P_PID, id_t(m_process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0) {
        kill(-m_process, SIGKILL); // before the number can be given to others
        collect();
    }
    return m_process < 0;
}

void Tool::end()
{
    if (m_process < 0)
        return;
    kill(m_process, SIGKILL);
    kill(-m_process, SIGKILL);
    collect();
}

void Tool::collect()
{
    int status = 0;
    pid_t ended = -1;
    do {
        ended = waitpid(m_process, &status, 0);
    } while (ended < 0 && errno == EINTR);
    m_process = -1;
    if (ended > 0)
        m_exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : statusSignalBase + WTERMSIG(status);
}

/// Passes bytes on while it watches the tool, the reader and the requests to end.
class Pump final {
public:
    Pump(Tool *tool, int terminal, int signals) : m_tool(tool), m_terminal(terminal), m_signals(signals) {}

    /// The exit status of the relay.
    int run();

private:
    enum { Signals, Terminal, Output, Count };

    bool isDone() const { return m_toolHasEnded && m_terminal < 0 && m_pending.empty(); }
    void readSignals();
    void readTerminal();
    void writeOutput();
    void endWith(int status);

    Tool *m_tool;
    int m_terminal; ///< -1: everything was read
    int m_signals;
    bool m_toolHasEnded = false;
    std::size_t m_bytesAfterEnd = 0;
    std::optional<int> m_status;          ///< ends the loop
    std::array<char, 4096> m_buffer = {}; ///< a pipe that is ready takes as much without blocking
    std::string_view m_pending;           ///< in m_buffer
};

int Pump::run()
{
    while (!m_status) {
        if (isDone())
            return m_tool->exitStatus();
        std::array<pollfd, Count> watched = {};
        watched[Signals] = {m_signals, POLLIN, 0};
        watched[Terminal] = {m_pending.empty() ? m_terminal : -1, POLLIN, 0};
        watched[Output] = {STDOUT_FILENO, short(m_pending.empty() ? 0 : POLLOUT), 0};
        const int ready =
            poll(watched.data(), watched.size(), m_toolHasEnded && m_pending.empty() ? silenceAfterEndMs : -1);
        if (ready < 0) {
            if (errno != EINTR)
                endWith(statusUnusable);
            continue;
        }
        if (ready == 0)
            m_terminal = -1;
        if (watched[Signals].revents != 0)
            readSignals();
        if ((watched[Output].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0)
            endWith(statusOutputClosed);
        else if ((watched[Output].revents & POLLOUT) != 0)
            writeOutput();
        else if (watched[Terminal].revents != 0)
            readTerminal();
    }
    return *m_status;
}

void Pump::readSignals()
{
    signalfd_siginfo info = {};
    while (read(m_signals, &info, sizeof info) == ssize_t(sizeof info)) {
        if (info.ssi_signo == SIGCHLD)
            m_toolHasEnded = m_tool->hasEnded();
        else
            endWith(statusSignalBase + int(info.ssi_signo));
    }
}

void Pump::readTerminal()
{
    const ssize_t length = m_bytesAfterEnd < maxBytesAfterEnd ? read(m_terminal, m_buffer.data(), m_buffer.size()) : 0;
    if (m_toolHasEnded && length > 0)
        m_bytesAfterEnd += std::size_t(length);
    if (length > 0)
        m_pending = std::string_view(m_buffer.data(), std::size_t(length));
    else if (length == 0 || (errno != EINTR && errno != EAGAIN))
        m_terminal = -1; // EIO: nobody has the other end any more
}

void Pump::writeOutput()
{
    const ssize_t length = write(STDOUT_FILENO, m_pending.data(), m_pending.size());
    if (length > 0)
        m_pending.remove_prefix(std::size_t(length));
    else if (length < 0 && errno != EINTR && errno != EAGAIN)
        endWith(statusOutputClosed);
}

void Pump::endWith(int status)
{
    m_tool->end();
    m_status = status;
}

} // namespace

CommandFileText readCommandFile(const std::string &name)
{
    // Without waiting: a pipe of that name would keep the relay for ever.
    const Descriptor file(open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file && errno == ELOOP)
        return {std::nullopt, "'" + name + "' is a link"};
    struct stat facts = {};
    if (!file || fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode))
        return {std::nullopt, "cannot read '" + name + "'"};
    if (facts.st_uid != geteuid())
        return {std::nullopt, "'" + name + "' belongs to another user"};
    std::string bytes(maxCommandFileBytes + 1, '\0');
    std::size_t done = 0;
    ssize_t length = 1;
    while (length != 0 && done < bytes.size()) {
        length = read(file.get(), &bytes[done], bytes.size() - done);
        if (length < 0 && errno != EINTR)
            return {std::nullopt, "cannot read '" + name + "'"};
        if (length > 0)
            done += std::size_t(length);
    }
    bytes.resize(done);
    return {std::move(bytes), {}};
}

int runTool(const Command &command)
{
    if (command.tool.front() != '/') {
        complain("'" + command.tool + "' is not a full path");
        return statusNotStarted;
    }
    openMissingStandardDescriptors();
    const Descriptor signals = openSignals();
    if (!signals) {
        complain(systemError("cannot watch for signals", errno));
        return statusUnusable;
    }
    std::optional<Terminal> terminal = openTerminal();
    if (!terminal) {
        complain(systemError("cannot make a terminal", errno));
        return statusUnusable;
    }
    Tool tool;
    if (!tool.start(command, terminal->tools.get()))
        return statusNotStarted;
    terminal->tools.reset(); // the tool has it: once that has ended, reading ends
    return Pump(&tool, terminal->ours.get(), signals.get()).run();
}

} // namespace relay
