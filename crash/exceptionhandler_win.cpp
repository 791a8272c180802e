#include "crash/dumpmessage.h"
#include "crash/exceptionhandler.h"

#include <QDir>

#include <windows.h>

#include <client/windows/handler/exception_handler.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>

#include <io.h>

namespace {

constexpr ULONG overflowReserveBytes = 64 * 1024;

// Not on the stack of the crash. The writer handles one crash at a time.
DumpMessage message;
char folderText[4096];
char idText[128];

std::atomic<google_breakpad::ExceptionHandler *> installed{nullptr};
std::atomic<HANDLE> standardError{nullptr};

void toUtf8(const wchar_t *text, char *utf8, int size)
{
    utf8[0] = '\0';
    if (!WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8, size, nullptr, nullptr))
        utf8[size - 1] = '\0'; // did not fit
}

bool onDumpWritten(const wchar_t *folder, const wchar_t *id, void *, EXCEPTION_POINTERS *, MDRawAssertionInfo *,
                   bool succeeded)
{
    toUtf8(folder, folderText, sizeof folderText);
    toUtf8(id, idText, sizeof idText);
    message.set(succeeded, folderText, idText);
    // Not through the C library: the thread that crashed may hold its locks.
    DWORD written = 0;
    WriteFile(standardError, message.text(), DWORD(message.size()), &written, nullptr);
    return succeeded;
}

/// abort() raises no exception of the system's. A pure virtual call and an exception that nobody catches come this way,
/// too: the compiler's library has them end in abort().
void onAbort(int)
{
    if (google_breakpad::ExceptionHandler *handler = installed.exchange(nullptr))
        handler->WriteMinidump();
    // returns to abort(), which ends the process
}

/// Where the program's stream goes, also when that has been given a console meanwhile.
HANDLE handleOfStandardError()
{
    const int descriptor = _fileno(stderr);
    const std::intptr_t handle = descriptor < 0 ? -1 : _get_osfhandle(descriptor);
    // The C library tells handles as numbers.
    return handle < 0 ? GetStdHandle(STD_ERROR_HANDLE)
                      : reinterpret_cast<HANDLE>(handle); // NOLINT(performance-no-int-to-ptr)
}

} // namespace

void ExceptionHandlerDeleter::operator()(google_breakpad::ExceptionHandler *handler) const
{
    installed = nullptr;
    delete handler;
}

ExceptionHandlerPointer installExceptionHandler(const QString &folder)
{
    using google_breakpad::ExceptionHandler;
    standardError = handleOfStandardError();
    ExceptionHandlerPointer handler(new ExceptionHandler(QDir::toNativeSeparators(folder).toStdWString(), nullptr,
                                                         &onDumpWritten, nullptr, ExceptionHandler::HANDLER_ALL));
    installed = handler.get();
    std::signal(SIGABRT, &onAbort);
    // What is left for the handling of a stack overflow.
    ULONG reserve = overflowReserveBytes;
    SetThreadStackGuarantee(&reserve);
    return handler;
}
