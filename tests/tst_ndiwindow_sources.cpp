#include "charts/customplot.h"
#include "mainwindow/customheader.h"
#include "resources/vexaresources.h"
#include "tests/support/testhome.h"
#include "tests/support/windowcase.h"

#include <QCheckBox>
#include <QSignalSpy>

namespace {

QVector<NDIlib_source_t> viewsOf(const QVector<QByteArray> &names)
{
    QVector<NDIlib_source_t> views;
    for (const QByteArray &name : names) {
        NDIlib_source_t view;
        view.p_ndi_name = name.constData();
        views.append(view);
    }
    return views;
}

} // namespace

/// What lists of sources, and the sources themselves, can do to the window.
class TestNdiWindowSources final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void namesAreShownAsTheyAre_data();
    void namesAreShownAsTheyAre();
    void longListsAndShortOnes();
    void boxesOfANewList();
    void nullNames();
    void silentSource();
    void listsThatShrinkBetweenTests();
    void listsThatShrinkToNothing();
    void moreSourcesThanColours();
    void aListThatComesWhileClosing();

private:
    TestHome m_home;
};

void TestNdiWindowSources::initTestCase()
{
    initVexaResources();
    QVERIFY(m_home.use());
}

void TestNdiWindowSources::namesAreShownAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("commas and quotes") << QByteArray("A, \"B\" (C,D)");
    QTest::newRow("line feed") << QByteArray("two\nlines");
    QTest::newRow("markup") << QByteArray("<b>bold</b> &amp; <img src=x>");
    QTest::newRow("placeholders") << QByteArray("%1 %2 %s %n");
    QTest::newRow("Chinese and emoji") << QByteArray("\xE6\x9D\xB1\xE4\xBA\xAC (\xF0\x9F\x8E\xA5)");
    QTest::newRow("blanks around") << QByteArray("  blanks  ");
    QTest::newRow("very long") << QByteArray(3000, 'x');
    QTest::newRow("bytes that are no UTF-8") << QByteArray("\xFF\xFE(x)");
}

void TestNdiWindowSources::namesAreShownAsTheyAre()
{
    QFETCH(QByteArray, name);
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    const QSize before = test.window->size();
    const QVector<NDIlib_source_t> views = viewsOf({name});
    test.window->getNDISource(views.constData(), 1);
    const QString text = QString::fromUtf8(name);
    QCOMPARE(test.ui().sourceList->itemText(0), text);
    QCOMPARE(test.ui().sourceTable->item(0, 2)->text(), text);
    QCOMPARE(test.ui().detailTable->item(0, 1)->text(), text);
    QCOMPARE(test.ui().L2->text(), text);
    QCOMPARE(test.ui().L2->textFormat() == Qt::RichText, false);
    test.check(0)->setChecked(true);
    QCOMPARE(test.ui().tblStatus->item(0, 1)->text(), text);
    QCoreApplication::processEvents();
    QCOMPARE(test.window->size(), before); // no name makes the window grow
    test.ndi.setScript(framesWithoutEnd());
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.press();
    QTRY_VERIFY(frames.count() > 2);
    test.press();
    QTRY_VERIFY(test.isIdle());
    QFile record(recordPath());
    QVERIFY(record.open(QIODevice::ReadOnly));
    QVERIFY(QString::fromUtf8(record.readAll()).contains(text + QStringLiteral(",1920,1080,59,")));
    QVERIFY(record.remove());
}

void TestNdiWindowSources::longListsAndShortOnes()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    const QVector<QByteArray> names = namesOf(2000);
    const QVector<NDIlib_source_t> views = viewsOf(names);
    test.window->getNDISource(views.constData(), views.size());
    QCOMPARE(test.ui().sourceList->count(), 2000);
    QCOMPARE(test.ui().sourceTable->item(1999, 2)->text(), QStringLiteral("CAM 2000"));
    auto *header = qobject_cast<CustomHeader *>(test.ui().sourceTable->horizontalHeader());
    header->toggle();
    QCOMPARE(test.ui().tblStatus->rowCount(), 2000);
    QCOMPARE(test.ui().tblStatus->item(1999, 1)->text(), QStringLiteral("CAM 2000"));
    header->toggle();
    QCOMPARE(test.ui().tblStatus->rowCount(), 0);
    test.check(1998)->setChecked(true);
    QCOMPARE(test.ui().tblStatus->rowCount(), 1);

    test.window->getNDISource(views.constData(), 1);
    QCOMPARE(test.ui().sourceList->count(), 1);
    QCOMPARE(test.ui().sourceTable->rowCount(), 1);
    QCOMPARE(test.ui().tblStatus->rowCount(), 0);
}

