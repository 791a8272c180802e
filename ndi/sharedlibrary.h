#pragma once

#include <QString>
#include <QStringList>

#include <memory>

/// A library opened at run time. The handle is the platform's own; closing happens in the deleter.
struct SharedLibraryCloser {
    void operator()(void *handle) const noexcept;
};
using SharedLibraryHandle = std::unique_ptr<void, SharedLibraryCloser>;

/// The reason when there is no file of that name.
inline QString missingLibraryReason()
{
    return QStringLiteral("missing");
}

/// Opens the library at path. A bare name is looked for on the search path by Linux and in the system folder by
/// Windows. The libraries that it needs may be in its own folder. On failure the handle is null and *reason holds a few
/// words such as missingLibraryReason() or "wrong architecture".
SharedLibraryHandle openSharedLibrary(const QString &path, QString *reason);

/// The address of an exported function, null when there is none.
void (*resolveSymbol(const SharedLibraryHandle &library, const char *name))();

/// File names under which this platform's NDI runtime is installed, newest first.
QStringList runtimeFileNames();

/// What to open, in order, to look for these names on the system's library search path. Linux: the names, because its
/// loader searches. Windows: full paths in the system folder and in those of PATH, because for a bare name it would
/// look in the working folder as well.
QStringList searchPathCandidates(const QStringList &names);

/// Folder of the running program, without a trailing separator; no application object is needed.
QString programFolder();
