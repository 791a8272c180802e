#include "ndi/sourcefinder.h"
#include "tests/support/fakendi.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QMessageBox>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <cstdint>
#include <vector>

Q_DECLARE_METATYPE(NDIlib_source_t)

class TestSourceFinder final : public TestBase {
    Q_OBJECT

private slots:
    void endComesBeforeTheList();
    void nothingWithinTheWait();
    void aChangeToAnEmptyListIsZeroSources();
    void listsStayReadableUntilTheNextButOne();
    void oneFinderForEverySearch();
    void noFinderIsTold();
    void listCrossesToTheWindowsThread();
    void countThatCannotBeTrueIsCut_data();
    void countThatCannotBeTrueIsCut();
    void everySourceOfALongListIsKept();
};

void TestSourceFinder::endComesBeforeTheList()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"A (1)", "B (2)"}});
    SourceFinder finder;
    QStringList order;
    connect(&finder, &SourceFinder::finished, this, [&] { order.append(QStringLiteral("finished")); });
    connect(&finder, &SourceFinder::didFindNIDSources, this, [&](const NDIlib_source_t *sources, int no) {
        order.append(QString::number(no));
        for (int i = 0; i < no; ++i)
            order.append(QString::fromUtf8(sources[i].p_ndi_name));
    });
    finder.start();
    QCOMPARE(order, (QStringList{QStringLiteral("finished"), QStringLiteral("2"), QStringLiteral("A (1)"),
                                 QStringLiteral("B (2)")}));
}

void TestSourceFinder::nothingWithinTheWait()
{
    FakeNdi ndi;
    SourceFinder finder;
    QStringList order;
    connect(&finder, &SourceFinder::finished, this, [&] { order.append(QStringLiteral("finished")); });
    connect(&finder, &SourceFinder::didFindNIDSources, this, [&](const NDIlib_source_t *sources, int no) {
        QVERIFY(!sources);
        order.append(QString::number(no));
    });
    finder.start();
    QCOMPARE(order, (QStringList{QStringLiteral("finished"), QStringLiteral("10001")}));
}

void TestSourceFinder::aChangeToAnEmptyListIsZeroSources()
{
    FakeNdi ndi;
    ndi.setSourceLists({{}});
    SourceFinder finder;
    QSignalSpy lists(&finder, &SourceFinder::didFindNIDSources);
    finder.start();
    QCOMPARE(lists.count(), 1);
    QCOMPARE(lists.first().at(1).toInt(), 0);
}

void TestSourceFinder::listsStayReadableUntilTheNextButOne()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"FIRST"}, {"SECOND"}});
    SourceFinder finder;
    QVector<const NDIlib_source_t *> lists;
    connect(&finder, &SourceFinder::didFindNIDSources, this,
            [&](const NDIlib_source_t *sources, int) { lists.append(sources); });
    finder.start();
    finder.start();
    QCOMPARE(lists.size(), 2);
    QCOMPARE(QByteArray(lists.at(0)->p_ndi_name), QByteArray("FIRST"));
    QCOMPARE(QByteArray(lists.at(1)->p_ndi_name), QByteArray("SECOND"));
}

void TestSourceFinder::oneFinderForEverySearch()
{
    FakeNdi ndi;
    {
        SourceFinder finder;
        finder.start();
        finder.start();
        QCOMPARE(ndi.counts().findersCreated, 1);
        QCOMPARE(ndi.counts().waits, 2);
        QCOMPARE(ndi.counts().findersDestroyed, 0);
    }
    QCOMPARE(ndi.counts().findersDestroyed, 1);
}

