#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QtTest>

#include <set>

namespace {

struct Picture {
    const char *name;
    QSize size; // at 1x, in pixels
};

// Every picture that the program asks for by name. Names are case-sensitive.
const Picture pictures[] = {
    {"Vexa_splash-screen.png", {640, 400}},
    {"NDI-logo.png", {48, 24}},
    {"minimiseB.png", {18, 18}},
    {"minimiseB-hover.png", {18, 18}},
    {"smaller-window.png", {18, 18}},
    {"smaller-window-hover.png", {18, 18}},
    {"restore-window.png", {18, 18}},
    {"restore-window-hover.png", {18, 18}},
    {"quit-vexa.png", {18, 18}},
    {"quit-vexa-hover.png", {18, 18}},
    {"quit-vexa-gray.png", {18, 18}},
    {"refresh.png", {24, 24}},
    {"refresh-hover.png", {24, 24}},
    {"enlarge-table.png", {28, 28}},
    {"enlarge-table-hover.png", {28, 28}},
    {"reduce-table.png", {28, 28}},
    {"reduce-table-hover.png", {28, 28}},
    {"revision-mode-off.png", {86, 26}},
    {"revision-mode-hover.png", {86, 26}},
    {"save-vexa-file.png", {86, 26}},
    {"save-vexa-file-hover.png", {86, 26}},
    {"smooth-graph-ON.png", {24, 24}},
    {"smooth-graph-OFF.png", {24, 24}},
    {"raw-graph-ON.png", {24, 24}},
    {"raw-graph-OFF.png", {24, 24}},
    {"selected.png", {12, 12}},
    {"unselected.png", {12, 12}},
    {"arrow-down.png", {25, 25}},
    {"no-source-background.jpg", {400, 225}},
};

// Drawings that are asked for as such: sharp at every size, so without @2x.
const Picture drawings[] = {
    {"Tessaly-VEXA-new-logo.svg", {200, 50}},
    {"vexa.svg", {256, 256}},
};

struct State {
    const char *name;
    const char *other; // the same button in another state
};

const State states[] = {
    {"minimiseB.png", "minimiseB-hover.png"},
    {"smaller-window.png", "smaller-window-hover.png"},
    {"restore-window.png", "restore-window-hover.png"},
    {"quit-vexa.png", "quit-vexa-hover.png"},
    {"quit-vexa.png", "quit-vexa-gray.png"},
    {"quit-vexa-hover.png", "quit-vexa-gray.png"},
    {"refresh.png", "refresh-hover.png"},
    {"enlarge-table.png", "enlarge-table-hover.png"},
    {"enlarge-table.png", "reduce-table.png"},
    {"reduce-table.png", "reduce-table-hover.png"},
    {"revision-mode-off.png", "revision-mode-hover.png"},
    {"revision-mode-off.png", "save-vexa-file.png"},
    {"save-vexa-file.png", "save-vexa-file-hover.png"},
    {"smooth-graph-ON.png", "smooth-graph-OFF.png"},
    {"raw-graph-ON.png", "raw-graph-OFF.png"},
    {"smooth-graph-ON.png", "raw-graph-ON.png"},
    {"smooth-graph-OFF.png", "raw-graph-OFF.png"},
    {"selected.png", "unselected.png"},
};

QString pathOf(const char *name)
{
    return QLatin1String(":/images/") + QLatin1String(name);
}

QString doubleOf(const QString &path)
{
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    return path.left(dot) + QLatin1String("@2x") + path.mid(dot);
}

/// Pixels of two pictures of one size that differ visibly.
int differingPixels(const QImage &one, const QImage &other)
{
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            if (qAbs(a.red() - b.red()) + qAbs(a.green() - b.green()) + qAbs(a.blue() - b.blue())
                    + qAbs(a.alpha() - b.alpha())
                > 48)
                ++count;
        }
    }
    return count;
}

int visiblePixels(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y).alpha() > 64 ? 1 : 0;
    }
    return count;
}

bool contains(const QImage &image, const QColor &color)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == color)
                return true;
        }
    }
    return false;
}

