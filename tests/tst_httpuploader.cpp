#include "crash/qbreakpadhttpuploader.h"

#include "tests/support/httpserver.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QFile>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace {

constexpr int waitMs = 20000;

QStringList messages; // of the test function that runs; everything here happens on one thread
QtMessageHandler handlerBefore = nullptr;

void keepMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    messages.append((type == QtWarningMsg ? QStringLiteral("warning: ") : QString()) + message);
    handlerBefore(type, context, message);
}

/// What every test function begins with: a folder for dumps, the program's name, an empty log.
class Workplace final {
    Q_DISABLE_COPY_MOVE(Workplace)

public:
    Workplace()
    {
        if (!m_folder.isValid())
            qFatal("no temporary folder");
        QCoreApplication::setApplicationName(QStringLiteral("TessalyNDIVexa"));
        QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3"));
        messages.clear();
        handlerBefore = qInstallMessageHandler(keepMessage);
    }
    ~Workplace() { qInstallMessageHandler(handlerBefore); }

    QString folder() const { return m_folder.path(); }
    QString path(const QString &name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};

/// Without the lines that tell the progress: how many there are is the network's choice.
QStringList storedMessages()
{
    QStringList kept;
    for (const QString &message : qAsConst(messages)) {
        if (!message.startsWith(QLatin1String("upload progress: ")))
            kept.append(message);
    }
    return kept;
}

/// The bytes 0 to 255 and lines that look like the end of a part, over and over.
QByteArray dumpBytes(int size)
{
    QByteArray cycle = "MDMP\r\n--boundary_.oOo._\r\nContent-Disposition: form-data\r\n\r\n";
    for (int i = 0; i < 256; ++i)
        cycle.append(char(i));
    return cycle.repeated(size / cycle.size() + 1).left(size);
}

QString writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot open");
}

/// The boundary as the Content-Type field names it.
QByteArray boundaryOf(const HttpRequest &request)
{
    const QByteArray type = request.field("Content-Type");
    const QByteArray start = "multipart/form-data; boundary=\"";
    if (!type.startsWith(start) || !type.endsWith('"'))
        return {};
    return type.mid(start.size(), type.size() - start.size() - 1);
}

QByteArray expectedBody(const QByteArray &boundary, const QByteArray &name, const QByteArray &version,
                        const QByteArray &fileName, const QByteArray &file)
{
    return "--" + boundary + "\r\nContent-Disposition: form-data; name=\"prod\"\r\n\r\n" + name + "\r\n--" + boundary
           + "\r\nContent-Disposition: form-data; name=\"ver\"\r\n\r\n" + version + "\r\n--" + boundary
           + "\r\nContent-Disposition: form-data; name=\"upload_file_minidump\"; filename=\"" + fileName
           + "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + file + "\r\n--" + boundary + "--\r\n";
}

} // namespace

class TestHttpUploader final : public TestBase {
    Q_OBJECT

private slots:
    void signalsAndSlotsInTheirOrder();
    void requestIsRightToTheByte_data();
    void requestIsRightToTheByte();
    void answerDecidesWhetherTheDumpStays_data();
    void answerDecidesWhetherTheDumpStays();
    void largeFileIsReadAsItIsSent();
    void refusedConnectionKeepsTheDump();
    void emptyUrlKeepsTheDump();
    void vanishedFileIsNotSent();
    void folderIsNotSent();
    void fileThatVanishesOnTheWay();
    void serverThatClosesInTheMiddleOfTheBody();
    void serverThatClosesInTheMiddleOfItsAnswer();
    void refusalThatComesBeforeTheBody();
    void destroyedOnTheWay();
    void secondDumpOnTheWayIsNotSent();
    void nextDumpFromTheSlot();
    void deletedInTheSlot();
};

void TestHttpUploader::signalsAndSlotsInTheirOrder()
{
    const QMetaObject &meta = QBreakpadHttpUploader::staticMetaObject;
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const QString access = method.access() == QMetaMethod::Private ? QStringLiteral("private ") : QString();
        const QString kind = QLatin1String(method.methodType() == QMetaMethod::Signal ? "signal " : "slot ");
        found.append(access + kind + QString::fromLatin1(method.methodSignature()));
    }
    QCOMPARE(found, (QStringList{QStringLiteral("signal finished(QString)"), QStringLiteral("slot uploadDump(QString)"),
                                 QStringLiteral("private slot onUploadProgress(qlonglong,qlonglong)"),
                                 QStringLiteral("private slot onError(QNetworkReply::NetworkError)"),
                                 QStringLiteral("private slot onUploadFinished()")}));
}

