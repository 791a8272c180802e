#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTime>

#include <optional>

/// One value of the stream's video data rate.
struct AnalysisDataRate {
    QTime time;                      ///< of day, as the tool says
    double megabytesPerSecond = 0.0; ///< above 0
};

/// How long receiving video frames took, over the tool's last interval.
struct AnalysisReceiveTime {
    QTime time;         ///< of day, as the tool says
    double minMs = 0.0; ///< 0 where the text is no number, as in the other two
    double maxMs = 0.0;
    double averageMs = 0.0;
};

/// What one line of the analysis tool says; both, one or, mostly, nothing.
struct AnalysisLine {
    std::optional<AnalysisDataRate> dataRate;
    std::optional<AnalysisReceiveTime> receiveTime;
};

/// The lines of a piece of output (UTF-8), without their line ends (LF or CR LF). What stands after the last line end
/// is a line, too: nothing is kept for the next piece.
QStringList analysisLines(const QByteArray &output);

/// Reads "Video data rate (MBps)" and "Video recv (mS)" lines, and those of the tool's newer generation, "Video data
/// rate (Mbps)", whose megabits become megabytes, and "Video recv (ms)".
AnalysisLine parseAnalysisLine(const QString &line);

/// The first word of a line as a time "hh:mm:ss.zzz:"; invalid when it is none or no blank follows it.
QTime analysisTimeStamp(const QString &line);
