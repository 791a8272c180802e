#include "mainwindow/sourcecatalog.h"
#include "mainwindow/videoformat.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <array>

class TestSourceCatalog final : public TestBase {
    Q_OBJECT

private slots:
    void keepsItsOwnTexts();
    void nullTextsAreEmpty();
    void aNewListForgetsTheFacts();
    void noListIsEmpty_data();
    void noListIsEmpty();
    void formatNames_data();
    void formatNames();
};

void TestSourceCatalog::keepsItsOwnTexts()
{
    QByteArray name("CAM \xC3\xA9 (\xE4\xB8\xAD)");
    QByteArray url("10.0.0.1:5961");
    NDIlib_source_t source;
    source.p_ndi_name = name.constData();
    source.p_url_address = url.constData();
    SourceCatalog catalog;
    catalog.replace(&source, 1);
    name.fill('x');
    url.fill('x');
    QCOMPARE(catalog.count(), 1);
    QCOMPARE(catalog.name(0), QString::fromUtf8("CAM \xC3\xA9 (\xE4\xB8\xAD)"));
    QCOMPARE(catalog.url(0), QStringLiteral("10.0.0.1:5961"));
    QCOMPARE(catalog.names(), QStringList{catalog.name(0)});
    QCOMPARE(catalog.info(0).width, 0);
    QVERIFY(catalog.contains(0));
    QVERIFY(!catalog.contains(1));
    QVERIFY(!catalog.contains(-1));
}

void TestSourceCatalog::nullTextsAreEmpty()
{
    const NDIlib_source_t source;
    SourceCatalog catalog;
    catalog.replace(&source, 1);
    QCOMPARE(catalog.name(0), QString());
    QCOMPARE(catalog.url(0), QString());
}

void TestSourceCatalog::aNewListForgetsTheFacts()
{
    const std::array<NDIlib_source_t, 2> sources{NDIlib_source_t{"A", "1"}, NDIlib_source_t{"B", "2"}};
    SourceCatalog catalog;
    catalog.replace(sources.data(), 2);
    SourceInfo info = catalog.info(1);
    QCOMPARE(info.index, 1);
    info.width = 1920;
    catalog.setInfo(info);
    QCOMPARE(catalog.info(1).width, 1920);
    QCOMPARE(catalog.info(0).width, 0);
    catalog.replace(sources.data(), 2);
    QCOMPARE(catalog.info(1).width, 0);
}

void TestSourceCatalog::noListIsEmpty_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("null with a count") << 3;
    QTest::newRow("0") << 0;
    QTest::newRow("below 0") << -1;
}

void TestSourceCatalog::noListIsEmpty()
{
    QFETCH(int, count);
    SourceCatalog catalog;
    catalog.replace(nullptr, count);
    QCOMPARE(catalog.count(), 0);
}

void TestSourceCatalog::formatNames_data()
{
    QTest::addColumn<quint32>("fourCC");
    QTest::addColumn<QString>("name");
    for (const char *name : {"UYVY", "UYVA", "P216", "PA16", "YV12", "I420", "NV12", "BGRA", "RGBA"}) {
        const quint32 code = static_cast<quint32>(name[0]) | static_cast<quint32>(name[1]) << 8
                             | static_cast<quint32>(name[2]) << 16 | static_cast<quint32>(name[3]) << 24;
        QTest::newRow(name) << code << QString::fromLatin1(name);
    }
    QTest::newRow("0") << quint32(0) << QString();
    QTest::newRow("BGRX has no name") << quint32('B' | 'G' << 8 | 'R' << 16 | 'X' << 24) << QString();
    QTest::newRow("letters in the other order") << quint32('Y' | 'V' << 8 | 'Y' << 16 | 'U' << 24) << QString();
}

void TestSourceCatalog::formatNames()
{
    QFETCH(quint32, fourCC);
    QTEST(formatName(fourCC), "name");
}

QTEST_GUILESS_MAIN(TestSourceCatalog)
#include "tst_sourcecatalog.moc"