void TestHttpUploader::requestIsRightToTheByte_data()
{
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("sentFileName");

    const QString program = QStringLiteral("TessalyNDIVexa");
    const QString version = QStringLiteral("1.0.0");
    const QString guid = QStringLiteral("a2b9c3d4-0f1e-4c8a-9bd8-2f7c6e5d4b3a.dmp");
    QTest::newRow("a dump") << program << version << guid << dumpBytes(70000) << guid.toLatin1();
    QTest::newRow("an empty file") << program << version << guid << QByteArray() << guid.toLatin1();
    QTest::newRow("a program without name and version")
        << QStringLiteral("") << QStringLiteral("") << guid << dumpBytes(10) << guid.toLatin1();
    QTest::newRow("a program with Latin-1 letters")
        << QString::fromUtf8("V\u00e9xa") << QString::fromUtf8("1\u00b2") << guid << dumpBytes(10) << guid.toLatin1();
    QTest::newRow("spaces and a semicolon in the file name")
        << program << version << QStringLiteral("a b; c.dmp") << dumpBytes(10) << QByteArray("a b; c.dmp");
    QTest::newRow("a file name beyond Latin-1")
        << program << version << QString::fromUtf8("\u00fcber \u6620\u50cf.dmp") << dumpBytes(10)
        << QByteArray("\xc3\xbc"
                      "ber \xe6\x98\xa0\xe5\x83\x8f.dmp");
#ifndef Q_OS_WIN // where such files cannot be
    QTest::newRow("quotation marks in the file name") << program << version << QStringLiteral("a\"; name=\"prod.dmp")
                                                      << dumpBytes(10) << QByteArray("a%22; name=%22prod.dmp");
    QTest::newRow("line ends in the file name")
        << program << version << QStringLiteral("a\r\n\r\nb.dmp") << dumpBytes(10) << QByteArray("a%0D%0A%0D%0Ab.dmp");
#endif
}

void TestHttpUploader::requestIsRightToTheByte()
{
    const Workplace place;
    QFETCH(const QString, application);
    QFETCH(const QString, version);
    QFETCH(const QString, fileName);
    QFETCH(const QByteArray, file);
    QFETCH(const QByteArray, sentFileName);
    // Qt hands out the file's name for an application without one.
    QCoreApplication::setApplicationName(application);
    QCoreApplication::setApplicationVersion(version);
    const QByteArray sentName = QCoreApplication::applicationName().toLatin1();

    HttpServer server;
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/submit?key=1")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(writeFile(place.path(fileName), file));
    QVERIFY(finished.wait(waitMs));

    QCOMPARE(server.requestCount(), 1);
    const HttpRequest &request = server.request(0);
    QCOMPARE(request.line, QByteArray("POST /submit?key=1 HTTP/1.1"));
    QCOMPARE(request.field("User-Agent"), sentName + '/' + version.toLatin1());
    const QByteArray boundary = boundaryOf(request);
    QVERIFY2(!boundary.isEmpty(), request.field("Content-Type").constData());
    const QByteArray expected = expectedBody(boundary, sentName, version.toLatin1(), sentFileName, file);
    QCOMPARE(request.field("Content-Length").toInt(), expected.size());
    QVERIFY2(request.body == expected, request.body.left(1000).constData());
}

