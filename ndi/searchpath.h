#pragma once

#include <QString>
#include <QStringList>

// Pure; any thread. A header alone, which probes/ includes as well.

/// Whether a path of Windows depends neither on the working folder nor on the current drive.
inline bool isFullWindowsPath(const QString &path)
{
    const bool hasDrive = path.size() > 2 && path.at(0).isLetter() && path.at(1) == QLatin1Char(':');
    return path.startsWith(QLatin1String("\\\\"))
           || (hasDrive && (path.at(2) == QLatin1Char('\\') || path.at(2) == QLatin1Char('/')));
}

/// The folders of a search path such as PATH, separated by ":" on Linux and ";" on Windows: full paths only, none with
/// a quotation mark. The quotation marks around a folder of Windows are taken away.
inline QStringList searchPathFolders(const QString &searchPath, QChar separator)
{
    const bool isWindows = separator == QLatin1Char(';');
    const QLatin1Char quotationMark('"');
    QStringList folders;
    const QStringList parts = searchPath.split(separator, Qt::SkipEmptyParts);
    for (QString folder : parts) {
        if (isWindows && folder.size() > 1 && folder.startsWith(quotationMark) && folder.endsWith(quotationMark))
            folder = folder.mid(1, folder.size() - 2);
        const bool isFull = isWindows ? isFullWindowsPath(folder) : folder.startsWith(QLatin1Char('/'));
        if (isFull && !folder.contains(quotationMark))
            folders.append(folder);
    }
    return folders;
}
