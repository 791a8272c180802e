#pragma once

#include "ndi/searchpath.h"

#include <QString>
#include <QStringList>

/// The program to be measured with, or an empty text: the first of the files that a run looks for.
QString installedAnalysisTool();

/// Whether there is such a program. Looks for the generations in another order than a run does.
bool isAnalysisToolInstalled();

/// The relay beside the program, else the one on the search path; empty when there is none. The working folder is not
/// searched, not even on Windows: anybody may have put a program of that name there.
QString analysisRelay();

/// The first of these that is a program file; empty when none is.
QString firstProgramOf(const QStringList &paths);

// Where the tool may be, most wanted first. The lists of both systems are made on either.

/// `searchFolders`: those of the search path.
QStringList windowsAnalysisToolsForRun(const QStringList &searchFolders);
QStringList windowsAnalysisToolsForCheck(const QStringList &searchFolders);
/// `programFolder`: that of our own program.
QStringList linuxAnalysisTools(const QString &programFolder, const QStringList &searchFolders);
/// On either system, under this system's name.
QStringList analysisRelays(const QString &programFolder, const QStringList &searchFolders);

// What differs between the systems.

QStringList analysisToolsForRun();   ///< needs the application object
QStringList analysisToolsForCheck(); ///< needs the application object
QString analysisRelayName();         ///< "pipe_stdout" as a file name of this system
