#include "app/journal.h"

#include "app/journalqueue.h"

#include <QDir>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QThread>

#include <atomic>
#include <chrono>

namespace {

Q_LOGGING_CATEGORY(journalLog, "vexa.journal", QtInfoMsg)

constexpr std::chrono::milliseconds writeInterval(250);
constexpr std::uint32_t queueRows = 16384;          // half a minute of eight receivers at 60 frames a second
constexpr qint64 mostFileBytes = qint64(512) << 20; // some hundred times what a test of five minutes makes
constexpr int triedNames = 16;

QString newName(const QDateTime &startTime)
{
    static std::atomic<int> number{0};
    return QStringLiteral("%1-%2-%3.journal")
        .arg(startTime.toMSecsSinceEpoch(), 14, 10, QLatin1Char('0'))
        .arg(ownProcess().processId)
        .arg(++number);
}

} // namespace

QString journalFolder()
{
    const QString named = qEnvironmentVariable("VEXA_JOURNAL_FOLDER");
    if (!named.isEmpty())
        return named == QLatin1String("off") ? QString() : named;
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    // A user without a home has this at the root of the file system.
    const bool hasNoHome = QDir::cleanPath(cache) == QLatin1String("/.cache");
    return cache.isEmpty() || hasNoHome ? QString() : cache + QLatin1String("/TessalyNDIVexa/journal");
}

QDateTime journalStartTime(const QString &fileName)
{
    static const QRegularExpression form(QStringLiteral("^([0-9]{14})-[0-9]+-[0-9]+\\.journal$"));
    const QRegularExpressionMatch match = form.match(fileName);
    return match.hasMatch() ? QDateTime::fromMSecsSinceEpoch(match.captured(1).toLongLong()) : QDateTime();
}

Journal::Journal(const QString &folder, const QStringList &names, const QDateTime &startTime)
    : m_folder(folder), m_names(names), m_startTime(startTime), m_queue(std::make_shared<JournalQueue>(queueRows)),
      m_thread(QThread::create([this] { run(); }))
{
    m_thread->setObjectName(QStringLiteral("journal"));
    m_thread->start();
}

Journal::~Journal()
{
    end(End::Keep);
}

std::shared_ptr<MeasurementSink> Journal::sink() const
{
    return m_queue;
}

void Journal::close() noexcept
{
    m_queue->close();
}

void Journal::end(End end)
{
    close();
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        if (m_hasEnded)
            return;
        m_hasEnded = true;
        m_end = end;
    }
    m_wake.notify_one();
    m_thread->wait();
    // What the thread had of its own is this one's now; the lock says so to whoever looks for races, too.
    const std::lock_guard<std::mutex> locker(m_mutex);
    Q_ASSERT(m_isThreadDone);
}

bool Journal::isIncomplete() const noexcept
{
    return m_isBroken || m_queue->lostRows() > 0;
}

void Journal::run()
{
    keepJournal();
    const std::lock_guard<std::mutex> locker(m_mutex);
    m_isThreadDone = true;
}

void Journal::keepJournal()
{
    if (!begin()) {
        qCDebug(journalLog) << "no journal in" << m_folder;
        m_isBroken = true;
        m_file.close();
        close(); // what comes in would only fill the memory
        return;
    }
    for (bool hasEnded = false; !hasEnded;) {
        {
            std::unique_lock<std::mutex> locker(m_mutex);
            hasEnded = m_wake.wait_for(locker, writeInterval, [this] { return m_hasEnded; });
        }
        writeRows();
    }
    // m_end is not changed any more.
    if (m_end == End::Remove || m_rowCount == 0)
        m_file.remove();
    m_file.close();
}

bool Journal::begin()
{
    if (m_folder.isEmpty())
        return false;
    int tries = 0;
    while (!m_file.create(m_folder, newName(m_startTime))) {
        if (++tries == triedNames)
            return false;
    }
    if (m_file.append(m_encoder.start({ownProcess(), m_startTime, m_names})))
        return true;
    m_file.remove();
    return false;
}

void Journal::writeRows()
{
    while (!m_isBroken) {
        m_rows.resize(0); // keeps the memory
        m_queue->take(journalRowsPerBlock, &m_rows);
        if (m_rows.isEmpty())
            return;
        m_encoder.rows(m_rows, m_queue->lostRows(), &m_block);
        if (m_file.sizeBytes() > mostFileBytes || !m_file.append(m_block)) {
            qCDebug(journalLog) << "the journal ends at" << m_rowCount << "rows:" << m_file.path();
            m_isBroken = true;
            close();
            return;
        }
        m_rowCount += m_rows.size();
    }
}
