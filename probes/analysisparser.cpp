#include "probes/analysisparser.h"

#include <QTextStream>

namespace {

constexpr double bitsPerByte = 8.0;
constexpr int keyLength = 4; // "Avg=", "Min=", "Max="

QString averageKey()
{
    return QStringLiteral("Avg=");
}

/// The number right behind the key's first occurrence, up to the next blank; 0 when it is none.
double valueAfter(const QString &line, const QString &key)
{
    const int begin = line.indexOf(key);
    const int blank = line.indexOf(QLatin1Char(' '), begin);
    return line.mid(begin, blank < 0 ? -1 : blank - begin).mid(keyLength).toDouble();
}

std::optional<AnalysisDataRate> parseDataRate(const QString &line)
{
    const bool isBytes = line.contains(QLatin1String("Video data rate (MBps)"));
    const bool isBits = !isBytes && line.contains(QLatin1String("Video data rate (Mbps)"));
    const int average = line.indexOf(averageKey());
    if ((!isBytes && !isBits) || average < 0)
        return std::nullopt;
    const double rate = line.mid(average + keyLength).trimmed().toDouble();
    const QTime time = analysisTimeStamp(line);
    if (!(rate > 0) || !time.isValid()) // a NaN is not above 0 either
        return std::nullopt;
    return AnalysisDataRate{time, isBits ? rate / bitsPerByte : rate};
}

std::optional<AnalysisReceiveTime> parseReceiveTime(const QString &line)
{
    const QString minimumKey = QStringLiteral("Min=");
    const QString maximumKey = QStringLiteral("Max=");
    if (!line.contains(QLatin1String("Video recv (mS)")) && !line.contains(QLatin1String("Video recv (ms)")))
        return std::nullopt;
    if (!line.contains(averageKey()) || !line.contains(minimumKey) || !line.contains(maximumKey))
        return std::nullopt;
    const QTime time = analysisTimeStamp(line);
    if (!time.isValid())
        return std::nullopt;
    return AnalysisReceiveTime{time, valueAfter(line, minimumKey), valueAfter(line, maximumKey),
                               valueAfter(line, averageKey())};
}

} // namespace

QStringList analysisLines(const QByteArray &output)
{
    QString text = QString::fromUtf8(output);
    QTextStream stream(&text, QIODevice::ReadOnly);
    QStringList lines;
    QString line;
    while (stream.readLineInto(&line))
        lines.append(line);
    return lines;
}

AnalysisLine parseAnalysisLine(const QString &line)
{
    return {parseDataRate(line), parseReceiveTime(line)};
}

QTime analysisTimeStamp(const QString &line)
{
    const int blank = line.indexOf(QLatin1Char(' '));
    if (blank < 0)
        return QTime();
    return QTime::fromString(line.left(blank), QStringLiteral("hh:mm:ss.zzz:"));
}
