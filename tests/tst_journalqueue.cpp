#include "app/journalqueue.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <thread>
#include <vector>

namespace {

Measurement rowOf(int graph, int number)
{
    return {60.0, 60.0, number, 1920, 1080, 16, 0, graph};
}

} // namespace

class TestJournalQueue final : public TestBase {
    Q_OBJECT

private slots:
    void rowsComeOutInTheirOrder();
    void aFullQueueCountsWhatItLoses();
    void whatNoRecordHasIsPassedOver();
    void nothingIsTakenAfterTheEnd();
    void eightThreadsAtOnce_data();
    void eightThreadsAtOnce();
};

void TestJournalQueue::rowsComeOutInTheirOrder()
{
    JournalQueue queue(8);
    QVector<Measurement> rows;
    int next = 0;
    for (int round = 0; round < 100; ++round) { // the ring goes round many times
        for (int i = 0; i < 7; ++i)
            queue.add(rowOf(0, round * 7 + i));
        rows.clear();
        queue.take(5, &rows);
        QCOMPARE(rows.size(), 5);
        queue.take(100, &rows);
        QCOMPARE(rows.size(), 7);
        for (const Measurement &row : qAsConst(rows))
            QCOMPARE(row.timeMs, next++);
    }
    QCOMPARE(queue.lostRows(), 0U);
}

void TestJournalQueue::aFullQueueCountsWhatItLoses()
{
    JournalQueue queue(8);
    for (int i = 0; i < 20; ++i)
        queue.add(rowOf(0, i));
    QCOMPARE(queue.lostRows(), 12U);
    QVector<Measurement> rows;
    queue.take(100, &rows);
    QCOMPARE(rows.size(), 8);
    QCOMPARE(rows.last().timeMs, 7);
    queue.add(rowOf(0, 20));
    rows.clear();
    queue.take(100, &rows);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.last().timeMs, 20);
    QCOMPARE(queue.lostRows(), 12U);
}

void TestJournalQueue::whatNoRecordHasIsPassedOver()
{
    JournalQueue queue(8);
    queue.add({0.0, 0.0, 1, 0, 0, 0, 0, 0});
    queue.add({0.0, 0.0, 2, 0, 1080, 0, 0, 0}); // only both together are no size
    queue.add({0.0, 0.0, 3, 1920, 0, 0, 0, 0});
    QVector<Measurement> rows;
    queue.take(100, &rows);
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.first().timeMs, 2);
}

void TestJournalQueue::nothingIsTakenAfterTheEnd()
{
    JournalQueue queue(8);
    queue.add(rowOf(0, 1));
    queue.close();
    queue.add(rowOf(0, 2));
    QVector<Measurement> rows;
    queue.take(100, &rows);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(queue.lostRows(), 0U);
}

void TestJournalQueue::eightThreadsAtOnce_data()
{
    QTest::addColumn<int>("capacity");
    QTest::newRow("room for all") << (1 << 18);
    QTest::newRow("full now and then") << 64;
}

void TestJournalQueue::eightThreadsAtOnce()
{
    QFETCH(int, capacity);
    constexpr int threads = 8;
    constexpr int each = 20000;
    JournalQueue queue(static_cast<std::uint32_t>(capacity));
    std::atomic<int> running{threads};
    std::vector<std::thread> producers;
    for (int graph = 0; graph < threads; ++graph) {
        producers.emplace_back([&queue, &running, graph] {
            for (int i = 0; i < each; ++i)
                queue.add(rowOf(graph, i));
            --running;
        });
    }
    QVector<Measurement> rows;
    while (running > 0)
        queue.take(1000, &rows);
    for (std::thread &producer : producers)
        producer.join();
    queue.take(threads * each, &rows);
    QCOMPARE(rows.size() + int(queue.lostRows()), threads * each);
    if (capacity >= threads * each)
        QCOMPARE(queue.lostRows(), 0U);
    std::vector<int> last(threads, -1);
    for (const Measurement &row : qAsConst(rows)) {
        QVERIFY(row.timeMs > last[std::size_t(row.graph)]);
        last[std::size_t(row.graph)] = row.timeMs;
    }
}

QTEST_GUILESS_MAIN(TestJournalQueue)
#include "tst_journalqueue.moc"
