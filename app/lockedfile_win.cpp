#include "app/lockedfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>

#include <windows.h>

namespace {

HANDLE handleOf(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

/// Path in the system's form; "\\?\" lets it be longer than 260 characters.
std::wstring systemPath(const QString &path)
{
    const QString native = QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    if (native.startsWith(QLatin1String("\\\\")))
        return native.toStdWString();
    return (QLatin1String("\\\\?\\") + native).toStdWString();
}

/// Sharing no writing is the lock: nobody else can open the file like this until the handle is closed; others
/// may read it if they share writing and deleting.
std::intptr_t openAlone(const QString &path, DWORD disposition, DWORD attributes = FILE_ATTRIBUTE_NORMAL)
{
    const HANDLE handle = CreateFileW(systemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ,
                                      nullptr, disposition, attributes | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return -1;
    BY_HANDLE_FILE_INFORMATION information = {};
    if (GetFileType(handle) == FILE_TYPE_DISK && GetFileInformationByHandle(handle, &information)
        && (information.dwFileAttributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY)) == 0)
        return reinterpret_cast<std::intptr_t>(handle);
    CloseHandle(handle);
    return -1;
}

quint64 numberOf(const FILETIME &time)
{
    return (quint64(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

std::uint64_t startToken(HANDLE process)
{
    FILETIME created = {};
    FILETIME ended = {};
    FILETIME kernel = {};
    FILETIME user = {};
    return GetProcessTimes(process, &created, &ended, &kernel, &user) ? numberOf(created) : 0;
}

struct HandleCloser {
    void operator()(void *handle) const noexcept
    {
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
    }
};

} // namespace

bool LockedFile::create(const QString &folder, const QString &name)
{
    close();
    if (!QDir().mkpath(folder))
        return false;
    m_path = folder + QLatin1Char('/') + name;
    m_writtenBytes = 0;
    m_handle = openAlone(m_path, CREATE_NEW);
    return isOpen();
}

bool LockedFile::openLeft(const QString &folder, const QString &name)
{
    close();
    m_path = folder + QLatin1Char('/') + name;
    m_handle = openAlone(m_path, OPEN_EXISTING);
    return isOpen();
}

LockedFile::Lock LockedFile::openLock(const QString &path)
{
    close();
    m_path = path;
    m_handle = openAlone(path, OPEN_ALWAYS, FILE_ATTRIBUTE_HIDDEN);
    if (isOpen())
        return Lock::Held;
    return GetLastError() == ERROR_SHARING_VIOLATION ? Lock::Busy : Lock::Unusable;
}

bool LockedFile::append(const QByteArray &bytes)
{
    DWORD written = 0;
    if (WriteFile(handleOf(m_handle), bytes.constData(), DWORD(bytes.size()), &written, nullptr)
        && written == DWORD(bytes.size())) {
        m_writtenBytes += bytes.size();
        return true;
    }
    LARGE_INTEGER end = {};
    end.QuadPart = m_writtenBytes;
    if (SetFilePointerEx(handleOf(m_handle), end, nullptr, FILE_BEGIN))
        SetEndOfFile(handleOf(m_handle));
    return false;
}

qint64 LockedFile::sizeBytes() const
{
    LARGE_INTEGER size = {};
    return GetFileSizeEx(handleOf(m_handle), &size) ? qint64(size.QuadPart) : -1;
}

qint64 LockedFile::ageS() const
{
    FILETIME written = {};
    FILETIME now = {};
    if (!GetFileTime(handleOf(m_handle), nullptr, nullptr, &written))
        return -1;
    GetSystemTimeAsFileTime(&now);
    constexpr qint64 unitsPerSecond = 10000000;
    return qMax(qint64(numberOf(now) - numberOf(written)) / unitsPerSecond, qint64(0));
}

QByteArray LockedFile::readAll(qint64 mostBytes) const
{
    const qint64 size = sizeBytes();
    if (size < 0 || size > mostBytes)
        return {};
    QByteArray bytes(int(size), '\0');
    DWORD count = 0;
    const LARGE_INTEGER begin = {};
    if (!SetFilePointerEx(handleOf(m_handle), begin, nullptr, FILE_BEGIN)
        || !ReadFile(handleOf(m_handle), bytes.data(), DWORD(size), &count, nullptr))
        return {};
    bytes.resize(int(count));
    return bytes;
}

bool LockedFile::remove()
{
    FILE_DISPOSITION_INFO information = {};
    information.DeleteFile = TRUE;
    const bool removed =
        SetFileInformationByHandle(handleOf(m_handle), FileDispositionInfo, &information, sizeof information) != 0;
    close();
    return removed;
}

bool LockedFile::renameTo(const QString &name)
{
    const QString newPath = QFileInfo(m_path).path() + QLatin1Char('/') + name;
    close(); // a file that is open alone cannot be moved by its name
    return MoveFileExW(systemPath(m_path).c_str(), systemPath(newPath).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

void LockedFile::close()
{
    if (m_handle != none)
        CloseHandle(handleOf(m_handle));
    m_handle = none;
}

ProcessIdentity ownProcess()
{
    return {std::int64_t(GetCurrentProcessId()), startToken(GetCurrentProcess())};
}

bool isProcessAlive(const ProcessIdentity &process)
{
    const std::unique_ptr<void, HandleCloser> handle(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, DWORD(process.processId)));
    if (!handle || startToken(handle.get()) != process.startToken)
        return false;
    return WaitForSingleObject(handle.get(), 0) == WAIT_TIMEOUT; // a dead process is there while a handle is
}

bool syncFile(QFile *file)
{
    // QFile does not give the system's handle; any handle brings the whole file to the disk.
    const std::unique_ptr<void, HandleCloser> handle(CreateFileW(systemPath(file->fileName()).c_str(), GENERIC_WRITE,
                                                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                                                 nullptr, OPEN_EXISTING, 0, nullptr));
    return handle.get() != INVALID_HANDLE_VALUE && FlushFileBuffers(handle.get()) != 0;
}

bool renameToFreeName(const QString &path, const QString &newPath)
{
    return MoveFileExW(systemPath(path).c_str(), systemPath(newPath).c_str(), MOVEFILE_WRITE_THROUGH) != 0;
}
