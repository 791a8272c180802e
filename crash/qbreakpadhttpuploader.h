#pragma once

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QPointer>
#include <QString>

class QFile;
class QUrl;

/// Sends one crash dump to a crash-report server, as a form upload. Lives on a thread with an event loop (the GUI
/// thread) and works in it; made for one dump, and not deleted when that was sent. What happens is told on the log.
class QBreakpadHttpUploader final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QBreakpadHttpUploader)

public:
    explicit QBreakpadHttpUploader(const QUrl &url, QObject *parent = nullptr);
    /// Gives up an upload that is under way; the dump stays.
    ~QBreakpadHttpUploader() override;

signals:
    /// The upload has ended, well or not; answer: what the server said, as UTF-8 text. The dump has been deleted when
    /// the status of the answer is below 300, else it stays. Redirections are not followed.
    void finished(QString answer);

public slots:
    /// Starts to send the file, which is read bit by bit as it is sent. A file that cannot be opened is not sent, and
    /// finished() never comes; neither is a second one while one is on its way.
    void uploadDump(const QString &abs_file_path);

private slots:
    void onUploadProgress(qint64 sent, qint64 total);
    void onError(QNetworkReply::NetworkError err);
    void onUploadFinished();

private:
    QNetworkAccessManager m_manager;
    QNetworkRequest m_request;
    QPointer<QNetworkReply> m_reply; ///< the manager's; null unless an upload is under way
    QPointer<QFile> m_file;          ///< the dump being sent; the reply's through the body of the request
};
