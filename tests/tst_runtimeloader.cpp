#include "ndi/libraryimage.h"
#include "ndi/runtimeloader.h"
#include "tests/support/programrun.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(LibraryImage)

namespace {

QByteArray elfStart(char wordSize, char byteOrder, char machine)
{
    QByteArray bytes(64, '\0');
    bytes.replace(0, 4,
                  "\x7f"
                  "ELF");
    bytes[4] = wordSize;
    bytes[5] = byteOrder;
    bytes[18] = machine;
    return bytes;
}

QByteArray peStart(quint16 machine, int headerOffset = 0x80)
{
    QByteArray bytes(headerOffset + 24, '\0');
    bytes.replace(0, 2, "MZ");
    bytes[0x3c] = char(headerOffset);
    bytes.replace(headerOffset, 2, "PE");
    bytes[headerOffset + 4] = char(machine & 0xff);
    bytes[headerOffset + 5] = char(machine >> 8);
    return bytes;
}

QString makeFile(const QTemporaryDir &folder, const char *name, const QByteArray &contents)
{
    const QString path = folder.filePath(QString::fromLatin1(name));
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() ? path : QString();
}

} // namespace

class TestRuntimeLoader final : public TestBase {
    Q_OBJECT

private slots:
    void elfImage_data();
    void elfImage();
    void peImage_data();
    void peImage();
    void foldersComeFirstAndNewestNamesFirst();
    void everyPathTriedIsNamedWithItsReason();
    void foldersWithoutALibraryAreGrouped();
    void theFirstUsableLibraryIsTaken();
    void aLibraryThatLacksAFunctionIsSkipped();
};

void TestRuntimeLoader::elfImage_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<LibraryImage>("expected");
    QTest::newRow("64-bit x86") << elfStart(2, 1, 62) << LibraryImage::Usable;
    QTest::newRow("32-bit x86") << elfStart(1, 1, 3) << LibraryImage::WrongArchitecture;
    QTest::newRow("64-bit ARM") << elfStart(2, 1, char(183)) << LibraryImage::WrongArchitecture;
    QTest::newRow("other byte order") << elfStart(2, 2, 62) << LibraryImage::WrongArchitecture;
    QTest::newRow("text") << QByteArray("INPUT(libndi.so.6)\n") << LibraryImage::NotALibrary;
    QTest::newRow("cut off") << elfStart(2, 1, 62).left(18) << LibraryImage::NotALibrary;
    QTest::newRow("empty") << QByteArray() << LibraryImage::NotALibrary;
}

void TestRuntimeLoader::elfImage()
{
    QFETCH(QByteArray, start);
    QTEST(inspectElfImage(start), "expected");
}

void TestRuntimeLoader::peImage_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<LibraryImage>("expected");
    QTest::newRow("64-bit x86") << peStart(0x8664) << LibraryImage::Usable;
    QTest::newRow("32-bit x86") << peStart(0x014c) << LibraryImage::WrongArchitecture;
    QTest::newRow("64-bit ARM") << peStart(0xaa64) << LibraryImage::WrongArchitecture;
    QTest::newRow("text") << QByteArray("MZ and nothing more of it") << LibraryImage::NotALibrary;
    QTest::newRow("no PE mark") << peStart(0x8664).replace("PE", "XX") << LibraryImage::NotALibrary;
    QTest::newRow("cut off") << peStart(0x8664).left(0x84) << LibraryImage::NotALibrary;
    QTest::newRow("header beyond the file")
        << peStart(0x8664).replace(0x3c, 4, "\xff\xff\xff\xff") << LibraryImage::NotALibrary;
    QTest::newRow("empty") << QByteArray() << LibraryImage::NotALibrary;
}

void TestRuntimeLoader::peImage()
{
    QFETCH(QByteArray, start);
    QTEST(inspectPeImage(start), "expected");
}

