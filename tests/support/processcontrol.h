#pragma once

#include "tests/support/programrun.h"

class QProcess;

/// Whether interruptProcess() works on this system.
bool canInterruptProcesses();

/// Sets a process that is not started yet up so that interruptProcess() reaches it and nobody else.
void prepareForInterrupts(QProcess *process);

/// Asks a running process to end.
void interruptProcess(qint64 processId, ProgramRun::Interrupt kind);
