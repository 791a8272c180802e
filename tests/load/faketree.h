#pragma once

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

/// A folder that stands in for the root of the file system.
class FakeTree final {
public:
    QString root() const { return m_folder.path(); }
    QString path(const char *relativePath) const { return m_folder.filePath(QString::fromLatin1(relativePath)); }

    /// Writes a file anew and makes its folders.
    void write(const QString &relativePath, const QByteArray &text) const
    {
        const QString path = m_folder.filePath(relativePath);
        QVERIFY(QFileInfo(path).dir().mkpath(QStringLiteral(".")));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(text), qint64(text.size()));
    }
    void write(const char *relativePath, const QByteArray &text) const
    {
        write(QString::fromLatin1(relativePath), text);
    }

    /// A descriptor of a process: a link to what it has open, and the kernel's text about it.
    void writeDescriptor(int process, int descriptor, const char *target, const QByteArray &text) const
    {
        const QString folder = QStringLiteral("proc/%1/").arg(process);
        write(folder + QStringLiteral("fdinfo/%1").arg(descriptor), text);
        const QString link = m_folder.filePath(folder + QStringLiteral("fd/%1").arg(descriptor));
        QVERIFY(QFileInfo(link).dir().mkpath(QStringLiteral(".")));
        QVERIFY(QFile::link(QString::fromLatin1(target), link));
    }

    void remove(const QString &relativePath) const
    {
        QVERIFY(QDir(m_folder.filePath(relativePath)).removeRecursively());
    }

private:
    QTemporaryDir m_folder;
};
