#include "probes/networkadapters.h"

#include "probes/ipconfigparser.h"
#include "probes/tooloutput.h"

#include <windows.h>

#include <array>
#include <string>

namespace {

/// Programs of the system write to a pipe in the code page of the console.
QString fromConsolePage(const QByteArray &bytes)
{
    const int size = bytes.size();
    std::wstring text(static_cast<std::size_t>(size), L'\0'); // never more units than bytes
    const int units = size > 0 ? MultiByteToWideChar(CP_OEMCP, 0, bytes.constData(), size, text.data(), size) : 0;
    return QString::fromWCharArray(text.data(), units);
}

/// The system's own ipconfig: a bare name would first be looked for in the working directory.
QString ipconfigProgram()
{
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetSystemDirectoryW(folder.data(), MAX_PATH);
    const QString program = QStringLiteral("ipconfig");
    if (length == 0 || length >= MAX_PATH)
        return program;
    return QString::fromWCharArray(folder.data(), static_cast<int>(length)) + QLatin1Char('\\') + program
           + QStringLiteral(".exe");
}

} // namespace

NetworkAdapters readNetworkAdapters(const std::atomic<bool> &abort)
{
    return parseIpconfig(fromConsolePage(toolOutput({ipconfigProgram(), {QStringLiteral("/all")}}, abort)));
}

QString linkSpeedKey(const NetworkAdapterInfo &adapter)
{
    return adapter.description;
}
