#include "app/recordfile.h"

#include "app/lockedfile.h"
#include "ndi/measurementsink.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QStringBuilder>
#include <QThread>

#include <utility>

namespace {

constexpr int chunkBytes = 1 << 16; // of one reading or writing
constexpr int mostNumber = 999;     // after the name of a record
constexpr int lockWaitMs = 3000;
constexpr int lockPollMs = 10;
constexpr int nameWaitMs = 30000;
const QLatin1String recordSuffix(".csv");

QString &currentRecordPath()
{
    static QString path;
    return path;
}

QString rateText(double framesPerSecond)
{
    return QString::number(framesPerSecond, 'g', 6);
}

/// Collects text into large writes and remembers whether one of them failed.
class RecordWriter final {
public:
    explicit RecordWriter(QFile *file) : m_file(file) { m_chunk.reserve(chunkBytes + 4096); }

    void addLine(const QString &text)
    {
        m_chunk += text.toUtf8();
        m_chunk += '\n';
        if (m_chunk.size() >= chunkBytes)
            writeOut();
    }
    /// All rows, with a line feed after each; a single line feed when there is none.
    void addRows(const NextRow &nextRow)
    {
        QString row;
        const bool hasRows = nextRow(&row);
        addLine(row);
        while (hasRows && m_good && nextRow(&row))
            addLine(row);
    }

    /// Brings everything to the disk.
    bool finish()
    {
        writeOut();
        return m_good && syncFile(m_file);
    }

private:
    void writeOut()
    {
        m_good = m_good && m_file->write(m_chunk) == m_chunk.size();
        m_chunk.resize(0); // keeps the memory
    }

    QFile *m_file;
    QByteArray m_chunk;
    bool m_good = true;
};

bool haveSameBytes(const QString &onePath, const QString &otherPath)
{
    QFile one(onePath);
    QFile other(otherPath);
    if (!one.open(QIODevice::ReadOnly) || !other.open(QIODevice::ReadOnly) || one.size() != other.size())
        return false;
    while (!one.atEnd()) {
        if (one.read(chunkBytes) != other.read(chunkBytes))
            return false;
    }
    return true;
}

/// The lock between processes under which records are made, from its construction on.
class FolderLock final {
public:
    explicit FolderLock(const QString &folder) : m_path(folder + QLatin1String("/.vexa.lock")) { take(); }
    ~FolderLock() { release(); }
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

    /// Waits until all calls together have taken lockWaitMs; what follows is then done without the lock.
    void take()
    {
        while (m_file.openLock(m_path) == LockedFile::Lock::Busy && !m_deadline.hasExpired())
            QThread::msleep(lockPollMs);
    }
    void release() { m_file.close(); }

private:
    const QString m_path;
    const QDeadlineTimer m_deadline{lockWaitMs};
    LockedFile m_file;
};

QString numberedPath(const QString &folder, const QString &name, int number, const QString &suffix)
{
    const QString numbered = number == 1 ? name : QStringLiteral("%1_%2").arg(name).arg(number);
    return folder + QLatin1Char('/') + numbered + suffix;
}

bool isTaken(const QString &path)
{
    const QFileInfo file(path);
    return file.exists() || file.isSymLink();
}

bool createNewFile(const QString &path)
{
    return QFile(path).open(QIODevice::ReadWrite | QIODevice::NewOnly);
}

/// See createRecordFile(), whose lock this is.
bool createLocked(FolderLock *lock, const QString &folder, const QString &name)
{
    static QString ownPath; // the file that this process made last
    QString &path = currentRecordPath();
    path.clear();
    const QDeadlineTimer deadline(nameWaitMs);
    for (int number = 1; number <= mostNumber;) {
        const QDateTime now = QDateTime::currentDateTime();
        const QString newPath = numberedPath(folder, name.isEmpty() ? recordName(now) : name, number, recordSuffix);
        if (!name.isEmpty() || newPath == ownPath)
            QFile::remove(newPath);
        if (createNewFile(newPath)) {
            path = newPath;
            ownPath = newPath;
            return true;
        }
        if (!name.isEmpty() || !isTaken(newPath))
            return false;
        if (deadline.hasExpired()) {
            ++number;
            continue;
        }
        lock->release();
        QThread::msleep(1000 - static_cast<unsigned long>(now.time().msec()));
        lock->take();
    }
    return false;
}

/// Appends what write() adds to the current record.
template <typename Write>
bool appendToRecord(Write write)
{
    const QString path = recordPath();
    QFile file(path);
    // Opening to append would make a file that somebody took away meanwhile, without its header.
    if (path.isEmpty() || !file.exists() || !file.open(QIODevice::Append | QIODevice::Unbuffered))
        return false;
    RecordWriter writer(&file);
    write(&writer);
    const bool isWritten = writer.finish();
    file.close();
    return isWritten && file.error() == QFileDevice::NoError;
}

/// Bytes up to the end of the last whole line; 0 when there is none.
qint64 bytesOfWholeLines(QFile *file)
{
    for (qint64 end = file->size(); end > 0;) {
        const qint64 begin = qMax<qint64>(0, end - chunkBytes);
        if (!file->seek(begin))
            return 0;
        const int lineFeed = file->read(end - begin).lastIndexOf('\n');
        if (lineFeed >= 0)
            return begin + lineFeed + 1;
        end = begin;
    }
    return 0;
}

} // namespace