void TestNdiWindowSources::boxesOfANewList()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    test.ui().multiOption->click();
    QtCustomTableWidget *const table = test.ui().sourceTable;
    QApplication::setActiveWindow(test.window.get());
    table->setFocus();
    QVERIFY(table->hasFocus());
    const QVector<QByteArray> names = namesOf(200);
    const QVector<NDIlib_source_t> views = viewsOf(names);
    for (const int count : {200, 3}) {
        test.window->getNDISource(views.constData(), count);
        QCoreApplication::processEvents();
        QCOMPARE(table->rowCount(), count);
        const QRect cell = table->visualRect(table->model()->index(1, 0));
        QCheckBox *const box = test.check(1);
        QVERIFY(box->isVisible());
        const QRect inTable(box->mapTo(table->viewport(), QPoint(0, 0)), box->size());
        QVERIFY(cell.contains(inTable));
        QVERIFY((inTable.center() - cell.center()).manhattanLength() <= 2);
        QTest::mouseClick(box, Qt::LeftButton);
        QVERIFY(box->isChecked());
        QCOMPARE(test.ui().tblStatus->rowCount(), 1);
        QVERIFY(table->hasFocus());
    }
}

void TestNdiWindowSources::nullNames()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    const NDIlib_source_t nameless;
    test.window->getNDISource(&nameless, 1);
    QCOMPARE(test.ui().sourceList->itemText(0), QString());
    QCOMPARE(test.ui().detailTable->item(0, 2)->text(), QString());
}

void TestNdiWindowSources::silentSource()
{
    WindowCase test(1, 300);
    QVERIFY(test.isReady(1));
    test.ndi.setScript({});
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    const QString before = recordPath();
    test.press();
    QCOMPARE(test.ui().btn_test->text(), QStringLiteral("STOP"));
    QTRY_VERIFY(test.isIdle());
    QCOMPARE(frames.count(), 0);
    QCOMPARE(recordPath(), before); // nothing to record
    QCOMPARE(test.ui().fpsPlot->seriesCount(), 1);
}

void TestNdiWindowSources::listsThatShrinkBetweenTests()
{
    WindowCase test(3);
    QVERIFY(test.isReady(3));
    test.ndi.setScript(framesWithoutEnd());
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.ui().sourceList->setCurrentIndex(2);
    test.press();
    QTRY_VERIFY(frames.count() > 2);
    test.press();
    QTRY_VERIFY(test.isIdle());
    QVERIFY(QFile::remove(recordPath()));

    const QVector<QByteArray> names{QByteArray("ONLY")};
    const QVector<NDIlib_source_t> views = viewsOf(names);
    test.window->getNDISource(views.constData(), 1);
    QCOMPARE(test.ui().sourceList->currentIndex(), 0);
    const int before = frames.count();
    test.press();
    QTRY_VERIFY(frames.count() > before);
    test.press();
    QTRY_VERIFY(test.isIdle());
    QVERIFY(recordLines().at(1).startsWith(QStringLiteral("ONLY,")));
    QVERIFY(QFile::remove(recordPath()));
}

void TestNdiWindowSources::listsThatShrinkToNothing()
{
    WindowCase test(3);
    QVERIFY(test.isReady(3));
    // The runtime spoils the list before with each search; the window tests from its own copies.
    test.ndi.setSourceLists({{}});
    test.ui().btn_refresh->click();
    QTRY_COMPARE(test.ui().label_source->text(), QStringLiteral("NDI SOURCES"));
    QCOMPARE(test.ui().sourceList->count(), 3);
    test.ui().sourceList->setCurrentIndex(1);
    test.ndi.setScript(framesWithoutEnd());
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.press();
    QTRY_VERIFY(frames.count() > 2);
    QCOMPARE(test.ndi.lastSourceName(), QByteArray("CAM 2"));
    test.press();
    QTRY_VERIFY(test.isIdle());
    QVERIFY(recordLines().at(1).startsWith(QStringLiteral("CAM 2,")));
    QVERIFY(QFile::remove(recordPath()));
}

void TestNdiWindowSources::moreSourcesThanColours()
{
    WindowCase test(13);
    QVERIFY(test.isReady(13));
    test.choose(test.ui().multiOption);
    test.ndi.setScript(framesWithoutEnd());
    qobject_cast<CustomHeader *>(test.ui().sourceTable->horizontalHeader())->toggle();
    QSignalSpy frames(test.window.get(), &NDIWindow::frameRender);
    test.press();
    QTRY_VERIFY(test.ui().tblStatus->item(12, 2));
    QCOMPARE(test.ui().fpsPlot->seriesCount(), 13);
    QTRY_VERIFY(test.ui().fpsPlot->plainPoints(12).size() > 2);
    test.press();
    QTRY_VERIFY(test.isIdle());
    QCOMPARE(recordLines().size() - 2, frames.count());
    QVERIFY(QFile::remove(recordPath()));
}

void TestNdiWindowSources::aListThatComesWhileClosing()
{
    WindowCase test(3);
    test.window->requestClose(); // the first search is under way
    QCoreApplication::processEvents();
    QCOMPARE(test.ndi.counts().created, 0); // no format is asked for any more
    QCOMPARE(test.ui().sourceList->count(), 0);
}

QTEST_MAIN(TestNdiWindowSources)
#include "tst_ndiwindow_sources.moc"
