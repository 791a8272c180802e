#include "app/recordfile.h"

#include "app/syncfile.h"
#include "ndi/measurementsink.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QStandardPaths>
#include <QStringBuilder>

namespace {

constexpr int writeChunkBytes = 1 << 20;
constexpr int mostNumber = 999; // after the name of a record

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
    explicit RecordWriter(QFile *file) : m_file(file) { m_chunk.reserve(writeChunkBytes + 4096); }

    void add(const QString &text)
    {
        m_chunk += text.toUtf8();
        if (m_chunk.size() >= writeChunkBytes)
            writeOut();
    }
    void addLineFeed() { m_chunk += '\n'; }

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
        if (one.read(writeChunkBytes) != other.read(writeChunkBytes))
            return false;
    }
    return true;
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
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return documents.isEmpty() ? QString() : documents + QLatin1String("/Tessaly/Vexa");
}

bool createRecordFile(const QString &name)
{
    QString &path = currentRecordPath();
    path.clear();
    const QString folder = recordFolder();
    if (folder.isEmpty())
        return false;
    QString baseName = name;
    if (baseName.isEmpty())
        baseName = recordName(QDateTime::currentDateTime());
    const QString newPath = folder + QLatin1Char('/') + baseName + QLatin1String(".csv");
    QDir().mkpath(folder);
    QFile::remove(newPath);
    QFile file(newPath);
    if (!file.open(QIODevice::ReadWrite))
        return false;
    path = newPath;
    return true;
}

bool appendRecordText(const QString &text)
{
    return appendRecordRows({text});
}

bool appendRecordRows(const QStringList &rows)
{
    const QString path = recordPath();
    QFile file(path);
    // Opening to append would make a file that somebody took away meanwhile, without its header.
    if (path.isEmpty() || !file.exists() || !file.open(QIODevice::Append | QIODevice::Unbuffered))
        return false;
    RecordWriter writer(&file);
    for (int i = 0; i < rows.size(); ++i) {
        if (i > 0)
            writer.addLineFeed();
        writer.add(rows.at(i));
    }
    writer.addLineFeed();
    const bool written = writer.finish();
    file.close();
    return written && file.error() == QFileDevice::NoError;
}

bool writeRecord(const QStringList &rows)
{
    return createRecordFile(QString()) && appendRecordText(recordHeader()) && appendRecordRows(rows);
}

QString writeRecordBeside(const QString &name, const QString &partName, const std::function<bool(QString *)> &nextRow,
                          bool *wasThere)
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
    writer.add(recordHeader());
    writer.addLineFeed();
    for (QString row; nextRow(&row);) {
        writer.add(row);
        writer.addLineFeed();
    }
    const bool isWritten = writer.finish();
    part.close();
    for (int number = 1; isWritten && number <= mostNumber; ++number) {
        const QString numbered = number == 1 ? name : QStringLiteral("%1_%2").arg(name).arg(number);
        QString path = folder + QLatin1Char('/') + numbered + QLatin1String(".csv");
        if (QFile::exists(path)) {
            *wasThere = haveSameBytes(partPath, path);
            if (!*wasThere)
                continue;
            QFile::remove(partPath);
            return path;
        }
        if (QFile::rename(partPath, path))
            return path;
    }
    QFile::remove(partPath);
    return {};
}

QString recordPath()
{
    return currentRecordPath();
}
