#include "tests/support/processcontrol.h"

#include <QProcess>

#include <windows.h>

void prepareForInterrupts(QProcess *process)
{
    // A group of its own: control events of the console reach it alone.
    process->setCreateProcessArgumentsModifier(
        [](QProcess::CreateProcessArguments *arguments) { arguments->flags |= CREATE_NEW_PROCESS_GROUP; });
}

void interruptProcess(qint64 processId, ProgramRun::Interrupt kind)
{
    const DWORD event = kind == ProgramRun::Interrupt::Break ? CTRL_BREAK_EVENT : CTRL_C_EVENT;
    GenerateConsoleCtrlEvent(event, DWORD(processId));
}
