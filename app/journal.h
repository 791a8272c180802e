#pragma once

#include "app/journalformat.h"
#include "app/lockedfile.h"
#include "ndi/measurementsink.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

class JournalQueue;
class QThread;

/// Where journals are, on this computer and for this user; empty: nowhere. The environment variable
/// VEXA_JOURNAL_FOLDER names another folder; "off" there switches journals off.
QString journalFolder();

/// When the test of a journal began, by the name of its file; invalid when the name does not tell.
QDateTime journalStartTime(const QString &fileName);

/// Writes the measurements of one test to a file as they come in, so that they survive the process. A
/// thread of its own does all work with the file, four times a second; if something cannot be written,
/// the journal is off and the test goes on without it. Owner: the test's record; its thread.
class Journal final {
public:
    Journal(const QString &folder, const QStringList &names, const QDateTime &startTime);
    /// Keeps the file if it has rows and end() has not been called.
    ~Journal();
    Journal(const Journal &) = delete;
    Journal &operator=(const Journal &) = delete;

    /// Takes the measurements; may outlive the journal. Never null.
    std::shared_ptr<MeasurementSink> sink() const;
    /// No more measurements are taken.
    void close() noexcept;

    enum class End { Remove, Keep };
    /// Writes what is left and waits for the thread, then removes the file or leaves it, unless it has no
    /// rows, to the next start of the program. Later calls do nothing.
    void end(End end);

    /// Whether rows may be missing in the file: journals are off, it could not be made or written, or not fast
    /// enough. Any thread.
    bool isIncomplete() const noexcept;

private:
    void run();
    void keepJournal();
    bool begin();
    void writeRows();

    const QString m_folder;
    const QStringList m_names;
    const QDateTime m_startTime;
    const std::shared_ptr<JournalQueue> m_queue;
    std::atomic<bool> m_isBroken{false};

    // The thread's own.
    LockedFile m_file;
    JournalEncoder m_encoder;
    QVector<Measurement> m_rows;
    QByteArray m_block;
    qint64 m_rowCount = 0;

    std::mutex m_mutex; ///< guards the next three
    bool m_hasEnded = false;
    bool m_isThreadDone = false;
    End m_end = End::Keep;
    std::condition_variable m_wake;
    std::unique_ptr<QThread> m_thread;
};
