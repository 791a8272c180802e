#pragma once

#include "ndi/ndifunctions.h"
#include "ndi/sharedlibrary.h"

#include <QString>
#include <QStringList>

/// The NDI runtime as it was found: the open library and its functions, or the reason for neither.
struct LoadedRuntime {
    SharedLibraryHandle library; ///< null when no candidate would do
    NdiFunctions functions;      ///< complete when library is set
    QString path;                ///< the candidate in use
    QString problem;             ///< one line that names each path tried, empty when library is set
    QStringList faults;          ///< candidates that are there but of no use, each with its reason
};

/// What to try, in order: the folders in NDI_RUNTIME_DIR_V6 .. V3, the program's own folder, the
/// system's library search path; in each the file names of this platform, newest first.
QStringList runtimeCandidates();

/// The same, from given facts. folders: full paths, an empty one is skipped; names: newest first; searched: what stands
/// for the system's search path.
QStringList runtimeCandidates(const QStringList &folders, const QStringList &names, const QStringList &searched);

/// Opens the first candidate that loads and exports every required function.
LoadedRuntime loadRuntime(const QStringList &candidates);
