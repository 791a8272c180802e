#include "ndi/ndimetatypes.h"
#include "tests/support/testbase.h"

#include <QSignalSpy>
#include <QThread>
#include <QtTest>

namespace {

class Sender final : public QObject {
    Q_OBJECT

signals:
    void list(const NDIlib_source_t *sources, int no);
    void pixels(int type, uint8_t *pData);
};

} // namespace

class TestNdiMetaTypes final : public TestBase {
    Q_OBJECT

private slots:
    void namesAreKnown();
    void pointersCrossThreads();
};

void TestNdiMetaTypes::namesAreKnown()
{
    registerNdiMetaTypes();
    QVERIFY(QMetaType::type("const NDIlib_source_t*") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("uint8_t*") != QMetaType::UnknownType);
}

void TestNdiMetaTypes::pointersCrossThreads()
{
    registerNdiMetaTypes();
    const NDIlib_source_t source;
    uint8_t byte = 0;
    const NDIlib_source_t *arrivedSource = nullptr;
    uint8_t *arrivedPixels = nullptr;
    QObject receiver;
    Sender sender;
    connect(&sender, &Sender::list, &receiver, [&](const NDIlib_source_t *sources, int) { arrivedSource = sources; });
    connect(&sender, &Sender::pixels, &receiver, [&](int, uint8_t *data) { arrivedPixels = data; });
    QThread thread;
    sender.moveToThread(&thread);
    connect(&thread, &QThread::started, &sender, [&] {
        emit sender.list(&source, 1);
        emit sender.pixels(0, &byte);
        thread.quit();
    });
    thread.start();
    QTRY_COMPARE(arrivedSource, &source);
    QTRY_COMPARE(arrivedPixels, &byte);
    QVERIFY(thread.wait());
}

QTEST_GUILESS_MAIN(TestNdiMetaTypes)
#include "tst_ndimetatypes.moc"
