#include "app/consolearguments.h"
#include "tests/support/testbase.h"

#include <QtTest>

using Action = ConsoleRequest::Action;
Q_DECLARE_METATYPE(ConsoleRequest::Action)

class TestConsoleArguments final : public TestBase {
    Q_OBJECT

private slots:
    void parse_data();
    void parse();
};

void TestConsoleArguments::parse_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<Action>("action");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("minutes");
    QTest::addColumn<int>("receivers");
    const auto row = [](const char *title, const char *line, Action action, const char *name = "", int minutes = 1,
                        int receivers = 1) {
        QTest::newRow(title) << QString::fromLatin1(line) << action << QString::fromLatin1(name) << minutes
                             << receivers;
    };
    row("help", "-help", Action::PrintUsage);
    row("help wins over all", "-test|X|-findsources|-help", Action::PrintUsage);
    row("finding wins over testing", "-test|X|-findsources", Action::FindSources);
    row("an unknown argument", "--version", Action::PrintUsage);
    row("an empty argument", "", Action::PrintUsage);
    row("options without a test", "-time|2|-receivers|3", Action::PrintUsage);
    row("other letter case", "-TEST|X", Action::PrintUsage);
    row("other letter case of finding", "-FindSources", Action::PrintUsage);
    row("a name alone", "-test|CAM (1)", Action::Test, "CAM (1)");
    row("all options", "-test|CAM (1)|-time|2|-receivers|8", Action::Test, "CAM (1)", 2, 8);
    row("options in front", "-receivers|4|-time|5|-test|X", Action::Test, "X", 5, 4);
    row("test at the end has no name", "-test", Action::Test);
    row("time at the end keeps 1", "-test|X|-time", Action::Test, "X");
    row("receivers at the end keep 1", "-test|X|-receivers", Action::Test, "X");
    row("time is no number", "-test|X|-time|abc", Action::Test, "X", 0);
    row("time is half a number", "-test|X|-time|2min", Action::Test, "X", 0);
    row("time is a fraction", "-test|X|-time|1.5", Action::Test, "X", 0);
    row("time is hexadecimal", "-test|X|-time|0x2", Action::Test, "X", 0);
    row("time is negative", "-test|X|-time|-3", Action::Test, "X", -3);
    row("time is beyond int", "-test|X|-time|99999999999", Action::Test, "X", 0);
    row("receivers is empty", "-test|X|-receivers||", Action::Test, "X", 1, 0);
    row("an option as a name", "-test|-time|3", Action::Test, "-time", 3);
    row("an option as a count", "-test|X|-receivers|-time", Action::Test, "X", 1, 0);
    row("the first occurrence counts", "-test|X|-time|2|-time|3", Action::Test, "X", 2);
    row("a first occurrence with a bad value counts", "-test|X|-time|z|-time|3", Action::Test, "X", 0);
}

void TestConsoleArguments::parse()
{
    QFETCH(QString, line);
    const ConsoleRequest request = parseConsoleArguments(line.split(QLatin1Char('|')));
    QTEST(request.action, "action");
    QTEST(request.sourceName, "name");
    QTEST(request.minutes, "minutes");
    QTEST(request.receivers, "receivers");
}

QTEST_APPLESS_MAIN(TestConsoleArguments)
#include "tst_consolearguments.moc"