void TestRuntimeLoader::foldersComeFirstAndNewestNamesFirst()
{
    const QString root = QDir::rootPath();
    const QStringList candidates =
        runtimeCandidates({root + QLatin1String("v6"), QString(), root + QLatin1String("v4/")},
                          {QStringLiteral("new"), QStringLiteral("old")},
                          {QStringLiteral("new"), root + QLatin1String("v6/old"), QStringLiteral("old")});
    QCOMPARE(candidates, (QStringList{root + QLatin1String("v6/new"), root + QLatin1String("v6/old"),
                                      root + QLatin1String("v4/new"), root + QLatin1String("v4/old"),
                                      QStringLiteral("new"), QStringLiteral("old")}));
}

void TestRuntimeLoader::everyPathTriedIsNamedWithItsReason()
{
    const QTemporaryDir folder;
    const QString missing = folder.filePath(QStringLiteral("missing.so"));
    const QString text = makeFile(folder, "text.so", "hello");
#if defined(Q_OS_WIN) // each platform has its own kind of image
    const QString narrow = makeFile(folder, "narrow.so", peStart(0x014c));
#else
    const QString narrow = makeFile(folder, "narrow.so", elfStart(1, 1, 3));
#endif
    const QString bare = QStringLiteral("no-such-runtime-anywhere");
    const LoadedRuntime runtime = loadRuntime({missing, text, narrow, bare});
    QVERIFY(!runtime.library);
    QCOMPARE(runtime.path, QString());
    const QString expected =
        QStringLiteral("Tried: %1 (missing), %2 (not a library), %3 (wrong architecture), %4 (missing)")
            .arg(QDir::toNativeSeparators(missing), QDir::toNativeSeparators(text), QDir::toNativeSeparators(narrow),
                 bare);
    QVERIFY2(runtime.problem.endsWith(expected), qPrintable(runtime.problem));
    QVERIFY(!runtime.problem.contains(QLatin1Char('\n')));
    // Those that are there, but of no use.
    QCOMPARE(runtime.faults,
             (QStringList{QStringLiteral("%1 (not a library)").arg(QDir::toNativeSeparators(text)),
                          QStringLiteral("%1 (wrong architecture)").arg(QDir::toNativeSeparators(narrow))}));
}

void TestRuntimeLoader::foldersWithoutALibraryAreGrouped()
{
    const QTemporaryDir folder;
    const auto in = [&folder](const char *name) { return folder.filePath(QString::fromLatin1(name)); };
    const QString text = makeFile(folder, "runtime.so", "hello");
    const LoadedRuntime runtime =
        loadRuntime({in("a/runtime.so"), in("b c/runtime.so"), text, in("d/runtime.so"), in("d/older.so")});
    const QString expected =
        QStringLiteral("Tried: runtime.so (missing in %1, %2), %3 (not a library), %4 (missing), %5 (missing)")
            .arg(QDir::toNativeSeparators(in("a")), QDir::toNativeSeparators(in("b c")), QDir::toNativeSeparators(text),
                 QDir::toNativeSeparators(in("d/runtime.so")), QDir::toNativeSeparators(in("d/older.so")));
    QVERIFY2(runtime.problem.endsWith(expected), qPrintable(runtime.problem));
}

void TestRuntimeLoader::theFirstUsableLibraryIsTaken()
{
    const QString loopback = ProgramRun::loopbackFolder() + QLatin1Char('/') + runtimeFileNames().first();
    const LoadedRuntime runtime = loadRuntime({QStringLiteral("no-such-runtime-anywhere"), loopback});
    QVERIFY2(runtime.library, qPrintable(runtime.problem));
    QCOMPARE(runtime.path, loopback);
    QCOMPARE(runtime.problem, QString());
    QVERIFY(runtime.faults.isEmpty());
    QVERIFY(runtime.functions.initialize());
    QVERIFY(runtime.functions.recvGetPerformance);
}

void TestRuntimeLoader::aLibraryThatLacksAFunctionIsSkipped()
{
    const QString incomplete = QStringLiteral(VEXA_INCOMPLETE_RUNTIME);
    const LoadedRuntime runtime = loadRuntime({incomplete});
    QVERIFY(!runtime.library);
    QVERIFY2(runtime.problem.endsWith(QLatin1String("(lacks the function NDIlib_recv_capture_v2)")),
             qPrintable(runtime.problem));
}

QTEST_GUILESS_MAIN(TestRuntimeLoader)
#include "tst_runtimeloader.moc"
