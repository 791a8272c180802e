#include "ndi/runtimeloader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QVector>

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

/// A candidate that was of no use.
struct SkippedCandidate {
    QString path;
    QString reason;

    QString text() const { return QStringLiteral("%1 (%2)").arg(QDir::toNativeSeparators(path), reason); }
};

/// All of them in order. One name that is missing in several folders, as on a search path, is given once with the
/// folders.
QString listOfSkipped(const QVector<SkippedCandidate> &skipped)
{
    const auto isMissingFile = [](const SkippedCandidate &candidate, const QString &name) {
        return candidate.reason == missingLibraryReason() && candidate.path != name
               && QFileInfo(candidate.path).fileName() == name;
    };
    QStringList parts;
    for (int i = 0; i < skipped.size();) {
        const QString name = QFileInfo(skipped.at(i).path).fileName();
        QStringList folders;
        for (int k = i; k < skipped.size() && isMissingFile(skipped.at(k), name); ++k)
            folders.append(QDir::toNativeSeparators(QFileInfo(skipped.at(k).path).path()));
        if (folders.size() > 1) {
            parts.append(
                QStringLiteral("%1 (%2 in %3)").arg(name, missingLibraryReason(), folders.join(QLatin1String(", "))));
            i += folders.size();
        } else {
            parts.append(skipped.at(i).text());
            ++i;
        }
    }
    return parts.join(QLatin1String(", "));
}

} // namespace

QStringList runtimeCandidates()
{
    QStringList folders;
    for (const char *variable :
         {"NDI_RUNTIME_DIR_V6", "NDI_RUNTIME_DIR_V5", "NDI_RUNTIME_DIR_V4", "NDI_RUNTIME_DIR_V3"})
        folders.append(qEnvironmentVariable(variable));
    folders.append(programFolder());
    const QStringList names = runtimeFileNames();
    return runtimeCandidates(folders, names, searchPathCandidates(names));
}

QStringList runtimeCandidates(const QStringList &folders, const QStringList &names, const QStringList &searched)
{
    QStringList candidates;
    for (const QString &folder : folders) {
        if (folder.isEmpty())
            continue;
        for (const QString &name : names)
            candidates.append(QDir::cleanPath(QFileInfo(QDir(folder), name).absoluteFilePath()));
    }
    candidates.append(searched);
    candidates.removeDuplicates();
    return candidates;
}

LoadedRuntime loadRuntime(const QStringList &candidates)
{
    LoadedRuntime runtime;
    QVector<SkippedCandidate> skipped;
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
        skipped.append({candidate, reason});
        if (reason != missingLibraryReason())
            runtime.faults.append(skipped.constLast().text().simplified());
    }
    runtime.problem = QCoreApplication::translate("NdiRuntime", "No usable NDI runtime was found; install it, or "
                                                                "name its folder in NDI_RUNTIME_DIR_V6. Tried: %1")
                          .arg(listOfSkipped(skipped))
                          .simplified(); // a folder's name may hold a line feed; the message is one line
    return runtime;
}
