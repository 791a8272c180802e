#include "tests/support/processcontrol.h"

#include <csignal>

bool canInterruptProcesses()
{
    return true;
}

void prepareForInterrupts(QProcess *) {}

void interruptProcess(qint64 processId, ProgramRun::Interrupt kind)
{
    int signalNumber = SIGINT;
    if (kind == ProgramRun::Interrupt::Terminate)
        signalNumber = SIGTERM;
    if (kind == ProgramRun::Interrupt::HangUp)
        signalNumber = SIGHUP;
    kill(pid_t(processId), signalNumber);
}
