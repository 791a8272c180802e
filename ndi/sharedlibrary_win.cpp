#include "ndi/sharedlibrary.h"

#include "ndi/libraryimage.h"
#include "ndi/searchpath.h"

#include <QDir>
#include <QFileInfo>

#include <windows.h>

#include <vector>

void SharedLibraryCloser::operator()(void *handle) const noexcept
{
    FreeLibrary(static_cast<HMODULE>(handle));
}

SharedLibraryHandle openSharedLibrary(const QString &path, QString *reason)
{
    const bool bareName = !path.contains(QLatin1Char('/')) && !path.contains(QLatin1Char('\\'));
    if (!bareName) {
        *reason = libraryFileProblem(path, inspectPeImage);
        if (!reason->isEmpty())
            return nullptr;
    }
    const QString nativePath = QDir::toNativeSeparators(path);
    const DWORD flags =
        bareName ? LOAD_LIBRARY_SEARCH_SYSTEM32 : LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
    SharedLibraryHandle library(LoadLibraryExW(reinterpret_cast<const wchar_t *>(nativePath.utf16()), nullptr, flags));
    if (library)
        return library;
    const DWORD error = GetLastError();
    if (error == ERROR_BAD_EXE_FORMAT)
        *reason = QStringLiteral("wrong architecture");
    else if (error == ERROR_MOD_NOT_FOUND)
        *reason = bareName ? missingLibraryReason() : QStringLiteral("a library that it needs is missing");
    else
        *reason = QStringLiteral("does not load, Windows error %1").arg(error);
    return nullptr;
}

void (*resolveSymbol(const SharedLibraryHandle &library, const char *name))()
{
    return reinterpret_cast<void (*)()>(GetProcAddress(static_cast<HMODULE>(library.get()), name));
}

QStringList runtimeFileNames()
{
    return {QStringLiteral("Processing.NDI.Lib.x64.dll")};
}

QStringList searchPathCandidates(const QStringList &names)
{
    std::vector<wchar_t> buffer(MAX_PATH);
    const UINT length = GetSystemDirectoryW(buffer.data(), UINT(buffer.size()));
    QStringList folders{QString::fromWCharArray(buffer.data(), int(length))};
    const QStringList onPath = searchPathFolders(qEnvironmentVariable("PATH"), QLatin1Char(';'));
    for (const QString &folder : onPath) {
        if (!folders.contains(folder, Qt::CaseInsensitive))
            folders.append(folder);
    }
    QStringList candidates;
    for (const QString &folder : qAsConst(folders)) {
        for (const QString &name : names)
            candidates.append(QDir::cleanPath(QDir(folder).filePath(name)));
    }
    return candidates;
}

QString programFolder()
{
    std::vector<wchar_t> buffer(32768);
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), DWORD(buffer.size()));
    return QFileInfo(QString::fromWCharArray(buffer.data(), int(length))).absolutePath();
}
