#include "mainwindow/reportreader.h"

#include <optional>

namespace {

std::optional<ReportChartKind> chartNamed(const QString &word)
{
    if (word == QLatin1String("FPSCHART"))
        return ReportChartKind::fps;
    if (word == QLatin1String("PINGCHART"))
        return ReportChartKind::ping;
    if (word == QLatin1String("LATENCYCHART"))
        return ReportChartKind::latency;
    if (word == QLatin1String("DATARATECHART"))
        return ReportChartKind::dataRate;
    return std::nullopt;
}

constexpr int longestWord = 64;

} // namespace

ReportReader::ReportReader(QIODevice *device) : m_stream(device)
{
    m_stream.setCodec("UTF-8");
    m_stream.setIntegerBase(10);
}

/// A word, or the beginning of one that is longer than any keyword: the rest is left in the stream then.
QString ReportReader::readWord()
{
    QString word;
    m_stream.skipWhiteSpace();
    while (word.size() < longestWord && !m_stream.atEnd()) {
        QChar letter;
        m_stream >> letter;
        if (letter.isSpace())
            break;
        word.append(letter);
    }
    return word;
}

void ReportReader::skipRestOfWord()
{
    QChar letter;
    while (!m_stream.atEnd() && !letter.isSpace())
        m_stream >> letter;
}

int ReportReader::readInt()
{
    int number = 0;
    m_stream.resetStatus();
    m_stream >> number;
    const bool read = m_stream.status() == QTextStream::Ok;
    m_failed = read ? 0 : m_failed + 1;
    return read ? number : 0;
}

double ReportReader::readReal()
{
    double number = 0.0;
    m_stream.resetStatus();
    m_stream >> number;
    const bool read = m_stream.status() == QTextStream::Ok;
    m_failed = read ? 0 : m_failed + 1;
    return read ? number : 0.0;
}

bool ReportReader::atEnd()
{
    m_stream.skipWhiteSpace();
    return m_stream.atEnd();
}

ReportTest ReportReader::readTest()
{
    const QString word = readWord();
    if (word == QLatin1String("SINGLETEST"))
        return ReportTest::single;
    if (word == QLatin1String("MULTITEST"))
        return ReportTest::multiple;
    if (word == QLatin1String("ANALYSISTEST"))
        return ReportTest::analysis;
    if (const std::optional<ReportChartKind> kind = chartNamed(word))
        m_isOver = !readSection(*kind, nullptr);
    else if (word.size() == longestWord)
        skipRestOfWord();
    return ReportTest::none;
}

void ReportReader::readCharts(ReportVisitor &visitor)
{
    while (!m_isOver) {
        const std::optional<ReportChartKind> kind = chartNamed(readWord());
        m_isOver = !kind || !readSection(*kind, &visitor);
    }
}

bool ReportReader::readSection(ReportChartKind kind, ReportVisitor *visitor)
{
    const int lengthS = readInt();
    const int top = readInt();
    const int graphs = qMax(0, readInt());
    if (graphs > mostGraphs)
        return false;
    if (visitor)
        visitor->startChart(kind, lengthS, top, graphs);
    for (int graph = 0; graph < graphs && !atEnd(); ++graph) {
        const int points = readInt();
        // The stream stands still before a word: the graphs to come have no points either.
        if (m_failed >= 2)
            break;
        for (int i = 0; i < points && !atEnd(); ++i) {
            if (!readPoint(kind, graph, visitor))
                break;
        }
    }
    return true;
}

/// False when none of the point's numbers is one: the stream stands still then.
bool ReportReader::readPoint(ReportChartKind kind, int graph, ReportVisitor *visitor)
{
    m_failed = 0;
    const int timeMs = readInt();
    if (kind != ReportChartKind::latency) {
        const double value = readReal();
        if (m_failed == 2)
            return false;
        if (visitor)
            visitor->addPoint(kind, graph, timeMs, value);
        return true;
    }
    const double average = readReal();
    const double maximum = readReal();
    const double minimum = readReal();
    if (m_failed == 4)
        return false;
    if (visitor)
        visitor->addBand(kind, graph, timeMs, minimum, maximum, average);
    return true;
}
