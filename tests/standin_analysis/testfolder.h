#pragma once

#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>
#include <QThread>

/// A temporary folder that is removed even if Windows still counts it as the working folder of a process that has just
/// ended.
class TestFolder final {
public:
    TestFolder() { m_folder.setAutoRemove(false); }
    ~TestFolder()
    {
        const QDeadlineTimer deadline(5000);
        while (!QDir(path()).removeRecursively() && !deadline.hasExpired())
            QThread::msleep(10);
    }
    TestFolder(const TestFolder &) = delete;
    TestFolder &operator=(const TestFolder &) = delete;

    QString path() const { return m_folder.path(); }
    QString filePath(const QString &name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};
