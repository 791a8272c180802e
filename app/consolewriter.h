#pragma once

#include <QByteArray>
#include <QString>

/// Where the console program's output goes. Any thread.
class ConsoleWriter {
public:
    virtual ~ConsoleWriter() = default;
    /// One line on standard error; the line end is added.
    virtual void writeLine(const QByteArray &line) = 0;
    /// One progress dot on standard output. It may stay in a buffer until flushDots() or the next line.
    virtual void writeDot() = 0;
    virtual void flushDots() = 0;
    /// True when a person reads the lines on a terminal.
    virtual bool isTerminal() const = 0;
};

/// The real streams; a stream that cannot be written is passed over.
class StandardConsoleWriter final : public ConsoleWriter {
public:
    void writeLine(const QByteArray &line) override;
    void writeDot() override;
    void flushDots() override;
    bool isTerminal() const override;
};

/// Text on the console stands for bytes: each character is one byte, as names came from the runtime and
/// from the command line.
QString consoleText(const char *bytes);
/// Real text, such as a path, in the same form.
QString consoleTextFromUnicode(const QString &text);
/// The text without what could control a terminal: C0, DEL and C1, the latter as UTF-8 or as a lone byte, become "?".
/// Pure; any thread.
QString withoutControls(const QString &consoleText);
/// Writes such a text as one line.
void printConsoleLine(ConsoleWriter *console, const QString &text);
