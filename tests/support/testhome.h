#pragma once

#include <QDir>
#include <QTemporaryDir>

/// A home folder for the process of a test: on Linux no settings, caches or documents of the user's are read or
/// written.
class TestHome final {
    Q_DISABLE_COPY_MOVE(TestHome)

public:
    TestHome() = default;
    /// Leaves the folder, which could not be removed on Windows else.
    ~TestHome()
    {
        if (!m_former.isEmpty())
            QDir::setCurrent(m_former);
    }

    /// Makes it the home folder. False when there is no such folder. Once in the process, or again after a change.
    bool use() const
    {
        const QByteArray path = m_folder.path().toUtf8();
        return m_folder.isValid() && qputenv("HOME", path) && qputenv("XDG_CONFIG_HOME", path)
               && qputenv("XDG_CACHE_HOME", path + "/.cache");
    }
    /// Makes it the working folder, too.
    bool enter()
    {
        m_former = QDir::currentPath();
        return QDir::setCurrent(m_folder.path());
    }
    QString path() const { return m_folder.path(); }
    QString filePath(const QString &name) const { return m_folder.filePath(name); }

private:
    const QTemporaryDir m_folder;
    QString m_former;
};
