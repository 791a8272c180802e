#pragma once

#include <QString>
#include <QStringList>

class QWidget;

/// What the program says while it starts. GUI thread.

/// Shows why the program cannot work and waits; the text goes to standard error too. True when the user pressed "OK",
/// false when the box was closed in another way.
bool showStartupFailure(const QString &message);

/// Tells that there is no NDI runtime and where to get it, and waits. True when the user wants the window all the
/// same, to look at reports.
bool offerRevisionOnly();

/// Tells, without waiting, which records were made from the journals of earlier runs: one line each. Nothing happens
/// when there are none. parent: in whose middle the box appears.
void showRecoveredRecords(const QStringList &lines, QWidget *parent);

/// Where nothing can be shown: one line on standard error. The exit status of the program.
int reportWithoutScreen(const QString &problem);
