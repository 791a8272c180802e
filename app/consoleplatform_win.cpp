#include "app/consoleplatform.h"

#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

const char folderSeparator = '\\';

namespace {

UINT formerCodePage = 0; // of the console, to be put back; 0 when it was not changed

bool goesToFileOrPipe(DWORD standardHandle)
{
    const HANDLE handle = GetStdHandle(standardHandle);
    if (!handle || handle == INVALID_HANDLE_VALUE)
        return false;
    const DWORD type = GetFileType(handle);
    return type == FILE_TYPE_DISK || type == FILE_TYPE_PIPE;
}

std::string toUtf8(const wchar_t *text)
{
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0)
        return {};
    std::string result(std::size_t(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, &result[0], bytes, nullptr, nullptr);
    result.pop_back(); // the terminator
    return result;
}

struct LocalFreer {
    void operator()(void *memory) const noexcept { LocalFree(memory); }
};

} // namespace

void restrictLibrarySearch()
{
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_APPLICATION_DIR
                             | LOAD_LIBRARY_SEARCH_USER_DIRS);
    SetDllDirectoryW(L""); // takes the working folder out of the older search order, which a flag can still ask for
}

void attachConsole()
{
    const bool keepOutput = goesToFileOrPipe(STD_OUTPUT_HANDLE);
    const bool keepErrors = goesToFileOrPipe(STD_ERROR_HANDLE);
    if (AttachConsole(ATTACH_PARENT_PROCESS)) {
        if (!keepOutput)
            static_cast<void>(std::freopen("CONOUT$", "w", stdout));
        if (!keepErrors)
            static_cast<void>(std::freopen("CONOUT$", "w", stderr));
        if (!keepOutput || !keepErrors) {
            formerCodePage = GetConsoleOutputCP();
            SetConsoleOutputCP(CP_UTF8);
        }
    }
    // Bytes go out as they are, the same ones on every platform.
    for (std::FILE *stream : {stdout, stderr}) {
        if (_fileno(stream) >= 0)
            _setmode(_fileno(stream), _O_BINARY);
    }
    for (std::FILE *stream : {stdout, stderr})
        std::setvbuf(stream, nullptr, _IOFBF, 1 << 12); // dots are flushed together, each line as a whole
}

void releaseConsole()
{
    if (formerCodePage)
        SetConsoleOutputCP(formerCodePage);
}

bool goesToTerminal(std::FILE *stream)
{
    return _fileno(stream) >= 0 && _isatty(_fileno(stream)) != 0;
}

std::vector<std::string> commandLine(int argc, char *argv[])
{
    int count = 0;
    const std::unique_ptr<wchar_t *, LocalFreer> wide(CommandLineToArgvW(GetCommandLineW(), &count));
    if (!wide)
        return {argv, argv + argc};
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i)
        arguments.push_back(toUtf8(wide.get()[i]));
    return arguments;
}

void endProcess(int status)
{
    std::fflush(stdout);
    std::fflush(stderr);
    releaseConsole();
    TerminateProcess(GetCurrentProcess(), UINT(status));
    for (;;)
        Sleep(INFINITE);
}
