#include "app/journalformat.h"
#include "app/recordfile.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <limits>
#include <random>

namespace {

constexpr int startBytes = 52; ///< of the first block

Measurement rowNumber(int number)
{
    return {59.94 + number, 59.0, 16 * number, 1920, 1080, 16 + number % 2, number % 3, number % 8};
}

QVector<Measurement> rowsFrom(int first, int count)
{
    QVector<Measurement> rows;
    for (int i = 0; i < count; ++i)
        rows.append(rowNumber(first + i));
    return rows;
}

QString textOf(const Measurement &row)
{
    return recordRow(QString::number(row.sourceIndex), row);
}

QStringList rowsOf(const QByteArray &bytes)
{
    JournalReader reader(bytes);
    QStringList rows;
    for (Measurement row; reader.nextRow(&row);)
        rows.append(textOf(row));
    return rows;
}

QStringList textsFrom(int first, int count)
{
    QStringList rows;
    for (int i = 0; i < count; ++i)
        rows.append(textOf(rowNumber(first + i)));
    return rows;
}

JournalStart someStart(const QStringList &names)
{
    JournalStart start;
    start.owner = {4711, 0x123456789abcdef0U};
    start.startTime = QDateTime(QDate(2026, 11, 21), QTime(10, 44, 8, 123), Qt::OffsetFromUTC, 5400);
    start.names = names;
    return start;
}

const QStringList threeNames{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")};

/// A journal of these blocks of rows.
QByteArray journal(const QVector<int> &rowsOfBlocks, QVector<int> *blockEnds = nullptr)
{
    JournalEncoder encoder;
    QByteArray bytes = encoder.start(someStart(threeNames));
    int first = 0;
    for (const int count : rowsOfBlocks) {
        QByteArray block;
        encoder.rows(rowsFrom(first, count), 0, &block);
        bytes += block;
        first += count;
        if (blockEnds)
            blockEnds->append(bytes.size());
    }
    return bytes;
}

} // namespace

class TestJournalFormat final : public TestBase {
    Q_OBJECT

private slots:
    void checksum_data();
    void checksum();
    void whatGoesInComesOut();
    void strangeNumbersComeOut();
    void names_data();
    void names();
    void tornAtEveryByte();
    void oneBitFlippedAnywhere();
    void namesOfSources();
    void lostRowsAreTold();
    void aBlockTwiceCountsOnce();
    void anotherVersion();
    void anythingElseIsNoJournal_data();
    void anythingElseIsNoJournal();
    void bytesMadeToCostTime();
};

void TestJournalFormat::checksum_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<quint32>("expected");
    QTest::newRow("nothing") << QByteArray() << quint32(0);
    QTest::newRow("nine digits") << QByteArray("123456789") << quint32(0xe3069283U);
    QTest::newRow("32 zeros") << QByteArray(32, '\0') << quint32(0x8a9136aaU);
    QTest::newRow("32 times all bits") << QByteArray(32, '\xff') << quint32(0x62a8ab43U);
}

void TestJournalFormat::checksum()
{
    QFETCH(QByteArray, bytes);
    QFETCH(quint32, expected);
    QCOMPARE(crc32c(bytes.constData(), std::size_t(bytes.size())), expected);
    const int half = bytes.size() / 2;
    const std::uint32_t first = crc32c(bytes.constData(), std::size_t(half));
    QCOMPARE(crc32c(bytes.constData() + half, std::size_t(bytes.size() - half), first), expected);
}

void TestJournalFormat::whatGoesInComesOut()
{
    const QByteArray bytes = journal({1, journalRowsPerBlock, 7});
    JournalReader reader(bytes);
    QCOMPARE(reader.kind(), JournalReader::Kind::Journal);
    const JournalStart expected = someStart(threeNames);
    QCOMPARE(qint64(reader.start().owner.processId), qint64(expected.owner.processId));
    QCOMPARE(quint64(reader.start().owner.startToken), quint64(expected.owner.startToken));
    QCOMPARE(reader.start().startTime, expected.startTime);
    QCOMPARE(recordName(reader.start().startTime), QStringLiteral("vexa_2026_11_21_104408"));
    QCOMPARE(reader.start().names, threeNames);
    QCOMPARE(reader.rowCount(), qint64(journalRowsPerBlock + 8));
    QCOMPARE(reader.lostRows(), 0U);
    QVERIFY(!reader.isDamaged());
    QCOMPARE(rowsOf(bytes), textsFrom(0, journalRowsPerBlock + 8));
    // 40 bytes for each row, and little more.
    QVERIFY(bytes.size() < (journalRowsPerBlock + 8) * journalRowBytes + 300);
}

