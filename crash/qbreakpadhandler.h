#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

#include <memory>

/// Has a crash of the program leave a minidump, and sends what dumps there are. One per process, made on first use by
/// any thread and never destroyed; everything else on the thread that made it.
class QBreakpadHandler final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QBreakpadHandler)
    Q_PROPERTY(QUrl uploadUrl READ uploadUrl WRITE setUploadUrl)

public:
    static QBreakpadHandler *instance();
    ~QBreakpadHandler() override;

    /// Makes the folder with all missing parents; a relative path stands under the program's folder. From then on a
    /// crash leaves its dump there and no longer in the folder before. A folder that cannot be made, or that is a link,
    /// is reported on the debug log, and everything stays as it was.
    void setDumpPath(const QString &path);
    /// Absolute and clean; empty until a folder was made.
    QString dumpPath() const;

    /// Where sendDumps() sends to; empty unless set.
    void setUploadUrl(const QUrl &url);
    QUrl uploadUrl() const;

public slots:
    /// Begins to send each dump in the folder to the upload address. What has arrived is removed, the rest stays for
    /// the next time.
    void sendDumps();

private:
    QBreakpadHandler();

    struct Private;
    const std::unique_ptr<Private> d;
};
