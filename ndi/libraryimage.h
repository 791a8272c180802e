#pragma once

#include <QByteArray>
#include <QString>

/// What the first bytes of a file tell about it as a library for this program's platform. Pure.
enum class LibraryImage {
    Usable,            ///< a 64-bit x86 (Linux also: this build's own machine) image
    WrongArchitecture, ///< an image for another processor or word size
    NotALibrary,       ///< anything else
};

/// start: the first 4096 bytes of the file, or all of a shorter one.
LibraryImage inspectElfImage(const QByteArray &start);
LibraryImage inspectPeImage(const QByteArray &start);

/// Why the file at path will not load: "missing", "not readable", "wrong architecture" or "not a
/// library"; empty when it looks usable. inspect: what tells this platform's images.
QString libraryFileProblem(const QString &path, LibraryImage (*inspect)(const QByteArray &start));
