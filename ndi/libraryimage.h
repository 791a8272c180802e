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

/// "wrong architecture", "not a library" or, for a usable image, empty.
QString libraryImageProblem(LibraryImage image);
