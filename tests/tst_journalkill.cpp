#include "app/journalrecovery.h"
#include "app/recordfile.h"
#include "ndi/measurementsink.h"
#include "tests/support/killedtest.h"
#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/testhome.h"
#include "tests/support/testrecord.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTimer>
#include <QtTest>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int receiverCount = 8;
constexpr int mostLostMs = 1000;

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

constexpr int beginsOf = 8; ///< one of so many is killed at a time after its start, not after its test's beginning

/// The driver, and when it is killed.
struct Victim {
    QProcess process;
    QTimer timer;
    QString truthPath;
    qint64 processId = 0;
    int killMs = 0;
};

/// What it had handed over to the journal, by receiver.
std::vector<std::vector<Measurement>> handedOver(const QString &truthPath)
{
    std::vector<std::vector<Measurement>> rows(receiverCount);
    const QByteArray bytes = contents(truthPath);
    for (int at = 0; at + int(sizeof(Measurement)) <= bytes.size(); at += int(sizeof(Measurement))) {
        Measurement row;
        std::memcpy(&row, bytes.constData() + at, sizeof row);
        rows[std::size_t(row.graph)].push_back(row);
    }
    return rows;
}

QByteArray lineOf(const Measurement &row)
{
    const QString name = row.sourceIndex == 0 ? QStringLiteral("KILLED, 1") : QString::fromUtf8("B\xc3\xbchne");
    return recordRow(name, row).toUtf8();
}

} // namespace

/// Processes killed in the middle of a test, and the next start.
class TestJournalKill final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void killedAtRandomMoments();
    void theConsoleProgramKilled();

private:
    void startVictim();
    void examine(Victim *victim);
    QString problemWith(const Victim &victim, const QVector<RecoveredJournal> &recovered);

    TestHome m_home;
    QStringList m_made;
    std::mt19937 m_random{20261121};
    std::vector<std::unique_ptr<Victim>> m_victims;
    QVector<RecoveredJournal> m_recovered; // and not looked at yet
    int m_started = 0;
    int m_examined = 0;
    int m_withRecord = 0;
    int m_mostLostMs = 0;
    QStringList m_problems;
};

void TestJournalKill::initTestCase()
{
    QVERIFY(m_home.use());
    // One folder for all, so that every recovery has living neighbours.
    qputenv("VEXA_JOURNAL_FOLDER", m_home.filePath(QStringLiteral("journal")).toUtf8());
}

void TestJournalKill::cleanupTestCase()
{
    for (const QString &path : qAsConst(m_made))
        QFile::remove(path);
}

void TestJournalKill::startVictim()
{
    auto owned = std::make_unique<Victim>();
    Victim *const victim = owned.get();
    m_victims.push_back(std::move(owned));
    const bool fromItsStart = m_started % beginsOf == 0;
    victim->truthPath = m_home.filePath(QStringLiteral("truth%1").arg(m_started++));
    victim->killMs = std::uniform_int_distribution<int>(0, 2000)(m_random);
    connect(&victim->process, &QProcess::started, this, [victim, fromItsStart] {
        victim->processId = victim->process.processId();
        if (fromItsStart)
            victim->timer.start(victim->killMs);
    });
    connect(&victim->process, &QProcess::readyReadStandardOutput, this, [victim, fromItsStart] {
        if (!fromItsStart)
            victim->timer.start(victim->killMs);
    });
    victim->timer.setSingleShot(true);
    victim->timer.setTimerType(Qt::PreciseTimer);
    connect(&victim->timer, &QTimer::timeout, &victim->process, &QProcess::kill);
    connect(&victim->process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this, victim] { examine(victim); });
    victim->process.start(QFileInfo(QStringLiteral(VEXA_JOURNAL_DRIVER)).absoluteFilePath(), {victim->truthPath});
}

void TestJournalKill::examine(Victim *victim)
{
    const QVector<RecoveredJournal> recovered = recoverJournalsIn(m_home.filePath(QStringLiteral("journal")));
    for (const RecoveredJournal &journal : recovered)
        m_made.append(journal.recordPath);
    // Two may have been killed at about the same time.
    m_recovered += recovered;
    QVector<RecoveredJournal> own;
    const QString mark = QStringLiteral("-%1-").arg(victim->processId);
    for (int i = m_recovered.size() - 1; i >= 0; --i) {
        if (m_recovered.at(i).journalPath.contains(mark))
            own.append(m_recovered.takeAt(i));
    }
    const QString problem = problemWith(*victim, own);
    if (!problem.isEmpty())
        m_problems.append(QStringLiteral("killed after %1 ms: %2").arg(victim->killMs).arg(problem));
    QFile::remove(victim->truthPath);
    ++m_examined;
}

