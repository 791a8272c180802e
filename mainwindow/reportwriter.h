#pragma once

#include "mainwindow/reportdata.h"

#include <QVector>

class QTextStream;

/// Writes a report: plain text, one item a line, lines ended by a single line feed, real numbers with at most six
/// significant digits, axis lengths cut to whole numbers. none writes nothing. What became of the writing is told by
/// the stream's status.
void writeReport(QTextStream &stream, ReportTest test, const QVector<ReportChart> &charts);
