#include "app/consolewriter.h"

#include <cstdio>

void StandardConsoleWriter::writeLine(const QByteArray &line)
{
    const QByteArray bytes = line + '\n'; // one write, so that lines of two threads do not mix
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

void StandardConsoleWriter::writeDot()
{
    std::fputc('.', stdout);
    std::fflush(stdout);
}

QString consoleText(const char *bytes)
{
    return QString::fromLatin1(bytes);
}

QString consoleTextFromUnicode(const QString &text)
{
    return QString::fromLatin1(text.toUtf8());
}

void printConsoleLine(ConsoleWriter *console, const QString &text)
{
    console->writeLine(text.toLatin1());
}
