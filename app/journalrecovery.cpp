#include "app/journalrecovery.h"

#include "app/journal.h"
#include "app/journalformat.h"
#include "app/lockedfile.h"
#include "app/recordfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <exception>
#include <optional>

namespace {

constexpr qint64 mostFileBytes = qint64(1) << 30;
constexpr qint64 freshS = 60;          // a file that its owner may be about to lock
constexpr qint64 startPageBytes = 512; // fewer bytes are a start that was cut off
constexpr qint64 asideDays = 30;
const QLatin1String asideSuffix(".bad");

/// What to do with a journal in which nothing can be read: one that was only begun is removed, another one is put
/// aside and told.
std::optional<RecoveredJournal> putAside(LockedFile *file, const QString &name)
{
    if (file->sizeBytes() < startPageBytes) {
        const qint64 ageS = file->ageS();
        if (ageS < 0 || ageS > freshS)
            file->remove();
        return std::nullopt;
    }
    RecoveredJournal result;
    result.isUnreadable = true;
    result.journalPath = file->path() + asideSuffix;
    if (!file->renameTo(name + asideSuffix))
        return std::nullopt;
    QFile aside(result.journalPath); // its days begin now
    if (aside.open(QIODevice::ReadWrite))
        aside.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
    return result;
}

void removeOldOnesAside(const QString &folder)
{
    const QStringList names = QDir(folder).entryList({QLatin1String("*.journal") + asideSuffix},
                                                     QDir::Files | QDir::NoSymLinks | QDir::Hidden);
    for (const QString &name : names) {
        LockedFile file;
        if (file.openLeft(folder, name) && file.ageS() > asideDays * 24 * 3600)
            file.remove();
    }
}

/// When a test began whose journal has lost its start.
QDateTime guessedStartTime(const QString &folder, const QString &name)
{
    const QDateTime named = journalStartTime(name);
    return named.isValid() ? named : QFileInfo(folder + QLatin1Char('/') + name).lastModified();
}

std::optional<RecoveredJournal> recoverJournal(const QString &folder, const QString &name)
{
    LockedFile file;
    if (!file.openLeft(folder, name))
        return std::nullopt;
    const QByteArray bytes = file.readAll(mostFileBytes);
    if (bytes.isNull())
        return putAside(&file, name);
    JournalReader reader(bytes);
    if (reader.kind() == JournalReader::Kind::OtherVersion)
        return std::nullopt;
    if (reader.kind() == JournalReader::Kind::Unknown)
        return putAside(&file, name);
    // A process that lives has failed to write its record; the user may still want its end.
    if (reader.hasStart() && isProcessAlive(reader.start().owner))
        return std::nullopt;
    if (reader.rowCount() == 0) {
        file.remove();
        return std::nullopt;
    }
    RecoveredJournal result;
    result.journalPath = file.path();
    result.rows = reader.rowCount();
    result.hasGaps = reader.isDamaged() || reader.lostRows() > 0;
    result.hasStart = reader.hasStart();
    const QDateTime startTime = reader.hasStart() ? reader.start().startTime : guessedStartTime(folder, name);
    const auto nextRow = [&reader](QString *text) {
        Measurement row;
        if (!reader.nextRow(&row))
            return false;
        *text = recordRow(reader.sourceName(row.sourceIndex), row);
        return true;
    };
    bool wasThere = false;
    result.recordPath =
        writeRecordBeside(recordName(startTime), QLatin1Char('.') + name + QLatin1String(".part"), nextRow, &wasThere);
    if (result.recordPath.isEmpty())
        return result;
    const bool isRemoved = file.remove();
    if (wasThere && !isRemoved) // told at an earlier start, and nothing has changed since
        return std::nullopt;
    return result;
}

QString lineFor(const RecoveredJournal &journal)
{
    const QString path = QDir::toNativeSeparators(journal.recordPath);
    if (journal.isUnreadable)
        return QStringLiteral("The journal of an interrupted test is damaged and was put aside for %1 days (%2).")
            .arg(QString::number(asideDays), QDir::toNativeSeparators(journal.journalPath));
    if (journal.recordPath.isEmpty())
        return QStringLiteral("The record of an interrupted test could not be written; its %1 rows stay in %2.")
            .arg(QString::number(journal.rows), QDir::toNativeSeparators(journal.journalPath));
    QString line = QStringLiteral("Recovered the record of an interrupted test (%1), %2 rows")
                       .arg(path, QString::number(journal.rows));
    if (journal.hasGaps)
        line += QLatin1String(", some are missing");
    if (!journal.hasStart)
        line += QLatin1String(", the beginning of its journal is damaged");
    return line + QLatin1Char('.');
}

} // namespace

QVector<RecoveredJournal> recoverJournalsIn(const QString &folder, const std::atomic<bool> *isEnough)
{
    QVector<RecoveredJournal> all;
    if (folder.isEmpty())
        return all;
    removeOldOnesAside(folder);
    // File names start with the test's start time, so sorting by name is chronological.
    const QStringList names = QDir(folder).entryList({QStringLiteral("*.journal")},
                                                     QDir::Files | QDir::NoSymLinks | QDir::Hidden, QDir::Name);
    for (const QString &name : names) {
        try {
            if (const std::optional<RecoveredJournal> journal = recoverJournal(folder, name))
                all.append(*journal);
        } catch (const std::exception &) { // no memory for a large one: the next start tries again
        }
        if (isEnough && *isEnough)
            break;
    }
    return all;
}

QStringList recoverJournals(const std::atomic<bool> *isEnough)
{
    QStringList lines;
    const QVector<RecoveredJournal> all = recoverJournalsIn(journalFolder(), isEnough);
    for (const RecoveredJournal &journal : all)
        lines.append(lineFor(journal));
    return lines;
}
