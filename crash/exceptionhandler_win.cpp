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
std::atomic<DWORD64> cLibraryBase{0}; ///< address of the C library in memory

void toUtf8(const wchar_t *text, char *utf8, int size)
{
    utf8[0] = '\0';
    if (!WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8, size, nullptr, nullptr))
        utf8[size - 1] = '\0'; // did not fit
}

bool onDumpWritten(const wchar_t *folder, const wchar_t *id, void *, EXCEPTION_POINTERS *exception,
                   MDRawAssertionInfo *, bool succeeded)
{
    toUtf8(folder, folderText, sizeof folderText);
    toUtf8(id, idText, sizeof idText);
    message.set(succeeded, folderText, idText);
    // Not through the C library: the thread that crashed may hold its locks.
    DWORD written = 0;
    WriteFile(standardError, message.text(), DWORD(message.size()), &written, nullptr);
    // The system would now go back through all frames of the full stack, and may not find out of it.
    if (succeeded && exception && exception->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW)
        TerminateProcess(GetCurrentProcess(), EXCEPTION_STACK_OVERFLOW);
    return succeeded;
}

/// One frame up the stack of this thread; false at its end. imageBase: of the code in the frame that was left.
bool unwind(CONTEXT *context, DWORD64 *imageBase)
{
    *imageBase = 0;
    RUNTIME_FUNCTION *function = RtlLookupFunctionEntry(context->Rip, imageBase, nullptr);
    if (!function)
        return false;
    void *handlerData = nullptr;
    DWORD64 frame = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, *imageBase, context->Rip, function, context, &handlerData, &frame, nullptr);
    return context->Rip != 0;
}

/// The state of this thread where it called abort(): below it there are only this file and the C library.
/// Where that is not found, the state it is in now.
void captureCallerOfAbort(CONTEXT *context)
{
    RtlCaptureContext(context);
    CONTEXT up = *context;
    CONTEXT last = up;
    bool wasInLibrary = false;
    DWORD64 imageBase = 0;
    constexpr int mostFrames = 16;
    for (int i = 0; i < mostFrames && unwind(&up, &imageBase); ++i) {
        const bool isInLibrary = imageBase == cLibraryBase;
        if (wasInLibrary && !isInLibrary) {
            *context = last;
            return;
        }
        wasInLibrary = isInLibrary;
        last = up;
    }
}

/// abort() raises no exception of the system's. A pure virtual call and an exception that nobody catches come this way,
/// too: the compiler's library has them end in abort().
void onAbort(int)
{
    if (google_breakpad::ExceptionHandler *handler = installed.exchange(nullptr)) {
        EXCEPTION_RECORD record = {};
        CONTEXT context = {};
        captureCallerOfAbort(&context);
        record.ExceptionCode = DWORD(STATUS_FATAL_APP_EXIT);
        record.ExceptionAddress = reinterpret_cast<void *>(context.Rip); // NOLINT(performance-no-int-to-ptr)
        EXCEPTION_POINTERS pointers = {&record, &context};
        handler->WriteMinidumpForException(&pointers);
    }
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
    cLibraryBase = reinterpret_cast<DWORD64>(GetModuleHandleW(L"msvcrt.dll"));
    // cppcheck-suppress danglingLifetime ; it is returned, and whoever lets go of it clears this
    installed = handler.get();
    std::signal(SIGABRT, &onAbort);
    // What is left for the handling of a stack overflow.
    ULONG reserve = overflowReserveBytes;
    SetThreadStackGuarantee(&reserve);
    return handler;
}
