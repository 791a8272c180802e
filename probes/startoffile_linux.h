#pragma once

#include <QByteArray>
#include <QString>

/// The first bytes of a file of /proc or /sys, mostBytes at most, read at once so that they fit each other; empty when
/// it cannot be read. Any thread.
QByteArray readStartOfFile(const QString &path, qint64 mostBytes);
