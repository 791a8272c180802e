#pragma once

#include "app/journalformat.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

class QFile;

/// File operations for records and journals that Qt does not offer.

/// A file that is locked against all other programs while it is open: a journal, so that its readers see whether
/// it is still written, or a file that is nothing but a lock. The system releases the lock when the process dies
/// in any way. One thread at a time.
class LockedFile final {
public:
    LockedFile() = default;
    ~LockedFile() { close(); }
    LockedFile(const LockedFile &) = delete;
    LockedFile &operator=(const LockedFile &) = delete;

    /// Makes a new file in this folder, which is made too and must be the user's own and private. Links
    /// are not followed. False: no file.
    bool create(const QString &folder, const QString &name);
    /// Opens a file that a program has left, to be read. False when one still holds it, when it is not
    /// an ordinary file of this user, or is not there any more.
    bool openLeft(const QString &folder, const QString &name);

    enum class Lock {
        Held,    ///< by this object
        Busy,    ///< another object or process holds it
        Unusable ///< the file cannot be opened, or its file system has no locks
    };
    /// Opens an empty file that serves as a lock, and makes it when it is not there. Links are not followed. Does not
    /// wait.
    Lock openLock(const QString &path);

    bool isOpen() const { return m_handle != none; }
    QString path() const { return m_path; }
    /// All of it or nothing: what a failed call has left is cut off again.
    bool append(const QByteArray &bytes);
    /// -1: not known.
    qint64 sizeBytes() const;
    /// Seconds since it was written last; -1: not known.
    qint64 ageS() const;
    /// Null when it cannot be read or has more than mostBytes (2 GiB - 1 at most); empty when it has none.
    QByteArray readAll(qint64 mostBytes) const;
    /// Removes and closes it. False when it is still there.
    bool remove();
    /// Gives it another name in its folder, in place of one of that name, and closes it.
    bool renameTo(const QString &name);
    void close();

private:
    static constexpr std::intptr_t none = -1;

    std::intptr_t m_handle = none; ///< the system's
    QString m_path;
    qint64 m_writtenBytes = 0;
};

/// This process.
ProcessIdentity ownProcess();
/// Whether that very process is still there.
bool isProcessAlive(const ProcessIdentity &process);

/// Brings what was written to an open file, and its name, to the disk. False when the system reports that it could
/// not: some file systems tell only here that the disk was full.
bool syncFile(QFile *file);
/// Renames a file and brings the new name to the disk. False when it could not or when there is a file of that name,
/// which is never replaced, even if another process makes it at the same moment.
bool renameToFreeName(const QString &path, const QString &newPath);
