#pragma once

#include <QObject>
#include <QString>

/// Keeps the folder in which crash dumps are left. One per process, made on first use by any thread.
/// This build contains no minidump writer: the folder is made ready, a crash leaves no file in it.
class QBreakpadHandler final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QBreakpadHandler)

public:
    static QBreakpadHandler *instance();

    /// Makes the folder with all missing parents; a relative path stands under the program's folder.
    /// A folder that cannot be made is reported on the debug log and leaves dumpPath() as it was.
    void setDumpPath(const QString &path);

    /// Absolute and clean; empty until a folder was made.
    QString dumpPath() const { return m_dumpPath; }

private:
    QBreakpadHandler() = default;

    QString m_dumpPath;
};
