#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QDateTime;
struct Measurement;

/// The record of a test: a comma-separated text file in the user's documents folder, UTF-8 without
/// byte order mark, lines ended by a single line feed. This file alone knows its place and format.
/// The functions that write are for one thread at a time.

/// The first line, without line end.
QString recordHeader();

/// One measurement as a line of the record, without line end.
/// sourceName: as it is, without quoting. width, height: pixels. defaultFps: nominal rate, frames per
/// second. timeMs: since the receiver's run began. indexNum: 0-based, written 1-based. fps: received
/// rate, may be infinite ("inf"). intervalMs: since the same receiver's previous frame.
QString recordRow(const QString &sourceName, int width, int height, double defaultFps, int timeMs, int indexNum,
                  double fps, int intervalMs);
QString recordRow(const QString &sourceName, const Measurement &measurement);

/// Folder of the records, without trailing separator; empty when the system names no documents folder.
QString recordFolder();

/// Creates an empty file, in place of one of the same name, and makes it the current record. name:
/// without folder and ".csv"; empty: "vexa_" and the local time. False: no file, recordPath() is empty.
bool createRecordFile(const QString &name);

/// Appends text and one line feed to the current record. True only when all of it has reached the
/// file; what had been written before a failure stays.
bool appendRecordText(const QString &text);

/// The same as appendRecordText(rows.join("\n")) without making that text in memory.
bool appendRecordRows(const QStringList &rows);

/// A new record, named by the local time, of the header and these rows; recordPath() tells where.
bool writeRecord(const QStringList &rows);

/// Name, without folder and ".csv", of a record of this moment.
QString recordName(const QDateTime &time);

/// A record beside the current one, which it leaves alone: the header and the rows that nextRow gives until
/// it returns false. name: as recordName(); when a file of that name is there already, another one of a
/// number after the name, unless the file is the same to the byte. partName: name of the file in which it
/// is put together, unique to this record. *wasThere: whether the very same file was there. Full path;
/// empty when it could not be written.
QString writeRecordBeside(const QString &name, const QString &partName, const std::function<bool(QString *)> &nextRow,
                          bool *wasThere);

/// Full path of the current record, empty when there is none.
QString recordPath();
