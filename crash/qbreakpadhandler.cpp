#include "crash/qbreakpadhandler.h"

#include <QCoreApplication>
#include <QDir>

QBreakpadHandler *QBreakpadHandler::instance()
{
    // Never destroyed: a crash may come as late as the last static destructor.
    static QBreakpadHandler *const handler = new QBreakpadHandler;
    return handler;
}

void QBreakpadHandler::setDumpPath(const QString &path)
{
    QString absolutePath = path;
    if (QDir::isRelativePath(path))
        absolutePath = QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') + path);
    QDir().mkpath(absolutePath);
    if (!QDir(absolutePath).exists()) {
        qDebug("Failed to set dump path which not exists: %s", absolutePath.toLocal8Bit().constData());
        return;
    }
    m_dumpPath = QDir::cleanPath(absolutePath);
}
