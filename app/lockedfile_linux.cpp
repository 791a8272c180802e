#include "app/lockedfile.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <ctime>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int descriptorOf(std::intptr_t handle)
{
    return int(handle);
}

/// Descriptor of a folder that nobody else can write into or look into, or -1.
int openPrivateFolder(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    QDir().mkpath(QFileInfo(path).path());
    static_cast<void>(mkdir(name.constData(), 0700));
    const int folder = open(name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat status = {};
    if (folder >= 0 && fstat(folder, &status) == 0 && status.st_uid == geteuid()
        && ((status.st_mode & 077U) == 0 || fchmod(folder, 0700) == 0))
        return folder;
    if (folder >= 0)
        ::close(folder);
    return -1;
}

QByteArray contents(const char *path)
{
    QByteArray text(4096, '\0');
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return {};
    const ssize_t count = read(file, text.data(), std::size_t(text.size()));
    ::close(file);
    text.resize(int(qMax(count, ssize_t(0))));
    return text;
}

/// Start of a process as the system tells it, with a mark of the system's own start: the former counts
/// from the latter. 0: no such process.
std::uint64_t startToken(std::int64_t processId)
{
    const QByteArray status = contents(("/proc/" + QByteArray::number(qint64(processId)) + "/stat").constData());
    // The program's name, in brackets, may hold anything.
    const QList<QByteArray> fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
    constexpr int startTimeField = 19; // the 22nd of all
    if (fields.size() <= startTimeField || fields.at(0) == "Z" || fields.at(0) == "X")
        return 0;
    static const QByteArray boot = contents("/proc/sys/kernel/random/boot_id");
    const std::uint64_t bootMark = crc32c(boot.constData(), std::size_t(boot.size()));
    return fields.at(startTimeField).toULongLong() ^ (bootMark << 32);
}

/// Brings the names in a file's folder to the disk. Some file systems cannot, which is no loss.
void syncFolderOf(const QString &path)
{
    const int folder = open(QFile::encodeName(QFileInfo(path).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    static_cast<void>(fsync(folder));
    ::close(folder);
}

} // namespace

bool LockedFile::create(const QString &folder, const QString &name)
{
    close();
    const int folderDescriptor = openPrivateFolder(folder);
    if (folderDescriptor < 0)
        return false;
    const int file = openat(folderDescriptor, QFile::encodeName(name).constData(),
                            O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    ::close(folderDescriptor);
    if (file < 0)
        return false;
    m_handle = file;
    m_path = folder + QLatin1Char('/') + name;
    m_writtenBytes = 0;
    if (flock(file, LOCK_EX | LOCK_NB) == 0)
        return true;
    remove(); // a file system without locks
    return false;
}

bool LockedFile::openLeft(const QString &folder, const QString &name)
{
    close();
    const QString path = folder + QLatin1Char('/') + name;
    const QByteArray encoded = QFile::encodeName(path);
    // O_NONBLOCK: a pipe under that name would wait for a writer.
    const int file = open(encoded.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat opened = {};
    struct stat named = {};
    // The name must still stand for the locked file: another program may have just dealt with it.
    if (fstat(file, &opened) != 0 || !S_ISREG(opened.st_mode) || opened.st_uid != geteuid()
        || flock(file, LOCK_EX | LOCK_NB) != 0 || lstat(encoded.constData(), &named) != 0
        || named.st_ino != opened.st_ino || named.st_dev != opened.st_dev) {
        ::close(file);
        return false;
    }
    m_handle = file;
    m_path = path;
    return true;
}

LockedFile::Lock LockedFile::openLock(const QString &path)
{
    close();
    const int file =
        open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    struct stat status = {};
    if (file < 0)
        return Lock::Unusable;
    const bool isRegular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    if (isRegular && flock(file, LOCK_EX | LOCK_NB) == 0) {
        m_handle = file;
        m_path = path;
        return Lock::Held;
    }
    const bool isBusy = isRegular && errno == EWOULDBLOCK;
    ::close(file);
    return isBusy ? Lock::Busy : Lock::Unusable;
}

bool LockedFile::append(const QByteArray &bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t count = write(descriptorOf(m_handle), bytes.constData() + done, std::size_t(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            static_cast<void>(!ftruncate(descriptorOf(m_handle), m_writtenBytes));
            lseek(descriptorOf(m_handle), m_writtenBytes, SEEK_SET);
            return false;
        }
        done += count;
    }
    m_writtenBytes += done;
    return true;
}

qint64 LockedFile::sizeBytes() const
{
    struct stat status = {};
    return fstat(descriptorOf(m_handle), &status) == 0 ? status.st_size : -1;
}

qint64 LockedFile::ageS() const
{
    struct stat status = {};
    return fstat(descriptorOf(m_handle), &status) == 0 ? qMax(qint64(std::time(nullptr) - status.st_mtime), qint64(0))
                                                       : -1;
}

QByteArray LockedFile::readAll(qint64 mostBytes) const
{
    const qint64 size = sizeBytes();
    if (size < 0 || size > mostBytes)
        return {};
    QByteArray bytes(int(size), '\0');
    int done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            pread(descriptorOf(m_handle), bytes.data() + done, std::size_t(bytes.size() - done), done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return {};
        if (count == 0)
            break;
        done += int(count);
    }
    bytes.resize(done);
    return bytes;
}

bool LockedFile::remove()
{
    const bool removed = unlink(QFile::encodeName(m_path).constData()) == 0;
    close();
    return removed;
}

bool LockedFile::renameTo(const QString &name)
{
    const QString newPath = QFileInfo(m_path).path() + QLatin1Char('/') + name;
    const bool renamed =
        std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(newPath).constData()) == 0;
    close();
    return renamed;
}

void LockedFile::close()
{
    if (m_handle != none)
        ::close(descriptorOf(m_handle));
    m_handle = none;
}

ProcessIdentity ownProcess()
{
    return {getpid(), startToken(getpid())};
}

bool isProcessAlive(const ProcessIdentity &process)
{
    return process.processId > 0 && startToken(process.processId) == process.startToken && process.startToken != 0;
}

bool syncFile(QFile *file)
{
    // EINVAL: a file of a kind that cannot be synchronised, which is no loss.
    if (fdatasync(file->handle()) != 0 && errno != EINVAL)
        return false;
    syncFolderOf(file->fileName());
    return true;
}

bool renameToFreeName(const QString &path, const QString &newPath)
{
    const QByteArray from = QFile::encodeName(path);
    const QByteArray to = QFile::encodeName(newPath);
    bool isRenamed = renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0;
    if (!isRenamed && (errno == EINVAL || errno == ENOSYS)) { // a file system that knows only the plain rename
        const int claim = open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (claim >= 0) {
            ::close(claim);
            isRenamed = std::rename(from.constData(), to.constData()) == 0;
            if (!isRenamed)
                unlink(to.constData());
        }
    }
    if (isRenamed)
        syncFolderOf(newPath);
    return isRenamed;
}
