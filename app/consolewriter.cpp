#include "app/consolewriter.h"

#include "app/consoleplatform.h"

#include <cstdio>

namespace {

/// Bytes of the well-formed UTF-8 sequence at the start of the text, 1 for anything else.
int sequenceLength(const QString &text, int at)
{
    const auto byte = [&text, at](int offset) {
        return at + offset < text.size() ? text.at(at + offset).unicode() : 0U;
    };
    const uint lead = byte(0);
    const int length = lead < 0xc2U ? 1 : lead < 0xe0U ? 2 : lead < 0xf0U ? 3 : lead < 0xf5U ? 4 : 1;
    for (int offset = 1; offset < length; ++offset) {
        if ((byte(offset) & 0xc0U) != 0x80U)
            return 1;
    }
    const uint second = byte(1);
    const bool isOverlong = (lead == 0xe0U && second < 0xa0U) || (lead == 0xf0U && second < 0x90U);
    const bool isBeyond = (lead == 0xedU && second > 0x9fU) || (lead == 0xf4U && second > 0x8fU);
    return isOverlong || isBeyond ? 1 : length;
}

} // namespace

void StandardConsoleWriter::writeLine(const QByteArray &line)
{
    flushDots();
    const QByteArray bytes = line + '\n'; // one write, so that lines of two threads do not mix
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

void StandardConsoleWriter::writeDot()
{
    std::fputc('.', stdout);
}

void StandardConsoleWriter::flushDots()
{
    std::fflush(stdout);
}

bool StandardConsoleWriter::isTerminal() const
{
    return goesToTerminal(stderr);
}

QString consoleText(const char *bytes)
{
    return QString::fromLatin1(bytes);
}

QString consoleTextFromUnicode(const QString &text)
{
    return QString::fromLatin1(text.toUtf8());
}

QString withoutControls(const QString &consoleText)
{
    QString safe;
    safe.reserve(consoleText.size());
    for (int at = 0; at < consoleText.size();) {
        const int length = sequenceLength(consoleText, at);
        const uint first = consoleText.at(at).unicode();
        const bool isControl = length == 1 ? first < 0x20U || (first >= 0x7fU && first <= 0x9fU)
                                           : first == 0xc2U && consoleText.at(at + 1).unicode() <= 0x9fU;
        safe += isControl ? QString(QLatin1Char('?')) : consoleText.mid(at, length);
        at += length;
    }
    return safe;
}

void printConsoleLine(ConsoleWriter *console, const QString &text)
{
    console->writeLine(text.toLatin1());
}
