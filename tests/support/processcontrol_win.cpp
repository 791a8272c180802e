#include "tests/support/processcontrol.h"

#include <QProcess>

#include <windows.h>

bool canInterruptProcesses()
{
    // Wine hands no control event from one program to another.
    static const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return !isWine;
}

void prepareForInterrupts(QProcess *process)
{
    // Control events travel through a console that both are attached to; a test may have none.
    if (GetConsoleCP() == 0)
        AllocConsole();
    SetConsoleCtrlHandler(nullptr, TRUE); // Ctrl-C reaches everybody on the console, but not this test
    // A group of its own, so that Ctrl-Break reaches it alone.
    process->setCreateProcessArgumentsModifier(
        [](QProcess::CreateProcessArguments *arguments) { arguments->flags |= CREATE_NEW_PROCESS_GROUP; });
}

void interruptProcess(qint64 processId, ProgramRun::Interrupt kind)
{
    if (kind == ProgramRun::Interrupt::Break)
        GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, DWORD(processId));
    else
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0); // Windows sends it to all groups or to none
}
