#pragma once

#include <QString>

#include <functional>

class QDateTime;
struct Measurement;

/// The record of a test: a comma-separated text file in the user's documents folder, UTF-8 without
/// byte order mark, lines ended by a single line feed. This file alone knows its place and format.
/// The functions that write the current record are for one thread at a time.

/// The first line, without line end.
QString recordHeader();

/// One measurement as a line of the record, without line end.
/// sourceName: as it is, without quoting. width, height: pixels. defaultFps: nominal rate, frames per
/// second. timeMs: since the receiver's run began. indexNum: 0-based, written 1-based. fps: received
/// rate, may be infinite ("inf"). intervalMs: since the same receiver's previous frame.
QString recordRow(const QString &sourceName, int width, int height, double defaultFps, int timeMs, int indexNum,
                  double fps, int intervalMs);
QString recordRow(const QString &sourceName, const Measurement &measurement);

/// Gives the rows of a record one after the other, in their order; false after the last one.
using NextRow = std::function<bool(QString *row)>;

/// Folder of the records, without trailing separator; empty when the system names no documents folder, or when
/// there is no home folder that one could be in.
QString recordFolder();

// Records are created under a lock between processes, which is a file in their folder. The program waits for the lock
// for 3 s at most, because its holder may hang, and then goes on without it, as it does where the file system has no
// locks. Even then it never replaces a file of another process.

/// Creates an empty file and makes it the current record. name: without folder and ".csv"; a file of that name is
/// replaced. Empty: "vexa_" and the local time; this replaces the file that this process made last, while the name
/// of any other file is left alone: the call waits for the next second. After half a minute of such waiting the
/// name gets a number. False: no file, recordPath() is empty.
bool createRecordFile(const QString &name);

/// Appends text and one line feed to the current record. True only when all of it is on the disk; what had been
/// written before a failure stays.
bool appendRecordText(const QString &text);

/// The same as appendRecordText() with all rows joined by line feeds, without making that text in memory.
bool appendRecordRows(const NextRow &nextRow);

/// Writes a new record with the header and these rows. The local time is its name, and recordPath() is its path. The
/// lock is held until the whole record is on the disk.
bool writeRecord(const NextRow &nextRow);

/// Removes the current record, which could not be finished. If its rows are wanted and it has a whole row, it is
/// truncated after the last whole row and renamed to ".csv.part" instead. recordPath() is empty afterwards.
void dropUnfinishedRecord(bool areRowsWanted);

/// Name, without folder and ".csv", of a record of this moment.
QString recordName(const QDateTime &time);

/// A record beside the current one, which it leaves alone. name: as recordName(); when a file of that name is there
/// already, a number follows the name, unless the file is the same to the byte. partName: name of the file in which
/// it is put together, unique to this record. *wasThere: whether the very same file was there. Full path; empty when
/// it could not be written. Any thread.
QString writeRecordBeside(const QString &name, const QString &partName, const NextRow &nextRow, bool *wasThere);

/// Full path of the current record, empty when there is none.
QString recordPath();