void TestJournalFormat::strangeNumbersComeOut()
{
    const Measurement strange{std::numeric_limits<double>::infinity(),
                              -0.0,
                              std::numeric_limits<int>::max(),
                              std::numeric_limits<int>::min(),
                              0,
                              -1,
                              99,
                              std::numeric_limits<int>::max()};
    JournalEncoder encoder;
    QByteArray bytes = encoder.start(someStart(threeNames));
    QByteArray block;
    encoder.rows({strange}, 0, &block);
    QCOMPARE(rowsOf(bytes + block), QStringList(textOf(strange)));
}

void TestJournalFormat::names_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("none") << QStringList();
    QTest::newRow("an empty one") << QStringList(QString());
    QTest::newRow("comma, quotes, line ends") << QStringList{QStringLiteral("a,\"b\"\n\r\tc"), QStringLiteral(",")};
    QTest::newRow("many scripts") << QStringList{QString::fromUtf8("东京カメラ 한국 \xf0\x9f\x8e\xa5"),
                                                 QString::fromUtf8("B\xc3\xbchne (1)")};
    QTest::newRow("long") << QStringList{QString(300, QLatin1Char('x')), QString(20000, QChar(0x6771))};
    QStringList many;
    for (int i = 0; i < 2000; ++i)
        many.append(QStringLiteral("MACHINE-%1 (Camera number %1 of the large studio)").arg(i));
    QTest::newRow("2 000") << many;
}

void TestJournalFormat::names()
{
    QFETCH(QStringList, names);
    JournalEncoder encoder;
    const QByteArray bytes = encoder.start(someStart(names));
    JournalReader reader(bytes);
    QCOMPARE(reader.kind(), JournalReader::Kind::Journal);
    QCOMPARE(reader.start().names, names);
    QVERIFY(!reader.isDamaged());
    for (const int cut : {1, 20, 21, bytes.size() / 2}) {
        const JournalReader torn(bytes.left(bytes.size() - cut));
        const QStringList rest = torn.start().names; // of the blocks before the torn one
        QVERIFY(names.isEmpty() || rest.size() < names.size());
        QCOMPARE(rest, names.mid(0, rest.size()));
        QVERIFY(!torn.isDamaged());
    }
}

void TestJournalFormat::tornAtEveryByte()
{
    QVector<int> ends;
    const QByteArray bytes = journal({3, 2, 4}, &ends);
    const QVector<int> rowsUpTo{0, 3, 5, 9};
    for (int length = 0; length <= bytes.size(); ++length) {
        const QByteArray torn = bytes.left(length);
        const auto blocks = int(std::count_if(ends.cbegin(), ends.cend(), [=](int end) { return end <= length; }));
        QCOMPARE(rowsOf(torn), textsFrom(0, rowsUpTo.at(blocks)));
        JournalReader reader(torn);
        QVERIFY(!reader.isDamaged()); // a torn tail is no gap
        QCOMPARE(reader.kind() == JournalReader::Kind::Journal, length >= startBytes);
    }
}

void TestJournalFormat::oneBitFlippedAnywhere()
{
    QVector<int> ends;
    const QByteArray bytes = journal({3, 2, 4}, &ends);
    const int rowsBegin = ends.at(0) - (20 + 4 + 3 * journalRowBytes);
    for (int at = 0; at < bytes.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray flipped = bytes;
            flipped[at] = char(flipped.at(at) ^ (1 << bit));
            QStringList expected;
            if (at >= ends.at(0) || at < rowsBegin)
                expected += textsFrom(0, 3);
            if (at < ends.at(0) || at >= ends.at(1))
                expected += textsFrom(3, 2);
            if (at < ends.at(1))
                expected += textsFrom(5, 4);
            QCOMPARE(rowsOf(flipped), expected);
            JournalReader reader(flipped);
            // Behind the start, and before the last block, there may have been rows.
            QCOMPARE(reader.isDamaged(), at >= startBytes && at < ends.at(1));
            QCOMPARE(reader.hasStart(), at >= startBytes);
            const bool hasNames = at < startBytes || at >= rowsBegin;
            QCOMPARE(reader.sourceName(1), hasNames ? QStringLiteral("B") : QStringLiteral("Source 2"));
        }
    }
}