void TestSourceFinder::noFinderIsTold()
{
    FakeNdi ndi;
    ndi.setFinderFails(true);
    expectWarning(QStringLiteral("propagateSizeHints")); // of the offscreen platform
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    QTimer::singleShot(0, this, [&] {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        title = box->windowTitle();
        text = box->text();
        buttons = box->standardButtons();
        box->accept();
    });
    {
        SourceFinder finder;
        QCOMPARE(title, QStringLiteral("Error"));
        QCOMPARE(text, QStringLiteral("Can not create NDI finder"));
        QCOMPARE(buttons, QMessageBox::StandardButtons(QMessageBox::Ok));

        QSignalSpy ends(&finder, &SourceFinder::finished);
        QSignalSpy lists(&finder, &SourceFinder::didFindNIDSources);
        finder.start();
        QCOMPARE(ends.count(), 1);
        QCOMPARE(lists.count(), 1);
        QCOMPARE(lists.first().at(1).toInt(), 10000);
    }
    QCOMPARE(ndi.counts().waits, 0);
    QCOMPARE(ndi.counts().findersDestroyed, 0);
    QCOMPARE(ndi.counts().misuses, 0);
}

void TestSourceFinder::listCrossesToTheWindowsThread()
{
    FakeNdi ndi;
    ndi.setSourceLists({{"A", "B", "C"}});
    QThread thread;
    SourceFinder finder;
    int arrived = -1;
    connect(&thread, &QThread::started, &finder, &SourceFinder::start);
    connect(&finder, &SourceFinder::finished, &thread, &QThread::quit);
    connect(&finder, &SourceFinder::didFindNIDSources, this, [&](const NDIlib_source_t *sources, int no) {
        QCOMPARE(QByteArray(sources[2].p_ndi_name), QByteArray("C"));
        arrived = no;
    });
    finder.moveToThread(&thread);
    thread.start();
    QTRY_COMPARE(arrived, 3);
    QTRY_VERIFY(thread.isFinished());
}

/// What comes behind the two sources of a list that is said to be longer.
void TestSourceFinder::countThatCannotBeTrueIsCut_data()
{
    const auto address = [](std::uintptr_t number) { return reinterpret_cast<const char *>(number); };
    QTest::addColumn<NDIlib_source_t>("next");
    NDIlib_source_t next;
    QTest::newRow("an entry without a name") << next;
    next.p_ndi_name = address(1);
    QTest::newRow("a name at no address") << next;
    next.p_ndi_name = address(~std::uintptr_t(0) - 100);
    QTest::newRow("a name at the end of all addresses") << next;
    next.p_ndi_name = "THREE";
    next.p_url_address = address(4096);
    QTest::newRow("an address at no address") << next;
}

void TestSourceFinder::countThatCannotBeTrueIsCut()
{
    QFETCH(NDIlib_source_t, next);
    std::vector<NDIlib_source_t> sources(3);
    sources[0].p_ndi_name = "ONE";
    sources[0].p_url_address = "127.0.0.1:5961";
    sources[1].p_ndi_name = "TWO";
    sources[2] = next;
    for (const std::uint32_t count : {100001U, 4294967295U}) {
        expectWarning(QStringLiteral("The NDI runtime reports %1 sources; only").arg(count));
        const SourceList list(sources.data(), count);
        QCOMPARE(list.count(), 2);
        QCOMPARE(list.at(0).url(), QByteArray("127.0.0.1:5961"));
        QCOMPARE(list.at(1).name(), QByteArray("TWO"));
    }
    QCOMPARE(SourceList(nullptr, 4294967295U).count(), 0);
}

void TestSourceFinder::everySourceOfALongListIsKept()
{
#ifdef Q_OS_WIN
    QSKIP("Wine takes ten seconds to read so many names safely");
#endif
    NDIlib_source_t source;
    source.p_ndi_name = "WALL";
    const std::vector<NDIlib_source_t> sources(120000, source);
    QCOMPARE(SourceList(sources.data(), 100000).count(), 100000);
    expectWarning(QStringLiteral("The NDI runtime reports 120000 sources; only"));
    QCOMPARE(SourceList(sources.data(), 120000).count(), 100000);
}

QTEST_MAIN(TestSourceFinder)
#include "tst_sourcefinder.moc"
