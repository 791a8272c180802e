#pragma once

#include <QByteArray>
#include <QString>

/// Where the console program's output goes. Any thread.
class ConsoleWriter {
public:
    virtual ~ConsoleWriter() = default;
    /// One line on standard error; the line end is added.
    virtual void writeLine(const QByteArray &line) = 0;
    /// One progress dot on standard output, at once.
    virtual void writeDot() = 0;
};

/// The real streams; a stream that cannot be written is passed over.
class StandardConsoleWriter final : public ConsoleWriter {
public:
    void writeLine(const QByteArray &line) override;
    void writeDot() override;
};

/// Text on the console stands for bytes: each character is one byte, as names came from the runtime and
/// from the command line.
QString consoleText(const char *bytes);
/// Real text, such as a path, in the same form.
QString consoleTextFromUnicode(const QString &text);
/// Writes such a text as one line.
void printConsoleLine(ConsoleWriter *console, const QString &text);
