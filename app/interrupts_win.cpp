#include "app/interrupts.h"

#include "app/consoleplatform.h"

#include <atomic>

#include <windows.h>

namespace {

constexpr int statusOfInterrupted = 1;

std::atomic<bool> isArmed{false};
std::atomic<int> interruptCount{0};
std::atomic<Interrupts *> receiver{nullptr};

BOOL WINAPI onControlEvent(DWORD event)
{
    Interrupts *const interrupts = receiver;
    if (!isArmed || !interrupts || interruptCount.fetch_add(1) > 0)
        endProcess(statusOfInterrupted);
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
