#include "app/journalrecovery.h"

#include "app/journal.h"
#include "app/lockedfile.h"
#include "app/journalformat.h"
#include "app/recordfile.h"

#include <QDir>

#include <exception>
#include <optional>

namespace {

constexpr qint64 mostFileBytes = qint64(1) << 30;
constexpr qint64 freshS = 60;          // a file that its owner may be about to lock
constexpr qint64 startPageBytes = 512; // fewer bytes are a start that was cut off

/// Whether the file was removed or nothing in it can be read; its name is kept with another ending.
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
    result.journalPath = file->path() + QLatin1String(".bad");
    if (!file->renameTo(name + QLatin1String(".bad")))
        return std::nullopt;
    return result;
}

std::optional<RecoveredJournal> recoverJournal(const QString &folder, const QString &name)
{
    LockedFile file;
    if (!file.openLeft(folder, name))
        return std::nullopt;
    const QByteArray bytes = file.readAll(mostFileBytes);
    if (bytes.isNull())
        return std::nullopt;
    JournalReader reader(bytes);
    if (reader.kind() == JournalReader::Kind::OtherVersion)
        return std::nullopt;
    if (reader.kind() == JournalReader::Kind::Unknown)
        return putAside(&file, name);
    const JournalStart &start = reader.start();
    if (isProcessAlive(start.owner)) // its record could not be written; the user may still want its end
        return std::nullopt;
    if (reader.rowCount() == 0) {
        file.remove();
        return std::nullopt;
    }
    RecoveredJournal result;
    result.journalPath = file.path();
    result.rows = reader.rowCount();
    result.hasGaps = reader.isDamaged() || reader.lostRows() > 0;
    const auto nextRow = [&reader, &start](QString *text) {
        Measurement row;
        if (!reader.nextRow(&row))
            return false;
        *text = recordRow(start.names.value(row.sourceIndex), row);
        return true;
    };
    bool wasThere = false;
    result.recordPath = writeRecordBeside(recordName(start.startTime), QLatin1Char('.') + name + QLatin1String(".part"),
                                          nextRow, &wasThere);
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
        return QStringLiteral("The journal of an interrupted test is damaged and was put aside (%1).")
            .arg(QDir::toNativeSeparators(journal.journalPath));
    if (journal.recordPath.isEmpty())
        return QStringLiteral("The record of an interrupted test could not be written; its %1 rows stay in %2.")
            .arg(QString::number(journal.rows), QDir::toNativeSeparators(journal.journalPath));
    if (journal.hasGaps)
        return QStringLiteral("Recovered the record of an interrupted test (%1), %2 rows, some are missing.")
            .arg(path, QString::number(journal.rows));
    return QStringLiteral("Recovered the record of an interrupted test (%1), %2 rows.")
        .arg(path, QString::number(journal.rows));
}

} // namespace

QVector<RecoveredJournal> recoverJournalsIn(const QString &folder, const std::atomic<bool> *isEnough)
{
    QVector<RecoveredJournal> all;
    if (folder.isEmpty())
        return all;
    // By name is by the time of the test.
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
