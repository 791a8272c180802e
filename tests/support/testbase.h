#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

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
