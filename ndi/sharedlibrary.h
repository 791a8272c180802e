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

/// Opens the library at path (a bare name: on the system's search path). On failure the handle is
/// null and *reason holds a few words such as missingLibraryReason() or "wrong architecture".
SharedLibraryHandle openSharedLibrary(const QString &path, QString *reason);

/// The address of an exported function, null when there is none.
void (*resolveSymbol(const SharedLibraryHandle &library, const char *name))();

/// File names under which this platform's NDI runtime is installed, newest first.
QStringList runtimeFileNames();

/// Folder of the running program, without a trailing separator; no application object is needed.
QString programFolder();
