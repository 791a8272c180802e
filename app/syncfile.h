#pragma once

class QFile;

/// Brings what was written to an open file to the disk. False when the system reports that it could
/// not: some file systems tell only here that the disk was full.
bool syncFile(QFile *file);
