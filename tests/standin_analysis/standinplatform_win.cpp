#include "tests/standin_analysis/standinplatform.h"

#include <winsock2.h>

#include <windows.h>

#include <shellapi.h>

namespace standin {

namespace {

SOCKET connection = INVALID_SOCKET;

std::string utf8(const wchar_t *text)
{
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(std::size_t(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, &bytes[0], length, nullptr, nullptr);
    bytes.resize(std::size_t(length - 1));
    return bytes;
}

} // namespace

std::vector<std::string> arguments(int, char *[])
{
    int count = 0;
    wchar_t **words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i)
        texts.push_back(utf8(words[i]));
    LocalFree(words);
    return texts;
}

bool connectTo(unsigned short port)
{
    WSADATA data = {};
    WSAStartup(MAKEWORD(2, 2), &data);
    connection = WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED);
    SetHandleInformation(reinterpret_cast<HANDLE>(connection), HANDLE_FLAG_INHERIT, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connect(connection, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
}

bool sendText(const std::string &text)
{
    return send(connection, text.data(), int(text.size()), 0) == int(text.size());
}

std::size_t receive(char *buffer, std::size_t size)
{
    const int length = recv(connection, buffer, int(size), 0);
    return length > 0 ? std::size_t(length) : 0;
}

bool isOutputTerminal()
{
    return GetFileType(GetStdHandle(STD_OUTPUT_HANDLE)) == FILE_TYPE_CHAR;
}

bool writeNow(int descriptor, const char *bytes, std::size_t length)
{
    const HANDLE handle = GetStdHandle(descriptor == 1 ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD written = 0;
    for (; length > 0; bytes += written, length -= written) {
        if (!WriteFile(handle, bytes, DWORD(length), &written, nullptr))
            return false;
    }
    return true;
}

std::size_t readInput(char *buffer, std::size_t size)
{
    DWORD length = 0;
    return ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer, DWORD(size), &length, nullptr) ? length : 0;
}

bool startAnother(char *[], bool)
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring commandLine = GetCommandLineW();
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION made = {};
    if (!CreateProcessW(path, &commandLine[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &made))
        return false;
    CloseHandle(made.hThread);
    CloseHandle(made.hProcess);
    return true;
}

void die()
{
    TerminateProcess(GetCurrentProcess(), 9);
}

} // namespace standin
