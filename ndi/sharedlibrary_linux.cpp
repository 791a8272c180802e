#include "ndi/sharedlibrary.h"

#include "ndi/libraryimage.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

void SharedLibraryCloser::operator()(void *handle) const noexcept
{
    dlclose(handle);
}

SharedLibraryHandle openSharedLibrary(const QString &path, QString *reason)
{
    const bool bareName = !path.contains(QLatin1Char('/'));
    if (!bareName) {
        *reason = libraryFileProblem(path, inspectElfImage);
        if (!reason->isEmpty())
            return nullptr;
    }
    SharedLibraryHandle library(dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL));
    if (library)
        return library;
    const char *const error = dlerror();
    const QString text = error ? QString::fromLocal8Bit(error).simplified() : QString();
    // The loader names the file that it could not open first; it is ours only when it is the bare name.
    if (bareName && text.startsWith(path + QLatin1String(": cannot open shared object file")))
        *reason = missingLibraryReason();
    else if (text.contains(QLatin1String("wrong ELF class")))
        *reason = QStringLiteral("wrong architecture");
    else
        *reason = text.isEmpty() ? QStringLiteral("does not load") : text;
    return nullptr;
}

void (*resolveSymbol(const SharedLibraryHandle &library, const char *name))()
{
    return reinterpret_cast<void (*)()>(dlsym(library.get(), name));
}

QStringList runtimeFileNames()
{
    return {QStringLiteral("libndi.so.6"), QStringLiteral("libndi.so.5"), QStringLiteral("libndi.so.4"),
            QStringLiteral("libndi.so")};
}

QStringList searchPathCandidates(const QStringList &names)
{
    return names;
}

QString programFolder()
{
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
}
