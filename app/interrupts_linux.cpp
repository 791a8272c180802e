#include "app/interrupts.h"

#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int statusOfInterrupted = 1;

// The handler may use nothing but these, clock_gettime(2) and write(2).
std::atomic<bool> isArmed{false};
std::atomic<std::int64_t> firstInterruptMs{0}; // monotonic, 0: none yet
std::atomic<int> wakeDescriptor{-1};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free
              && std::atomic<std::int64_t>::is_always_lock_free);

extern "C" void onInterrupt(int)
{
    const int savedErrno = errno;
    if (!isArmed)
        _exit(statusOfInterrupted);
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::int64_t nowMs = std::int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000 + 1;
    std::int64_t firstMs = 0;
    if (!firstInterruptMs.compare_exchange_strong(firstMs, nowMs)) {
        if (nowMs - firstMs >= Interrupts::repeatMs)
            _exit(statusOfInterrupted);
    } else {
        const char byte = 0;
        static_cast<void>(!write(wakeDescriptor, &byte, 1));
    }
    errno = savedErrno;
}

void handle(int signalNumber)
{
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signalNumber, &action, nullptr);
}

bool isIgnored(int signalNumber)
{
    struct sigaction action = {};
    return sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

class Interrupts::Private {
public:
    int readEnd = -1;
    int writeEnd = -1;
    std::unique_ptr<QSocketNotifier> notifier;
};

Interrupts::Interrupts(QObject *parent) : QObject(parent), m_private(std::make_unique<Private>())
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
        m_private->readEnd = ends[0];
        m_private->writeEnd = ends[1];
        m_private->notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
        connect(m_private->notifier.get(), &QSocketNotifier::activated, this, [this] {
            m_private->notifier->setEnabled(false);
            emit interrupted();
        });
        wakeDescriptor = ends[1];
    }
    handle(SIGTERM);
    // nohup(1) ignores the hang-up, and a script's shell the interrupt of its background jobs.
    for (const int signalNumber : {SIGINT, SIGHUP}) {
        if (!isIgnored(signalNumber))
            handle(signalNumber);
    }
}

Interrupts::~Interrupts()
{
    isArmed = false;
    wakeDescriptor = -1;
    m_private->notifier.reset();
    close(m_private->readEnd);
    close(m_private->writeEnd);
}

void Interrupts::arm()
{
    isArmed = wakeDescriptor >= 0;
}