void TestJournalFormat::namesOfSources()
{
    JournalEncoder encoder;
    const QByteArray begin = encoder.start(someStart({QStringLiteral("A"), QString(), QStringLiteral("C")}));
    QByteArray rows;
    encoder.rows(rowsFrom(0, 3), 0, &rows);
    const JournalReader whole(begin + rows);
    QCOMPARE(whole.sourceName(0), QStringLiteral("A"));
    QCOMPARE(whole.sourceName(1), QString()); // it has none
    QCOMPARE(whole.sourceName(3), QString()); // there is no such source
    QCOMPARE(whole.sourceName(-1), QString());
    const JournalReader withoutStart(begin.mid(startBytes) + rows);
    QCOMPARE(withoutStart.kind(), JournalReader::Kind::Journal);
    QVERIFY(!withoutStart.isDamaged()); // no rows are missing
    QCOMPARE(withoutStart.sourceName(2), QStringLiteral("C"));
    QCOMPARE(withoutStart.sourceName(3), QStringLiteral("Source 4"));
    const JournalReader rowsAlone(rows);
    QCOMPARE(rowsAlone.kind(), JournalReader::Kind::Journal);
    QCOMPARE(rowsAlone.rowCount(), qint64(3));
    QCOMPARE(rowsAlone.sourceName(2), QStringLiteral("Source 3"));
    const JournalReader startAndRows(begin.left(startBytes) + rows);
    QCOMPARE(startAndRows.sourceName(2), QStringLiteral("Source 3"));
    QCOMPARE(startAndRows.sourceName(3), QString());
}

void TestJournalFormat::lostRowsAreTold()
{
    JournalEncoder encoder;
    QByteArray bytes = encoder.start(someStart(threeNames));
    QByteArray block;
    encoder.rows(rowsFrom(0, 2), 5, &block);
    bytes += block;
    encoder.rows(rowsFrom(2, 2), 17, &block);
    bytes += block;
    JournalReader reader(bytes);
    QCOMPARE(reader.lostRows(), 17U);
    QCOMPARE(reader.rowCount(), qint64(4));
}

void TestJournalFormat::aBlockTwiceCountsOnce()
{
    QVector<int> ends;
    const QByteArray bytes = journal({3, 2}, &ends);
    const QByteArray last = bytes.mid(ends.at(0));
    QCOMPARE(rowsOf(bytes + last + last), textsFrom(0, 5));
}

void TestJournalFormat::anotherVersion()
{
    QByteArray bytes = journal({3});
    bytes[4] = 2;
    const std::uint32_t crc = crc32c(bytes.constData() + 20, startBytes - 20, crc32c(bytes.constData(), 16));
    for (int i = 0; i < 4; ++i)
        bytes[16 + i] = char(crc >> (8 * i));
    JournalReader reader(bytes);
    QCOMPARE(reader.kind(), JournalReader::Kind::OtherVersion);
    QCOMPARE(reader.rowCount(), qint64(0));
}

void TestJournalFormat::anythingElseIsNoJournal_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("a text") << QByteArray("Camera,1920,1080\n").repeated(100);
    QTest::newRow("zeros") << QByteArray(5000, '\0');
    QTest::newRow("only the mark") << QByteArray("VXJB");
    QTest::newRow("a head without its checksum") << journal({}).left(20) + QByteArray(100, '\0');
}

void TestJournalFormat::anythingElseIsNoJournal()
{
    QFETCH(QByteArray, bytes);
    JournalReader reader(bytes);
    QCOMPARE(reader.kind(), JournalReader::Kind::Unknown);
    Measurement row;
    QVERIFY(!reader.nextRow(&row));
}

void TestJournalFormat::bytesMadeToCostTime()
{
    // Heads that all claim the largest block.
    QByteArray head("VXJB\1\0\3\0\0\0\4\0", 12);
    head += QByteArray(8, '\1');
    const QByteArray bytes = head.repeated(1 << 20);
    QElapsedTimer clock;
    clock.start();
    JournalReader reader(bytes);
    QCOMPARE(reader.kind(), JournalReader::Kind::Unknown);
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed()))); // unbounded: an hour
}

QTEST_GUILESS_MAIN(TestJournalFormat)
#include "tst_journalformat.moc"
