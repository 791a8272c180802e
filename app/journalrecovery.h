#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>

/// What became of one journal that a process has left.
struct RecoveredJournal {
    QString journalPath;
    QString recordPath; ///< empty: no record could be made
    qint64 rows = 0;
    bool hasGaps = false;      ///< rows are missing between those that are there
    bool hasStart = true;      ///< false: start time, and names unless they are in it elsewhere, are not the test's
    bool isUnreadable = false; ///< nothing in it can be read; it has been put aside
};

/// Turns every journal in this folder whose process is gone into a record, named by the start of its test,
/// and removes it; one without rows is only removed. A journal that could not become a record stays for
/// the next time; one in which nothing can be read is put aside and removed thirty days later. Those of running
/// processes, of other versions and of other users are left alone, and when two programs do this at once each journal
/// is taken by one of them. Any thread. isEnough, if given, is looked at after each journal: once it is true the rest
/// stays for the next time.
QVector<RecoveredJournal> recoverJournalsIn(const QString &folder, const std::atomic<bool> *isEnough = nullptr);

/// The same for journalFolder(), as one line of text for each, for the user. Usually empty and done in less
/// than a millisecond; a test of five minutes with eight receivers takes about half a second. Any thread.
QStringList recoverJournals(const std::atomic<bool> *isEnough = nullptr);
