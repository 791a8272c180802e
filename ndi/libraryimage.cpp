#include "ndi/libraryimage.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace {

template <typename T>
bool readLittleEndian(const QByteArray &bytes, qsizetype offset, T *value)
{
    if (offset < 0 || bytes.size() < offset + qsizetype(sizeof(T)))
        return false;
    *value = qFromLittleEndian<T>(bytes.constData() + offset);
    return true;
}

} // namespace

LibraryImage inspectElfImage(const QByteArray &start)
{
    constexpr quint16 machineX86_64 = 62;
    constexpr quint16 machineArm64 = 183;
#if defined(Q_PROCESSOR_ARM_64) // the one fact that only the compiler knows
    constexpr quint16 ownMachine = machineArm64;
    Q_UNUSED(machineX86_64)
#else
    constexpr quint16 ownMachine = machineX86_64;
    Q_UNUSED(machineArm64)
#endif
    constexpr char class64 = 2;
    constexpr char littleEndian = 1;
    quint16 machine = 0;
    if (!start.startsWith(QByteArrayLiteral("\x7f"
                                            "ELF"))
        || !readLittleEndian(start, 18, &machine))
        return LibraryImage::NotALibrary;
    if (start.at(4) != class64 || start.at(5) != littleEndian || machine != ownMachine)
        return LibraryImage::WrongArchitecture;
    return LibraryImage::Usable;
}

LibraryImage inspectPeImage(const QByteArray &start)
{
    constexpr quint16 machineAmd64 = 0x8664;
    quint32 headerOffset = 0;
    quint16 machine = 0;
    if (!start.startsWith(QByteArrayLiteral("MZ")) || !readLittleEndian(start, 0x3c, &headerOffset)
        || start.mid(int(qMin<quint32>(headerOffset, 0x7fffffffU)), 4) != QByteArray("PE\0\0", 4)
        || !readLittleEndian(start, qsizetype(headerOffset) + 4, &machine))
        return LibraryImage::NotALibrary;
    return machine == machineAmd64 ? LibraryImage::Usable : LibraryImage::WrongArchitecture;
}

QString libraryFileProblem(const QString &path, LibraryImage (*inspect)(const QByteArray &start))
{
    if (!QFileInfo::exists(path))
        return QStringLiteral("missing");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("not readable");
    switch (inspect(file.read(4096))) {
    case LibraryImage::WrongArchitecture:
        return QStringLiteral("wrong architecture");
    case LibraryImage::NotALibrary:
        return QStringLiteral("not a library");
    case LibraryImage::Usable:
        break;
    }
    return {};
}
