#include "relay/argumentquoting.h"
#include "relay/commandfile.h"
#include "tests/standin_analysis/argumentrules.h"
#include "tests/standin_analysis/hostilenames.h"
#include "tests/support/testbase.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {

relay::ParsedCommandFile parse(const QByteArray &text)
{
    return relay::parseCommandFile(std::string_view(text.constData(), std::size_t(text.size())));
}

QByteArray bytes(const std::string &text)
{
    return QByteArray(text.data(), int(text.size()));
}

} // namespace

class TestCommandFile final : public TestBase {
    Q_OBJECT

private slots:
    void accepted_data();
    void accepted();
    void refused_data();
    void refused();
    void lengthLimit();
    void namesComeBackAsTheyWere_data();
    void namesComeBackAsTheyWere();
    void quoting_data();
    void quoting();
    void everyShortNameSurvivesQuoting();
    void randomNames();
};

void TestCommandFile::accepted_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("tool");
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QByteArray>("seconds");
    const QByteArray tool = "c:\\Program Files\\NDI\\NDI 5 Analysis BETA\\x64\\NDIAnalysis.exe";
    const QByteArray head = '"' + tool + '"';
    QTest::newRow("one minute") << head + " /source:\"MACHINE (Camera 1)\" /time:70" << tool
                                << QByteArray("MACHINE (Camera 1)") << QByteArray("70");
    QTest::newRow("five minutes") << head + " /source:\"a\" /time:310" << tool << QByteArray("a") << QByteArray("310");
    QTest::newRow("a Linux path") << QByteArray("\"/opt/ndi/NDIAnalysis\" /source:\"a\" /time:0")
                                  << QByteArray("/opt/ndi/NDIAnalysis") << QByteArray("a") << QByteArray("0");
    QTest::newRow("a time in the name") << head + " /source:\"a\" /time:5\" /time:70" << tool
                                        << QByteArray("a\" /time:5") << QByteArray("70");
    QTest::newRow("the whole form in the name")
        << head + " /source:\"" + head + " /source:\"a\" /time:5\" /time:70" << tool
        << QByteArray(head + " /source:\"a\" /time:5") << QByteArray("70");
    QTest::newRow("line ends in the name")
        << head + " /source:\"a\r\nb\n\" /time:70" << tool << QByteArray("a\r\nb\n") << QByteArray("70");
    QTest::newRow("a quotation mark") << head + " /source:\"\"\" /time:70" << tool << QByteArray("\"")
                                      << QByteArray("70");
    QTest::newRow("not UTF-8") << head + " /source:\"\xff\xfe\" /time:70" << tool << QByteArray("\xff\xfe")
                               << QByteArray("70");
}

void TestCommandFile::accepted()
{
    QFETCH(QByteArray, text);
    const relay::ParsedCommandFile parsed = parse(text);
    QCOMPARE(bytes(parsed.problem), QByteArray());
    QVERIFY(parsed.command.has_value());
    QTEST(bytes(parsed.command->tool), "tool");
    QTEST(bytes(parsed.command->source), "source");
    QTEST(bytes(parsed.command->seconds), "seconds");
}

void TestCommandFile::refused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("problem");
    const QByteArray begin = "it does not begin with the tool's path in quotation marks";
    const QByteArray noSource = "the tool's path is not followed by /source: and a quotation mark";
    const QByteArray noTime = "the source is not followed by a quotation mark and /time:";
    const QByteArray noDigits = "/time: is not followed by digits alone";
    QTest::newRow("nothing") << QByteArray() << QByteArray("it is empty");
    QTest::newRow("a NUL in the name") << QByteArray("\"/t\" /source:\"a\0b\" /time:1", 23)
                                       << QByteArray("it holds a NUL");
    QTest::newRow("another command") << QByteArray("echo hit > canary") << begin;
    QTest::newRow("a blank first") << QByteArray(" \"/t\" /source:\"a\" /time:1") << begin;
    QTest::newRow("a byte order mark") << QByteArray("\xef\xbb\xbf\"/t\" /source:\"a\" /time:1") << begin;
    QTest::newRow("no path in quotation marks") << QByteArray("/t /source:\"a\" /time:1") << begin;
    QTest::newRow("one quotation mark only") << QByteArray("\"/t") << noSource;
    QTest::newRow("path alone") << QByteArray("\"/t\"") << noSource;
    QTest::newRow("no source") << QByteArray("\"/t\" /time:1") << noSource;
    QTest::newRow("something before the source") << QByteArray("\"/t\" & x /source:\"a\" /time:1") << noSource;
    QTest::newRow("two blanks") << QByteArray("\"/t\"  /source:\"a\" /time:1") << noSource;
    QTest::newRow("capital letters") << QByteArray("\"/t\" /SOURCE:\"a\" /time:1") << noSource;
    QTest::newRow("source without quotation marks") << QByteArray("\"/t\" /source:a /time:1") << noSource;
    QTest::newRow("no end of the source") << QByteArray("\"/t\" /source:\"a /time:1") << noTime;
    QTest::newRow("the source's first mark is not its last") << QByteArray("\"/t\" /source:\" /time:1") << noTime;
    QTest::newRow("no path") << QByteArray("\"\" /source:\"a\" /time:1") << QByteArray("the tool's path is empty");
    QTest::newRow("no name") << QByteArray("\"/t\" /source:\"\" /time:1") << QByteArray("the source is empty");
    QTest::newRow("no digits") << QByteArray("\"/t\" /source:\"a\" /time:") << noDigits;
    QTest::newRow("a sign") << QByteArray("\"/t\" /source:\"a\" /time:-1") << noDigits;
    QTest::newRow("a letter after them") << QByteArray("\"/t\" /source:\"a\" /time:1s") << noDigits;
    QTest::newRow("a line end after them") << QByteArray("\"/t\" /source:\"a\" /time:1\r\n") << noDigits;
    QTest::newRow("a second line") << QByteArray("\"/t\" /source:\"a\" /time:1\necho hit") << noDigits;
    QTest::newRow("another command behind") << QByteArray("\"/t\" /source:\"a\" /time:1 & x") << noDigits;
}

