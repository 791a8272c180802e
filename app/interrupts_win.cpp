#include "app/interrupts.h"

#include "app/consoleplatform.h"

#include <atomic>

#include <windows.h>

namespace {

constexpr int statusOfInterrupted = 1;

std::atomic<bool> isArmed{false};
std::atomic<ULONGLONG> firstInterruptMs{0}; // since the system started, 0: none yet
std::atomic<Interrupts *> receiver{nullptr};

BOOL WINAPI onControlEvent(DWORD event)
{
    Interrupts *const interrupts = receiver;
    if (!isArmed || !interrupts)
        endProcess(statusOfInterrupted);
    const ULONGLONG nowMs = GetTickCount64() + 1;
    ULONGLONG firstMs = 0;
    if (!firstInterruptMs.compare_exchange_strong(firstMs, nowMs)) {
        if (nowMs - firstMs >= ULONGLONG(Interrupts::repeatMs))
            endProcess(statusOfInterrupted);
        return TRUE;
    }
    emit interrupts->interrupted(); // connections to other threads are queued
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE); // the system ends the process as soon as this returns: leave time for the record
    return TRUE;
}

} // namespace

class Interrupts::Private {};

Interrupts::Interrupts(QObject *parent) : QObject(parent), m_private(std::make_unique<Private>())
{
    receiver = this;
    SetConsoleCtrlHandler(nullptr, FALSE); // a process group of its own starts with Ctrl-C switched off
    SetConsoleCtrlHandler(onControlEvent, TRUE);
}

Interrupts::~Interrupts()
{
    isArmed = false;
    receiver = nullptr;
    SetConsoleCtrlHandler(onControlEvent, FALSE);
}

void Interrupts::arm()
{
    isArmed = true;
}