void TestHttpUploader::answerDecidesWhetherTheDumpStays_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("reason");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("end"); // of the log: Qt's error if any, the warning; none: success

    QTest::newRow("200 with a report number")
        << 200 << QByteArray("OK") << QByteArray("CrashID=bp-1\n") << QStringList();
    QTest::newRow("200 beyond Latin-1") << 200 << QByteArray("OK") << QByteArray("\xe6\x98\xa0 \xc3\xbc")
                                        << QStringList();
    QTest::newRow("204 without a word") << 204 << QByteArray("No Content") << QByteArray() << QStringList();
    QTest::newRow("299, the last of success") << 299 << QByteArray("Stored") << QByteArray("yes") << QStringList();
    for (const int status : {300, 302, 308, 399})
        QTest::addRow("%d, which Qt takes for success", status)
            << status << QByteArray("Elsewhere") << QByteArray("over there")
            << QStringList{QStringLiteral("warning: Upload error: 0 - HTTP status %1 Elsewhere").arg(status)};
    QTest::newRow("400") << 400 << QByteArray("Bad Request") << QByteArray("what?")
                         << QStringList{QStringLiteral("QNetworkReply::ProtocolInvalidOperationError"),
                                        QStringLiteral("warning: Upload error: 302 - Error transferring %1 - server "
                                                       "replied: Bad Request")};
    QTest::newRow("404") << 404 << QByteArray("Not Found") << QByteArray("")
                         << QStringList{QStringLiteral("QNetworkReply::ContentNotFoundError"),
                                        QStringLiteral("warning: Upload error: 203 - Error transferring %1 - server "
                                                       "replied: Not Found")};
    QTest::newRow("500") << 500 << QByteArray("Internal Server Error") << QByteArray("disk full")
                         << QStringList{QStringLiteral("QNetworkReply::InternalServerError"),
                                        QStringLiteral("warning: Upload error: 401 - Error transferring %1 - server "
                                                       "replied: Internal Server Error")};
    QTest::newRow("503") << 503 << QByteArray("Service Unavailable") << QByteArray("later")
                         << QStringList{QStringLiteral("QNetworkReply::ServiceUnavailableError"),
                                        QStringLiteral("warning: Upload error: 403 - Error transferring %1 - server "
                                                       "replied: Service Unavailable")};
}

void TestHttpUploader::answerDecidesWhetherTheDumpStays()
{
    const Workplace place;
    QFETCH(const int, status);
    QFETCH(const QByteArray, reason);
    QFETCH(const QByteArray, body);
    QFETCH(const QStringList, end);

    HttpServer server;
    server.setAnswer(status, reason, body);
    const QUrl url = server.url(QStringLiteral("/submit"));
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), dumpBytes(1000));
    if (!end.isEmpty())
        expectWarning(QStringLiteral("Upload error: "));

    QBreakpadHttpUploader uploader(url);
    bool wasThere = false; // when finished() came
    connect(&uploader, &QBreakpadHttpUploader::finished, this, [&] { wasThere = QFile::exists(dump); });
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(dump);
    QVERIFY(finished.wait(waitMs));

    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toString(), QString::fromUtf8(body));
    QCOMPARE(wasThere, !end.isEmpty());
    if (wasThere)
        QCOMPARE(contents(dump), dumpBytes(1000));

    QStringList expected{QStringLiteral("Upload finished"), QStringLiteral("Answer: ") + QString::fromUtf8(body)};
    if (end.isEmpty()) {
        expected.append(QStringLiteral("Upload to ") + url.toString() + QStringLiteral(" success!"));
    } else {
        if (end.size() > 1)
            expected.prepend(end.first());
        expected.append(QString(end.last()).replace(QLatin1String("%1"), url.toString()));
    }
    QCOMPARE(storedMessages(), expected);
}

void TestHttpUploader::largeFileIsReadAsItIsSent()
{
    const Workplace place;
    constexpr int sizeBytes = 24 * 1024 * 1024;
    QByteArray bytes = dumpBytes(sizeBytes);
    const QString dump = writeFile(place.path(QStringLiteral("large.dmp")), bytes);
    HttpServer server;
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    QSignalSpy received(&server, &HttpServer::bodyBytesReceived);
    uploader.uploadDump(dump);
    QVERIFY(received.wait(waitMs));

    // Most of it is still unread: what changes now at its end is sent as it is then.
    bytes[sizeBytes - 1] = 'Z';
    QFile file(dump);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(sizeBytes - 1));
    QCOMPARE(file.write("Z"), qint64(1));
    file.close();
    QVERIFY(finished.wait(waitMs));

    const HttpRequest &request = server.request(0);
    const QByteArray expected = expectedBody(boundaryOf(request), "TessalyNDIVexa", "1.2.3", "large.dmp", bytes);
    QCOMPARE(request.body.size(), expected.size());
    QVERIFY(request.body == expected);
    QVERIFY(!QFile::exists(dump));

    QList<qint64> sent;
    const QRegularExpression progress(QStringLiteral("^upload progress: ([0-9]+)/([0-9]+)$"));
    for (const QString &message : qAsConst(messages)) {
        const QRegularExpressionMatch match = progress.match(message);
        if (match.hasMatch() && match.captured(2) == QString::number(expected.size()))
            sent.append(match.captured(1).toLongLong());
    }
    QVERIFY2(!sent.isEmpty(), qPrintable(messages.join(QLatin1Char('\n'))));
    QVERIFY(std::is_sorted(sent.cbegin(), sent.cend()));
    QCOMPARE(sent.last(), qint64(expected.size()));
}