void TestCommandFile::refused()
{
    QFETCH(QByteArray, text);
    const relay::ParsedCommandFile parsed = parse(text);
    QVERIFY(!parsed.command.has_value());
    QTEST(bytes(parsed.problem), "problem");
}

void TestCommandFile::lengthLimit()
{
    const QByteArray head = "\"/t\" /source:\"";
    const QByteArray tail = "\" /time:70";
    const int room = int(relay::maxCommandFileBytes) - head.size() - tail.size();
    QVERIFY(parse(head + QByteArray(room, 'x') + tail).command.has_value());
    const relay::ParsedCommandFile parsed = parse(head + QByteArray(room + 1, 'x') + tail);
    QVERIFY(!parsed.command.has_value());
    QCOMPARE(bytes(parsed.problem), QByteArray("it is too long"));
}

void TestCommandFile::namesComeBackAsTheyWere_data()
{
    QTest::addColumn<QByteArray>("name");
    const QByteArrayList names = hostileNames();
    for (int i = 0; i < names.size(); ++i)
        QTest::addRow("name %d", i) << names.at(i);
}

void TestCommandFile::namesComeBackAsTheyWere()
{
    QFETCH(QByteArray, name);
    const relay::ParsedCommandFile parsed = parse("\"c:\\a b\\t.exe\" /source:\"" + name + "\" /time:70");
    QVERIFY(parsed.command.has_value());
    QCOMPARE(bytes(parsed.command->source), name);
    QCOMPARE(bytes(relay::sourceArgument(*parsed.command)), QByteArray("/source:" + name));
    QCOMPARE(bytes(relay::timeArgument(*parsed.command)), QByteArray("/time:70"));

    const std::vector<std::string> words = windowsArguments(relay::windowsCommandLine(*parsed.command));
    QCOMPARE(words.size(), std::size_t(3));
    QCOMPARE(bytes(words[0]), QByteArray("c:\\a b\\t.exe"));
    QCOMPARE(bytes(words[1]), QByteArray("/source:" + name));
    QCOMPARE(bytes(words[2]), QByteArray("/time:70"));
}

void TestCommandFile::quoting_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("quoted");
    QTest::newRow("plain") << QByteArray("MACHINE (Camera 1)") << QByteArray("\"MACHINE (Camera 1)\"");
    QTest::newRow("one mark") << QByteArray("a\"b") << QByteArray("\"a\\\"b\"");
    QTest::newRow("backslash inside") << QByteArray("a\\b") << QByteArray("\"a\\b\"");
    QTest::newRow("backslash at the end") << QByteArray("a\\") << QByteArray("\"a\\\\\"");
    QTest::newRow("backslash before a mark") << QByteArray("a\\\"b") << QByteArray("\"a\\\\\\\"b\"");
    QTest::newRow("two backslashes, then a letter") << QByteArray("\\\\a") << QByteArray("\"\\\\a\"");
}

void TestCommandFile::quoting()
{
    QFETCH(QByteArray, name);
    QTEST(bytes(relay::quotedForWindows(name.toStdString())), "quoted");
}

void TestCommandFile::everyShortNameSurvivesQuoting()
{
    const QByteArray letters = "\"\\ a";
    QByteArrayList names{QByteArray()};
    for (int i = 0; i < names.size() && names.at(i).size() < 6; ++i) {
        for (const char letter : letters)
            names.append(names.at(i) + letter);
    }
    for (const QByteArray &name : qAsConst(names)) {
        const relay::Command command{"c:\\t.exe", name.toStdString(), "70"};
        const std::vector<std::string> expected{"c:\\t.exe", "/source:" + command.source, "/time:70"};
        QVERIFY2(windowsArguments(relay::windowsCommandLine(command)) == expected, name.constData());
    }
}

void TestCommandFile::randomNames()
{
    QRandomGenerator random(20261121);
    const QByteArray letters = "\"\\ /:timesource05\n%&";
    for (int round = 0; round < 20000; ++round) {
        QByteArray name;
        const int length = int(random.bounded(1, 30));
        for (int i = 0; i < length; ++i)
            name += letters.at(random.bounded(letters.size()));
        const relay::ParsedCommandFile parsed = parse("\"/t\" /source:\"" + name + "\" /time:70");
        QVERIFY2(parsed.command && bytes(parsed.command->source) == name, name.toPercentEncoding().constData());
    }
}

QTEST_APPLESS_MAIN(TestCommandFile)
#include "tst_commandfile.moc"