const QColor accent(0x15, 0xcf, 0xbb);

// The fonts of the window; present when the build found them.
const QStringList kumbhSansNames = {QStringLiteral("KumbhSans-Bold.ttf"), QStringLiteral("KumbhSans-Medium.ttf"),
                                    QStringLiteral("KumbhSans-Regular.ttf"), QStringLiteral("KumbhSans-SemiBold.ttf")};
const QStringList latoNames = {QStringLiteral("Lato-Bold.ttf"), QStringLiteral("Lato-Regular.ttf")};

QStringList expectedFonts()
{
    QStringList names;
#ifdef VEXA_HAS_KUMBH_SANS
    names += kumbhSansNames;
#endif
#ifdef VEXA_HAS_LATO
    names += latoNames;
#endif
    return names;
}

} // namespace

class TestResources final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase() { initVexaResources(); }

    void pictureIsThere_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QSize>("size");
        for (const Picture &picture : pictures)
            QTest::newRow(picture.name) << pathOf(picture.name) << picture.size;
    }

    void pictureIsThere()
    {
        QFETCH(QString, path);
        QFETCH(QSize, size);
        QImageReader reader(path);
        QImageReader doubleReader(doubleOf(path));
        // The name says what the file is.
        reader.setDecideFormatFromContent(false);
        doubleReader.setDecideFormatFromContent(false);
        const QImage image = reader.read();
        QVERIFY2(!image.isNull(), qPrintable(path + QLatin1String(": ") + reader.errorString()));
        QCOMPARE(image.size(), size);
        const QImage twice = doubleReader.read();
        QVERIFY2(!twice.isNull(), qPrintable(doubleOf(path) + QLatin1String(": ") + doubleReader.errorString()));
        QCOMPARE(twice.size(), size * 2);
        QVERIFY(visiblePixels(image) >= 10);

        // The same picture: one is about the other, made smaller.
        const QImage smaller = twice.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY2(differingPixels(image, smaller) <= size.width() * size.height() / 8,
                 qPrintable(QString::number(differingPixels(image, smaller))));
    }

    void drawingIsThere_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QSize>("size");
        for (const Picture &drawing : drawings)
            QTest::newRow(drawing.name) << pathOf(drawing.name) << drawing.size;
    }

    void drawingIsThere()
    {
        QFETCH(QString, path);
        QFETCH(QSize, size);
        QSvgRenderer renderer(path);
        QVERIFY(renderer.isValid());
        QCOMPARE(renderer.defaultSize(), size);
        for (const int zoom : {1, 3}) {
            QImage image(size * zoom, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            QPainter painter(&image);
            renderer.render(&painter);
            painter.end();
            QVERIFY(visiblePixels(image) > image.width() * image.height() / 4);
            QVERIFY(visiblePixels(image) < image.width() * image.height()); // corners are round
            QVERIFY(contains(image, accent));
        }
        // As a label or an icon loads it.
        QCOMPARE(QImage(path).size(), size);
    }

    void pathWithoutTheFirstSlashWorks()
    {
        QCOMPARE(QImage(QStringLiteral(":images/Tessaly-VEXA-new-logo.svg")).size(), QSize(200, 50));
    }

    void nothingElseIsInTheFolder()
    {
        QStringList expected;
        for (const Picture &picture : pictures) {
            const QString name = QLatin1String(picture.name);
            expected << name << doubleOf(name);
        }
        for (const Picture &drawing : drawings)
            expected << QLatin1String(drawing.name);
        expected.sort();
        QStringList found = QDir(QStringLiteral(":/images")).entryList(QDir::Files);
        found.sort();
        QCOMPARE(found, expected);
    }

    void statesLookDifferent_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("other");
        for (const State &state : states)
            QTest::addRow("%s, %s", state.name, state.other) << pathOf(state.name) << pathOf(state.other);
    }

    void statesLookDifferent()
    {
        QFETCH(QString, path);
        QFETCH(QString, other);
        const QImage one(path);
        const QImage two(other);
        QVERIFY(!one.isNull());
        QCOMPARE(one.size(), two.size());
        QVERIFY(differingPixels(one, two) >= 12);

        const QImage oneTwice(doubleOf(path));
        const QImage twoTwice(doubleOf(other));
        QVERIFY(!oneTwice.isNull());
        QCOMPARE(oneTwice.size(), twoTwice.size());
        QVERIFY(differingPixels(oneTwice, twoTwice) >= 48);
    }

    void markedStatesUseTheAccent_data()
    {
        QTest::addColumn<QString>("path");
        for (const char *name : {"refresh-hover.png", "enlarge-table-hover.png", "reduce-table-hover.png",
                                 "revision-mode-hover.png", "save-vexa-file-hover.png", "smooth-graph-ON.png",
                                 "raw-graph-ON.png", "selected.png", "minimiseB-hover.png", "Vexa_splash-screen.png"})
            QTest::newRow(name) << pathOf(name);
    }

    void markedStatesUseTheAccent()
    {
        QFETCH(QString, path);
        QVERIFY(contains(QImage(path), accent));
    }

    // What lies on the accent-coloured title bar must stand out from it.
    void titleBarPicturesAreDark_data()
    {
        QTest::addColumn<QString>("path");
        for (const char *name : {"NDI-logo.png", "minimiseB.png", "smaller-window.png", "restore-window.png",
                                 "quit-vexa.png", "quit-vexa-hover.png", "quit-vexa-gray.png"})
            QTest::newRow(name) << pathOf(name);
    }

    void titleBarPicturesAreDark()
    {
        QFETCH(QString, path);
        QVERIFY(contains(QImage(path), QColor(0x10, 0x10, 0x10)));
    }

    void fontsAreThoseThatTheBuildFound()
    {
        QStringList found = QDir(QStringLiteral(":/font")).entryList(QDir::Files);
        found.sort();
        QCOMPARE(found, expectedFonts());
    }

    void fontGivesItsFamily_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("family");
        QTest::newRow("a font that is not there") << QStringLiteral(":/font/None.ttf") << QString();
        for (const QString &name : expectedFonts()) {
            const bool isLato = name.startsWith(QLatin1String("Lato"));
            QTest::newRow(qPrintable(name)) << QString(QLatin1String(":/font/") + name)
                                            << (isLato ? QStringLiteral("Lato") : QStringLiteral("Kumbh Sans"));
        }
    }

    void fontGivesItsFamily()
    {
        QFETCH(QString, path);
        QFETCH(QString, family);
        const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(path));
        QString first = families.value(0);
        // Windows gives weights besides regular and bold a name of their own.
        first.remove(QLatin1String(" Medium")).remove(QLatin1String(" SemiBold"));
        QCOMPARE(first, family);
    }

    void fontsAreCounted()
    {
        const QStringList expected = expectedFonts().filter(QRegularExpression(QStringLiteral("^KumbhSans")));
        QCOMPARE(loadFonts(), expected.size());
    }

    void weightsOfTheWindowsFontDiffer()
    {
        if (!expectedFonts().contains(kumbhSansNames.first()))
            QSKIP("the build found no Kumbh Sans");
        loadFonts();
        QVector<int> widths;
        for (const int weight : {QFont::Normal, QFont::Medium, QFont::DemiBold, QFont::Bold})
            widths.append(QFontMetrics(QFont(QStringLiteral("Kumbh Sans"), 60, weight))
                              .horizontalAdvance(QStringLiteral("RECEIVER")));
        QCOMPARE(std::set<int>(widths.cbegin(), widths.cend()).size(), std::size_t(4));
    }

    void noFontFolderIsHarmless() { QCOMPARE(loadFonts(QStringLiteral(":/there-is-none")), 0); }

    void unreadableFontsArePassedOver()
    {
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        for (const QString &name : {QStringLiteral("KumbhSans-Empty.ttf"), QStringLiteral("KumbhSans-Broken.ttf")}) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            if (name.contains(QLatin1String("Broken")))
                file.write("not a font");
        }
        QCOMPARE(loadFonts(folder.path()), 0);
    }
};

QTEST_MAIN(TestResources)
#include "tst_resources.moc"