void TestHttpUploader::refusedConnectionKeepsTheDump()
{
    const Workplace place;
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), dumpBytes(1000));
    expectWarning(QStringLiteral("Upload error: 1 - "));
    QBreakpadHttpUploader uploader(HttpServer::deafUrl());
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(dump);
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(finished.first().first().toString(), QString());
    QCOMPARE(contents(dump), dumpBytes(1000));
    QCOMPARE(storedMessages(), (QStringList{QStringLiteral("QNetworkReply::ConnectionRefusedError"),
                                            QStringLiteral("Upload finished"), QStringLiteral("Answer: "),
                                            QStringLiteral("warning: Upload error: 1 - Connection refused")}));
}

void TestHttpUploader::emptyUrlKeepsTheDump()
{
    const Workplace place;
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), dumpBytes(1000));
    expectWarning(QStringLiteral("Upload error: 301 - "));
    QBreakpadHttpUploader uploader{QUrl()};
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(dump);
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(contents(dump), dumpBytes(1000));
    QCOMPARE(storedMessages(), (QStringList{QStringLiteral("QNetworkReply::ProtocolUnknownError"),
                                            QStringLiteral("Upload finished"), QStringLiteral("Answer: "),
                                            QStringLiteral("warning: Upload error: 301 - Protocol \"\" is unknown")}));
}

void TestHttpUploader::vanishedFileIsNotSent()
{
    const Workplace place;
    HttpServer server;
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    const QString gone = writeFile(place.path(QStringLiteral("gone.dmp")), dumpBytes(1000));
    QVERIFY(QFile::remove(gone));
    uploader.uploadDump(gone);
    QCOMPARE(messages.size(), 1);
    QVERIFY(messages.first().startsWith(gone + QStringLiteral(" cannot be sent: ")));

    // The next one is the first that the server hears of.
    uploader.uploadDump(writeFile(place.path(QStringLiteral("there.dmp")), dumpBytes(1000)));
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(server.requestCount(), 1);
    QVERIFY(server.request(0).body.contains("there.dmp"));
}

void TestHttpUploader::folderIsNotSent()
{
    const Workplace place;
    HttpServer server;
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(place.folder());
    QVERIFY(messages.first().startsWith(place.folder() + QStringLiteral(" cannot be sent: ")));
    uploader.uploadDump(writeFile(place.path(QStringLiteral("a.dmp")), dumpBytes(1000)));
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(server.requestCount(), 1);
}

void TestHttpUploader::fileThatVanishesOnTheWay()
{
    const Workplace place;
    const QByteArray bytes = dumpBytes(8 * 1024 * 1024);
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), bytes);
    HttpServer server;
    // An open file stays readable, or cannot be removed at all: the server gets the whole of it either way.
    connect(&server, &HttpServer::bodyBytesReceived, this, [&] { QFile::remove(dump); });
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(dump);
    QVERIFY(finished.wait(waitMs));
    const HttpRequest &request = server.request(0);
    QVERIFY(request.body == expectedBody(boundaryOf(request), "TessalyNDIVexa", "1.2.3", "a.dmp", bytes));
    QVERIFY(!QFile::exists(dump));
    QVERIFY(messages.contains(QStringLiteral("Upload to ") + server.url(QStringLiteral("/")).toString()
                              + QStringLiteral(" success!")));
}

void TestHttpUploader::serverThatClosesInTheMiddleOfTheBody()
{
    const Workplace place;
    const QByteArray bytes = dumpBytes(8 * 1024 * 1024);
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), bytes);
    expectWarning(QStringLiteral("Upload error: "));
    HttpServer server;
    server.setCutAfter(100000);
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(dump);
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(finished.count(), 1);
    QVERIFY(!server.request(0).isWhole);
    QVERIFY(contents(dump) == bytes);
    const QStringList told = storedMessages();
    QCOMPARE(told.size(), 4);
    QVERIFY2(told.last().startsWith(QLatin1String("warning: Upload error: ")), qPrintable(told.last()));
}

