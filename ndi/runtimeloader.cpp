#include "ndi/runtimeloader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

/// Looks one function up; its name joins *missing when the library must have it but has not.
template <typename Function>
void resolve(const SharedLibraryHandle &library, const char *name, Function *function, QStringList *missing)
{
    *function = reinterpret_cast<Function>(resolveSymbol(library, name));
    if (!*function && missing)
        missing->append(QString::fromLatin1(name));
}

/// The names of the required functions that the library lacks.
QStringList resolveAll(const SharedLibraryHandle &library, NdiFunctions *functions)
{
    QStringList missing;
    resolve(library, "NDIlib_initialize", &functions->initialize, &missing);
    resolve(library, "NDIlib_destroy", &functions->destroy, &missing);
    resolve(library, "NDIlib_find_create_v2", &functions->findCreate, &missing);
    resolve(library, "NDIlib_find_wait_for_sources", &functions->findWaitForSources, &missing);
    resolve(library, "NDIlib_find_get_current_sources", &functions->findGetCurrentSources, &missing);
    resolve(library, "NDIlib_find_destroy", &functions->findDestroy, &missing);
    resolve(library, "NDIlib_recv_create_v3", &functions->recvCreate, &missing);
    resolve(library, "NDIlib_recv_capture_v2", &functions->recvCapture, &missing);
    resolve(library, "NDIlib_recv_free_video_v2", &functions->recvFreeVideo, &missing);
    resolve(library, "NDIlib_recv_free_audio_v2", &functions->recvFreeAudio, &missing);
    resolve(library, "NDIlib_recv_destroy", &functions->recvDestroy, &missing);
    resolve(library, "NDIlib_recv_get_performance", &functions->recvGetPerformance, nullptr);
    return missing;
}

} // namespace

QStringList runtimeCandidates()
{
    QStringList folders;
    for (const char *variable :
         {"NDI_RUNTIME_DIR_V6", "NDI_RUNTIME_DIR_V5", "NDI_RUNTIME_DIR_V4", "NDI_RUNTIME_DIR_V3"})
        folders.append(qEnvironmentVariable(variable));
    folders.append(programFolder());
    return runtimeCandidates(folders, runtimeFileNames());
}

QStringList runtimeCandidates(const QStringList &folders, const QStringList &names)
{
    QStringList candidates;
    for (const QString &folder : folders) {
        if (folder.isEmpty())
            continue;
        for (const QString &name : names)
            candidates.append(QDir::cleanPath(QFileInfo(QDir(folder), name).absoluteFilePath()));
    }
    candidates.append(names);
    candidates.removeDuplicates();
    return candidates;
}

LoadedRuntime loadRuntime(const QStringList &candidates)
{
    LoadedRuntime runtime;
    QStringList skipped;
    for (const QString &candidate : candidates) {
        QString reason;
        SharedLibraryHandle library = openSharedLibrary(candidate, &reason);
        if (library) {
            NdiFunctions functions;
            const QStringList missing = resolveAll(library, &functions);
            if (missing.isEmpty()) {
                runtime.library = std::move(library);
                runtime.functions = functions;
                runtime.path = candidate;
                runtime.faults.clear();
                return runtime;
            }
            reason = QCoreApplication::translate("NdiRuntime", "lacks the function %1")
                         .arg(missing.join(QLatin1String(", ")));
        }
        skipped.append(QStringLiteral("%1 (%2)").arg(QDir::toNativeSeparators(candidate), reason));
        if (reason != missingLibraryReason())
            runtime.faults.append(skipped.constLast().simplified());
    }
    runtime.problem = QCoreApplication::translate("NdiRuntime", "No usable NDI runtime was found; install it, or "
                                                                "name its folder in NDI_RUNTIME_DIR_V6. Tried: %1")
                          .arg(skipped.join(QLatin1String(", ")))
                          .simplified(); // a folder's name may hold a line feed; the message is one line
    return runtime;
}
