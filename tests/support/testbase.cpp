#include "tests/support/testbase.h"

#include <QtTest>

#include <mutex>

namespace {

std::mutex mutex; // guards the next two
QStringList expected;
QStringList unexpected;
QtMessageHandler testHandler = nullptr; // Qt Test's own, set before any thread runs

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg || type == QtCriticalMsg) {
        const std::lock_guard<std::mutex> locker(mutex);
        const auto isPartOf = [&message](const QString &part) { return message.contains(part); };
        if (std::none_of(expected.cbegin(), expected.cend(), isPartOf))
            unexpected.append(message);
    }
    testHandler(type, context, message);
}

} // namespace

TestBase::TestBase()
{
    // Tests that look at journals name a folder of their own; the user's stays out of this.
    qputenv("VEXA_JOURNAL_FOLDER", "off");
    // All rows of a test function together would have five minutes, however slow the machine; ctest has the limits.
    qputenv("QTEST_FUNCTION_TIMEOUT", "3600000");
}

void TestBase::expectWarning(const QString &part)
{
    const std::lock_guard<std::mutex> locker(mutex);
    expected.append(part);
}

void TestBase::init()
{
    const QtMessageHandler before = qInstallMessageHandler(handleMessage);
    if (before != handleMessage)
        testHandler = before;
    const std::lock_guard<std::mutex> locker(mutex);
    expected.clear();
    unexpected.clear();
}

void TestBase::cleanup()
{
    const std::lock_guard<std::mutex> locker(mutex);
    QVERIFY2(unexpected.isEmpty(), qPrintable(QLatin1String("unexpected: ") + unexpected.join(QLatin1String("; "))));
}
