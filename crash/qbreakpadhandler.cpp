#include "crash/qbreakpadhandler.h"

#include "crash/exceptionhandler.h"
#include "crash/qbreakpadhttpuploader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

struct QBreakpadHandler::Private {
    ExceptionHandlerPointer exceptionHandler; ///< null until a folder was made, and in builds without a writer
    QString dumpPath;
    QUrl uploadUrl;
};

QBreakpadHandler *QBreakpadHandler::instance()
{
    // Never destroyed: a crash may come as late as the last static destructor.
    static QBreakpadHandler *const handler = new QBreakpadHandler;
    return handler;
}

QBreakpadHandler::QBreakpadHandler() : d(std::make_unique<Private>()) {}

QBreakpadHandler::~QBreakpadHandler() = default;

void QBreakpadHandler::setDumpPath(const QString &path)
{
    QString absolutePath = path;
    if (QDir::isRelativePath(path))
        absolutePath = QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') + path);
    // Another user who can write to the working folder could redirect the dumps, and with them what the process knows.
    const QFileInfo folder(QDir::cleanPath(absolutePath));
    if (folder.isSymLink() || folder.isJunction()) {
        qDebug("Failed to set dump path which is a link: %s", absolutePath.toLocal8Bit().constData());
        return;
    }
    QDir().mkpath(absolutePath);
    if (!QDir(absolutePath).exists()) {
        qDebug("Failed to set dump path which not exists: %s", absolutePath.toLocal8Bit().constData());
        return;
    }
    d->dumpPath = QDir::cleanPath(absolutePath);
    // Handlers of one process stand on each other: the old one must go before the new one comes.
    d->exceptionHandler.reset();
    d->exceptionHandler = installExceptionHandler(d->dumpPath);
}

QString QBreakpadHandler::dumpPath() const
{
    return d->dumpPath;
}

void QBreakpadHandler::setUploadUrl(const QUrl &url)
{
    d->uploadUrl = url;
}

QUrl QBreakpadHandler::uploadUrl() const
{
    return d->uploadUrl;
}

void QBreakpadHandler::sendDumps()
{
    if (d->dumpPath.isEmpty())
        return;
    const QStringList dumps = QDir(d->dumpPath).entryList({QStringLiteral("*.dmp")}, QDir::Files);
    for (const QString &name : dumps) {
        qDebug("Sending %s", name.toLocal8Bit().constData());
        auto *uploader = new QBreakpadHttpUploader(d->uploadUrl, this);
        uploader->uploadDump(d->dumpPath + QLatin1Char('/') + name);
    }
}