QString recordHeader()
{
    return QStringLiteral("NDI Source Name, Frame Width, Frame Height, Default FPS, Time(ms), Receiver Index, "
                          "Received FPS, Received Frame Length");
}

QString recordRow(const QString &sourceName, int width, int height, double defaultFps, int timeMs, int indexNum,
                  double fps, int intervalMs)
{
    constexpr QLatin1Char comma(',');
    return sourceName % comma % QString::number(width) % comma % QString::number(height) % comma % rateText(defaultFps)
           % comma % QString::number(timeMs) % comma % QString::number(qint64(indexNum) + 1) % comma % rateText(fps)
           % comma % QString::number(intervalMs);
}

QString recordRow(const QString &sourceName, const Measurement &measurement)
{
    return recordRow(sourceName, measurement.width, measurement.height, measurement.defaultFps, measurement.timeMs,
                     measurement.graph, measurement.fps, measurement.intervalMs);
}

QString recordName(const QDateTime &time)
{
    return QLatin1String("vexa_") + QLocale::c().toString(time, QStringLiteral("yyyy_MM_dd_HHmmss"));
}

QString recordFolder()
{
    if (QDir(QDir::homePath()).isRoot()) // what the system says when the user has no home
        return {};
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return documents.isEmpty() ? QString() : documents + QLatin1String("/Tessaly/Vexa");
}

bool createRecordFile(const QString &name)
{
    const QString folder = recordFolder();
    currentRecordPath().clear();
    if (folder.isEmpty())
        return false;
    QDir().mkpath(folder);
    FolderLock lock(folder);
    return createLocked(&lock, folder, name);
}

bool appendRecordText(const QString &text)
{
    return appendToRecord([&text](RecordWriter *writer) { writer->addLine(text); });
}

bool appendRecordRows(const NextRow &nextRow)
{
    return appendToRecord([&nextRow](RecordWriter *writer) { writer->addRows(nextRow); });
}

bool writeRecord(const NextRow &nextRow)
{
    const QString folder = recordFolder();
    currentRecordPath().clear();
    if (folder.isEmpty())
        return false;
    QDir().mkpath(folder);
    FolderLock lock(folder);
    return createLocked(&lock, folder, QString()) && appendToRecord([&nextRow](RecordWriter *writer) {
               writer->addLine(recordHeader());
               writer->addRows(nextRow);
           });
}

void dropUnfinishedRecord(bool areRowsWanted)
{
    const QString path = std::exchange(currentRecordPath(), QString());
    if (path.isEmpty())
        return;
    QFile file(path);
    const bool isOpen = areRowsWanted && file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly);
    const qint64 wholeBytes = isOpen ? bytesOfWholeLines(&file) : 0;
    if (wholeBytes <= recordHeader().size() + 1) {
        file.remove();
        return;
    }
    file.resize(wholeBytes);
    syncFile(&file);
    file.close();
    const QFileInfo info(path);
    const QString partSuffix = recordSuffix + QLatin1String(".part");
    for (int number = 1; number <= mostNumber; ++number) {
        const QString partPath = numberedPath(info.path(), info.completeBaseName(), number, partSuffix);
        if (renameToFreeName(path, partPath) || !isTaken(partPath))
            return;
    }
}

QString writeRecordBeside(const QString &name, const QString &partName, const NextRow &nextRow, bool *wasThere)
{
    *wasThere = false;
    const QString folder = recordFolder();
    if (folder.isEmpty())
        return {};
    QDir().mkpath(folder);
    const QString partPath = folder + QLatin1Char('/') + partName;
    QFile::remove(partPath); // of an earlier attempt
    QFile part(partPath);
    if (!part.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return {};
    RecordWriter writer(&part);
    writer.addLine(recordHeader());
    writer.addRows(nextRow);
    const bool isWritten = writer.finish();
    part.close();
    const FolderLock lock(folder); // so that a record to compare with is complete
    for (int number = 1; isWritten && number <= mostNumber; ++number) {
        QString path = numberedPath(folder, name, number, recordSuffix);
        if (renameToFreeName(partPath, path))
            return path;
        if (!isTaken(path))
            break;
        *wasThere = haveSameBytes(partPath, path);
        if (*wasThere) {
            QFile::remove(partPath);
            return path;
        }
    }
    QFile::remove(partPath);
    return {};
}

QString recordPath()
{
    return currentRecordPath();
}