QString TestJournalKill::problemWith(const Victim &victim, const QVector<RecoveredJournal> &recovered)
{
    const std::vector<std::vector<Measurement>> truth = handedOver(victim.truthPath);
    int lastMs = 0;
    for (const std::vector<Measurement> &rows : truth)
        lastMs = qMax(lastMs, rows.empty() ? 0 : rows.back().timeMs);
    if (recovered.isEmpty())
        return lastMs <= mostLostMs ? QString() : QStringLiteral("nothing recovered of %1 ms").arg(lastMs);
    ++m_withRecord;
    const RecoveredJournal &journal = recovered.first();
    if (recovered.size() != 1 || journal.recordPath.isEmpty() || journal.hasGaps)
        return QStringLiteral("%1 journals, first %2").arg(recovered.size()).arg(journal.journalPath);
    QByteArrayList lines = contents(journal.recordPath).split('\n');
    if (lines.takeFirst() != recordHeader().toUtf8() || lines.takeLast() != QByteArray())
        return QStringLiteral("not a record: ") + journal.recordPath;
    std::vector<std::size_t> found(receiverCount, 0);
    for (const QByteArray &line : qAsConst(lines)) {
        const int graph = line.split(',').rbegin()[2].toInt() - 1;
        if (graph < 0 || graph >= receiverCount)
            return QStringLiteral("a row of no receiver: ") + QString::fromUtf8(line);
        const std::vector<Measurement> &rows = truth[std::size_t(graph)];
        const std::size_t number = found[std::size_t(graph)]++;
        if (number > rows.size()) // one may have been handed over without a word of it
            return QStringLiteral("more rows than there were");
        if (number < rows.size() && line != lineOf(rows[number]))
            return QStringLiteral("%1 in place of %2")
                .arg(QString::fromUtf8(line), QString::fromUtf8(lineOf(rows[number])));
    }
    for (std::size_t graph = 0; graph < receiverCount; ++graph) {
        if (found[graph] < truth[graph].size()) {
            const int lostMs = lastMs - truth[graph][found[graph]].timeMs;
            m_mostLostMs = qMax(m_mostLostMs, lostMs);
            if (lostMs > mostLostMs)
                return QStringLiteral("the last %1 ms of receiver %2 are lost").arg(lostMs).arg(graph);
        }
    }
    return {};
}

void TestJournalKill::killedAtRandomMoments()
{
#if defined(Q_OS_WIN) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) // processes start slowly
    constexpr int moments = 16;
    constexpr int atTheSameTime = 4;
#else
    constexpr int moments = 100;
    constexpr int atTheSameTime = 10;
#endif
    QElapsedTimer clock;
    clock.start();
    while (m_examined < moments) {
        while (m_started < moments && m_started - m_examined < atTheSameTime)
            startVictim();
        const int examined = m_examined;
        QTRY_VERIFY_WITH_TIMEOUT(m_examined > examined, 30000);
    }
    qInfo("%d killed, %d with rows, at most the last %d ms lost, %lld ms", m_examined, m_withRecord, m_mostLostMs,
          clock.elapsed());
    QVERIFY2(m_problems.isEmpty(), qPrintable(m_problems.join(QLatin1Char('\n'))));
    QVERIFY(m_withRecord > moments / 2); // those who lived longer than a moment
    QVERIFY(m_recovered.isEmpty());      // each belonged to one that was killed
    QVERIFY(recoverJournals().isEmpty());
}

void TestJournalKill::theConsoleProgramKilled()
{
    constexpr int kills = 3;
    std::vector<std::unique_ptr<ProgramRun>> runs;
    for (int i = 0; i < kills; ++i) {
        runs.push_back(
            std::make_unique<ProgramRun>(QStringList{QStringLiteral("-test"), QStringLiteral("LOOPBACK (720p50)"),
                                                     QStringLiteral("-receivers"), QString::number(receiverCount)}));
        runs.back()->keepTruth();
        runs.back()->start();
    }
    for (int i = 0; i < kills; ++i) {
        ProgramRun &run = *runs[std::size_t(i)];
        QVERIFY2(run.waitForDots(300 + 170 * i), run.account());
        run.process().kill();
        QVERIFY2(run.waitForFinished(), run.account());

        // The next start, in the same home.
        QByteArray said;
        const QString path = run.recoverRecord(&said);
        m_made.append(path);
        const TestRecord record = TestRecord::read(path);
        QVERIFY2(said.contains(".csv), " + QByteArray::number(record.rows.size()) + " rows.\n"), said);
        QCOMPARE(run.journals(), QStringList());

        QCOMPARE(problemOfKilledTest(record, run.truthPath(), receiverCount), QString());

        QCOMPARE(run.recoverRecord(), QString()); // once
    }
}

QTEST_GUILESS_MAIN(TestJournalKill)
#include "tst_journalkill.moc"
