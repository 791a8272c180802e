#pragma once

#include <QStringList>

/// The console program, from the banner to the end of the process. arguments: without the program's
/// name, one character for each byte. Needs a QCoreApplication; returns only when a test's event loop
/// does, with its result. Main thread.
int runConsole(const QStringList &arguments);
