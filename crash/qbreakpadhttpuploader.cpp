#include "crash/qbreakpadhttpuploader.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QHttpMultiPart>
#include <QUrl>

#include <memory>
#include <utility>

namespace {

/// Qt reports no error for a redirection that it does not follow, but the dump has not arrived anywhere.
constexpr int firstRefusingStatus = 300;

/// The three characters that would end the quoted name or its line, written as browsers write them. The names of dumps
/// contain none.
QString quotable(QString fileName)
{
    return fileName.replace(QLatin1Char('"'), QLatin1String("%22"))
        .replace(QLatin1Char('\r'), QLatin1String("%0D"))
        .replace(QLatin1Char('\n'), QLatin1String("%0A"));
}

QHttpPart textField(const QString &disposition, const QString &text)
{
    QHttpPart part;
    part.setHeader(QNetworkRequest::ContentDispositionHeader, disposition);
    part.setBody(text.toLatin1());
    return part;
}

} // namespace

QBreakpadHttpUploader::QBreakpadHttpUploader(const QUrl &url, QObject *parent) : QObject(parent), m_request(url) {}

QBreakpadHttpUploader::~QBreakpadHttpUploader()
{
    if (m_reply) {
        qWarning("m_reply is not NULL");
        m_reply->disconnect(this);
        m_reply->deleteLater();
    }
}

void QBreakpadHttpUploader::uploadDump(const QString &abs_file_path)
{
    if (m_reply) {
        qDebug("%s is not sent: another dump is on its way", qUtf8Printable(abs_file_path));
        return;
    }
    const QString name = QCoreApplication::applicationName();
    const QString version = QCoreApplication::applicationVersion();

    auto body = std::make_unique<QHttpMultiPart>(QHttpMultiPart::FormDataType);
    body->append(textField(QStringLiteral("form-data; name=\"prod\""), name));
    body->append(textField(QStringLiteral("form-data; name=\"ver\""), version));

    auto file = std::make_unique<QFile>(abs_file_path);
    if (!file->open(QIODevice::ReadOnly)) {
        qDebug("%s cannot be sent: %s", qUtf8Printable(abs_file_path), qUtf8Printable(file->errorString()));
        return;
    }
    QHttpPart dump;
    dump.setHeader(QNetworkRequest::ContentDispositionHeader,
                   QString(QStringLiteral("form-data; name=\"upload_file_minidump\"; filename=\"")
                           + quotable(QFileInfo(abs_file_path).fileName()) + QLatin1Char('"')));
    dump.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/octet-stream"));
    dump.setBodyDevice(file.get());
    m_file = file.release();
    m_file->setParent(body.get());
    body->append(dump);

    m_request.setRawHeader("User-Agent", (name + QLatin1Char('/') + version).toLatin1());
    m_reply = m_manager.post(m_request, body.get());
    body.release()->setParent(m_reply);

    connect(m_reply, &QNetworkReply::uploadProgress, this, &QBreakpadHttpUploader::onUploadProgress);
    connect(m_reply, &QNetworkReply::errorOccurred, this, &QBreakpadHttpUploader::onError);
    connect(m_reply, &QNetworkReply::finished, this, &QBreakpadHttpUploader::onUploadFinished);
}

void QBreakpadHttpUploader::onUploadProgress(qint64 sent, qint64 total)
{
    qDebug("upload progress: %lld/%lld", sent, total);
}

void QBreakpadHttpUploader::onError(QNetworkReply::NetworkError err)
{
    qDebug() << err;
}

void QBreakpadHttpUploader::onUploadFinished()
{
    // Whoever hears that it is finished may delete this uploader, and with it the manager, or hand it the next dump.
    QNetworkReply *const reply = std::exchange(m_reply, nullptr);
    QFile *const file = std::exchange(m_file, nullptr);
    reply->setParent(nullptr);

    const QString answer = QString::fromUtf8(reply->readAll());
    qDebug("Upload finished");
    qDebug().noquote().nospace() << "Answer: " << answer;

    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError) {
        qWarning("Upload error: %d - %s", int(reply->error()), qUtf8Printable(reply->errorString()));
    } else if (status >= firstRefusingStatus) {
        const QString reason = reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
        qWarning("Upload error: %d - HTTP status %d %s", int(reply->error()), status, qUtf8Printable(reason));
    } else {
        qDebug().noquote().nospace() << "Upload to " << m_request.url().toDisplayString() << " success!";
        file->close(); // Windows removes no open file
        if (!file->remove())
            qDebug("%s could not be deleted: %s", qUtf8Printable(file->fileName()),
                   qUtf8Printable(file->errorString()));
    }

    emit finished(answer);
    reply->close();
    reply->deleteLater();
    delete file;
}