void TestHttpUploader::serverThatClosesInTheMiddleOfItsAnswer()
{
    const Workplace place;
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), dumpBytes(1000));
    expectWarning(QStringLiteral("Upload error: 2 - "));
    HttpServer server;
    server.setRawAnswer("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nCrashID=");
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(dump);
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(finished.first().first().toString(), QStringLiteral("CrashID="));
    QCOMPARE(contents(dump), dumpBytes(1000));
    QVERIFY(messages.contains(QStringLiteral("QNetworkReply::RemoteHostClosedError")));
}

void TestHttpUploader::refusalThatComesBeforeTheBody()
{
    const Workplace place;
    const QByteArray bytes = dumpBytes(8 * 1024 * 1024);
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), bytes);
    expectWarning(QStringLiteral("Upload error: 299 - "));
    HttpServer server;
    server.setAnswer(413, "Payload Too Large", "too large");
    server.setWhen(HttpServer::When::head);
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    uploader.uploadDump(dump);
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(finished.first().first().toString(), QStringLiteral("too large"));
    QVERIFY(contents(dump) == bytes);
}

void TestHttpUploader::destroyedOnTheWay()
{
    const Workplace place;
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), dumpBytes(1000));
    expectWarning(QStringLiteral("m_reply is not NULL"));
    HttpServer server;
    server.setWhen(HttpServer::When::never);
    QSignalSpy received(&server, &HttpServer::bodyBytesReceived);
    QSignalSpy disconnected(&server, &HttpServer::disconnected);
    auto uploader = std::make_unique<QBreakpadHttpUploader>(server.url(QStringLiteral("/")));
    QSignalSpy finished(uploader.get(), &QBreakpadHttpUploader::finished);
    uploader->uploadDump(dump);
    QVERIFY(received.wait(waitMs));
    uploader.reset();
    QCOMPARE(storedMessages(), QStringList{QStringLiteral("warning: m_reply is not NULL")});
    QTRY_COMPARE_WITH_TIMEOUT(disconnected.count(), 1, waitMs);
    QCOMPARE(finished.count(), 0);
    QCOMPARE(contents(dump), dumpBytes(1000));
}

void TestHttpUploader::secondDumpOnTheWayIsNotSent()
{
    const Workplace place;
    HttpServer server;
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    const QString first = writeFile(place.path(QStringLiteral("first.dmp")), dumpBytes(1000));
    const QString second = writeFile(place.path(QStringLiteral("second.dmp")), dumpBytes(2000));
    uploader.uploadDump(first);
    uploader.uploadDump(second);
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(server.requestCount(), 1);
    QVERIFY(server.request(0).body.contains("first.dmp"));
    QVERIFY(!QFile::exists(first));
    QCOMPARE(contents(second), dumpBytes(2000));
}

void TestHttpUploader::nextDumpFromTheSlot()
{
    const Workplace place;
    HttpServer server;
    QBreakpadHttpUploader uploader(server.url(QStringLiteral("/")));
    const QString next = writeFile(place.path(QStringLiteral("next.dmp")), dumpBytes(2000));
    QSignalSpy finished(&uploader, &QBreakpadHttpUploader::finished);
    connect(&uploader, &QBreakpadHttpUploader::finished, this, [&] { uploader.uploadDump(next); });
    uploader.uploadDump(writeFile(place.path(QStringLiteral("first.dmp")), dumpBytes(1000)));
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, waitMs);
    QCOMPARE(server.requestCount(), 2);
    QVERIFY(server.request(1).body.contains("next.dmp"));
    QVERIFY(!QFile::exists(next));
}

void TestHttpUploader::deletedInTheSlot()
{
    const Workplace place;
    HttpServer server;
    auto uploader = std::make_unique<QBreakpadHttpUploader>(server.url(QStringLiteral("/")));
    connect(uploader.get(), &QBreakpadHttpUploader::finished, this, [&] { uploader.reset(); });
    const QString dump = writeFile(place.path(QStringLiteral("a.dmp")), dumpBytes(1000));
    uploader->uploadDump(dump);
    QTRY_VERIFY_WITH_TIMEOUT(!uploader, waitMs);
    QVERIFY(!QFile::exists(dump));
    QVERIFY(!messages.contains(QStringLiteral("warning: m_reply is not NULL")));
}

QTEST_GUILESS_MAIN(TestHttpUploader)
#include "tst_httpuploader.moc"
