#pragma once

#include "app/journalformat.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

/// The file of a journal, locked against all other programs from its creation to its end, so that it can
/// be seen whether somebody still writes it. The system gives the lock back when the process dies in any
/// way. One thread at a time.
class JournalFile final {
public:
    JournalFile() = default;
    ~JournalFile() { close(); }
    JournalFile(const JournalFile &) = delete;
    JournalFile &operator=(const JournalFile &) = delete;

    /// Makes a new file in this folder, which is made too and must be the user's own and private. Links
    /// are not followed. False: no file.
    bool create(const QString &folder, const QString &name);
    /// Opens a file that a program has left, to be read. False when one still holds it, when it is not
    /// an ordinary file of this user, or is not there any more.
    bool openLeft(const QString &folder, const QString &name);

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
