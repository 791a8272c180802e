#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QtTest>

// Whatever is awaited ends its wait. The limit is far from it, so that a machine that stands still for seconds does not
// reach it; Qt Test's own is 5 s.
#undef QTRY_VERIFY
#undef QTRY_VERIFY2
#undef QTRY_COMPARE
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT((expression), 20000)
#define QTRY_VERIFY2(expression, text) QTRY_VERIFY2_WITH_TIMEOUT((expression), (text), 20000)
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT((actual), (expected), 20000)

/// Base of every test class: a warning that no test expected fails the test function it came in.
class TestBase : public QObject {
    Q_OBJECT

public:
    /// From now to the end of the test function, warnings that contain this text are expected.
    static void expectWarning(const QString &part);

protected:
    TestBase();

private slots:
    void init();
    void cleanup();
};
