#include "loopback/truthreader.h"
#include "ndi/nditypes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLibrary>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using loopback::countTruth;
using loopback::readTruth;
using loopback::TruthRecord;

namespace {

#ifdef Q_OS_WIN
const QString kFileName = QStringLiteral("Processing.NDI.Lib.x64.dll");
#else
const QString kFileName = QStringLiteral("libndi.so.6");
#endif

/// The library through its exported names, as a program sees it.
struct Functions {
    QLibrary library{QStringLiteral(VEXA_LOOPBACK_DIR "/") + kFileName};

    template <typename Function>
    Function get(const char *name)
    {
        const auto function = reinterpret_cast<Function>(library.resolve(name));
        if (function == nullptr)
            qFatal("%s: %s", name, qPrintable(library.errorString()));
        return function;
    }

    bool (*initialize)() = get<bool (*)()>("NDIlib_initialize");
    void (*destroy)() = get<void (*)()>("NDIlib_destroy");
    const char *(*version)() = get<const char *(*)()>("NDIlib_version");
    NDIlib_find_instance_t (*findCreate)(const NDIlib_find_create_t *) =
        get<decltype(findCreate)>("NDIlib_find_create_v2");
    bool (*findWait)(NDIlib_find_instance_t, std::uint32_t) = get<decltype(findWait)>("NDIlib_find_wait_for_sources");
    const NDIlib_source_t *(*findCurrent)(NDIlib_find_instance_t, std::uint32_t *) =
        get<decltype(findCurrent)>("NDIlib_find_get_current_sources");
    void (*findDestroy)(NDIlib_find_instance_t) = get<decltype(findDestroy)>("NDIlib_find_destroy");
    NDIlib_recv_instance_t (*create)(const NDIlib_recv_create_v3_t *) = get<decltype(create)>("NDIlib_recv_create_v3");
    NDIlib_frame_type_e (*capture)(NDIlib_recv_instance_t, NDIlib_video_frame_v2_t *, NDIlib_audio_frame_v2_t *,
                                   NDIlib_metadata_frame_t *,
                                   std::uint32_t) = get<decltype(capture)>("NDIlib_recv_capture_v2");
    void (*freeVideo)(NDIlib_recv_instance_t,
                      const NDIlib_video_frame_v2_t *) = get<decltype(freeVideo)>("NDIlib_recv_free_video_v2");
    void (*freeAudio)(NDIlib_recv_instance_t,
                      const NDIlib_audio_frame_v2_t *) = get<decltype(freeAudio)>("NDIlib_recv_free_audio_v2");
    void (*performance)(NDIlib_recv_instance_t, NDIlib_recv_performance_t *,
                        NDIlib_recv_performance_t *) = get<decltype(performance)>("NDIlib_recv_get_performance");
    void (*receiverDestroy)(NDIlib_recv_instance_t) = get<decltype(receiverDestroy)>("NDIlib_recv_destroy");
};

NDIlib_recv_instance_t connectTo(const Functions &ndi, const char *name)
{
    NDIlib_recv_create_v3_t settings;
    settings.source_to_connect_to.p_ndi_name = name;
    // cppcheck-suppress returnDanglingLifetime ; the runtime keeps nothing of the settings
    return ndi.create(&settings);
}

/// The list as soon as it holds `count` sources, one per line.
std::string listOf(const Functions &ndi, std::uint32_t count)
{
    const NDIlib_find_instance_t finder = ndi.findCreate(nullptr);
    std::uint32_t found = 0;
    const NDIlib_source_t *list = ndi.findCurrent(finder, &found);
    while (found < count) {
        ndi.findWait(finder, 1000);
        list = ndi.findCurrent(finder, &found);
    }
    std::string text;
    for (std::uint32_t i = 0; i < found; ++i)
        text += std::string(list[i].p_ndi_name) + '\n';
    ndi.findDestroy(finder);
    return text;
}

void captureAndFree(const Functions &ndi, NDIlib_recv_instance_t receiver, int count)
{
    NDIlib_video_frame_v2_t video;
    while (count > 0) {
        if (ndi.capture(receiver, &video, nullptr, nullptr, 1000) == NDIlib_frame_type_video) {
            ndi.freeVideo(receiver, &video);
            --count;
        }
    }
}

/// What the child process does; the library reads its settings once per process. Its answer goes
/// to standard output.
int runChild(const QString &task)
{
    Functions ndi;
    if (task == QLatin1String("start")) {
        const bool initialized = ndi.initialize();
        const bool finder = ndi.findCreate(nullptr) != nullptr;
        const bool receiver = connectTo(ndi, "x") != nullptr;
        std::printf("initialize %d finder %d receiver %d\n", initialized, finder, receiver);
        ndi.destroy();
    } else if (task == QLatin1String("list")) {
        std::fputs(listOf(ndi, 4).c_str(), stdout);
    } else if (task == QLatin1String("list-all")) {
        std::fputs(listOf(ndi, 2000).c_str(), stdout);
    } else if (task == QLatin1String("leave-suddenly")) {
        const NDIlib_recv_instance_t receiver = connectTo(ndi, "LOOPBACK (1080p59.94)");
        connectTo(ndi, "LOOPBACK (2160p25)"); // a second thread at work
        captureAndFree(ndi, receiver, 20);
        std::_Exit(42);
    } else if (task == QLatin1String("leave-politely")) {
        const NDIlib_recv_instance_t receiver = connectTo(ndi, "LOOPBACK (720p50)");
        captureAndFree(ndi, receiver, 10);
        return 7; // neither the receiver nor the library is ended
    } else if (task == QLatin1String("whole-life")) {
        ndi.initialize();
        const NDIlib_recv_instance_t receiver = connectTo(ndi, "LOOPBACK (1080p59.94)");
        captureAndFree(ndi, receiver, 5);
        NDIlib_recv_performance_t total;
        NDIlib_recv_performance_t dropped;
        ndi.performance(receiver, &total, &dropped);
        ndi.receiverDestroy(receiver);
        ndi.destroy();
        ndi.library.unload();
        std::printf("%d %d\n", int(total.video_frames >= 5), int(dropped.video_frames));
    } else if (task == QLatin1String("many-frames")) {
        const NDIlib_recv_instance_t receiver = connectTo(ndi, "LOOPBACK (2160p25)");
        captureAndFree(ndi, receiver, 1000); // paced, these would take 40 s
        ndi.receiverDestroy(receiver);
    }
    return 0;
}

} // namespace

/// The library itself: loaded by its file, set up by the environment, each time in a process of
/// its own.
class TestLoopbackRuntime final : public QObject {
    Q_OBJECT

private slots:
    void folderHoldsNothingElse();
    void greetsWhenItLoads();
    void defaultSources();
    void sourcesOfAScenarioFile();
    void badScenario_data();
    void badScenario();
    void failuresOnRequest();
    void truthSurvivesASuddenEnd();
    void truthFileOfGivenLength();
    void endWithThreadsRunning();
    void wholeLifeAndUnload();
    void unpacedByEnvironment();
    void truthThatCannotBeWritten();

private:
    struct Result {
        int exitCode = -1;
        QByteArray output;
        QByteArray errors;
    };
    Result run(const char *task, const QString &scenario = {}, const QString &truth = {}, const QStringList &more = {});
    QString scenarioFile(const QByteArray &json);

    QTemporaryDir m_folder;
    int m_files = 0;
};

namespace {

const QByteArray kGreeting = "Loopback NDI runtime: made-up sources for tests and demonstrations";

QByteArray unixLines(QByteArray text)
{
    return text.replace("\r\n", "\n");
}

} // namespace

TestLoopbackRuntime::Result TestLoopbackRuntime::run(const char *task, const QString &scenario, const QString &truth,
                                                     const QStringList &more)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString prefix = QStringLiteral("VEXA_LOOPBACK_");
    for (const QString &name : environment.keys()) {
        if (name.startsWith(prefix))
            environment.remove(name);
    }
    environment.insert(QStringLiteral("VEXA_TEST_CHILD"), QString::fromLatin1(task));
    environment.insert(prefix + QStringLiteral("SCENARIO"), scenario);
    environment.insert(prefix + QStringLiteral("TRUTH"), truth);
    for (const QString &setting : more)
        environment.insert(prefix + setting.section(QLatin1Char('='), 0, 0), setting.section(QLatin1Char('='), 1));
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), QStringList());
    Result result;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    result.output = unixLines(process.readAllStandardOutput());
    result.errors = unixLines(process.readAllStandardError());
    return result;
}

QString TestLoopbackRuntime::scenarioFile(const QByteArray &json)
{
    QString path = m_folder.filePath(QString::fromUtf8("szenario ä %1.json").arg(++m_files));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size())
        qFatal("cannot write a scenario file");
    return path;
}

void TestLoopbackRuntime::folderHoldsNothingElse()
{
    QCOMPARE(QDir(QStringLiteral(VEXA_LOOPBACK_DIR)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList(kFileName));
}

void TestLoopbackRuntime::greetsWhenItLoads()
{
    const Result result = run("start");
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.errors, kGreeting + '\n');
    QCOMPARE(result.output, QByteArray("initialize 1 finder 1 receiver 1\n"));
}

void TestLoopbackRuntime::defaultSources()
{
    QCOMPARE(run("list").output, QByteArray("LOOPBACK (1080p59.94)\nLOOPBACK (2160p25)\nLOOPBACK (720p50)\n"
                                            "LOOPBACK (1080p29.97 jittery)\n"));
}

void TestLoopbackRuntime::sourcesOfAScenarioFile()
{
    const QString scenario = scenarioFile("{\"sources\": [{\"name\": \"K\xc3\xa4se %1\", \"repeat\": 2000}]}");
    const QList<QByteArray> names = run("list-all", scenario).output.trimmed().split('\n');
    QCOMPARE(names.size(), 2000);
    QCOMPARE(names.first(), QByteArray("K\xc3\xa4se 1"));
    QCOMPARE(names.last(), QByteArray("K\xc3\xa4se 2000"));
}

void TestLoopbackRuntime::badScenario_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("not JSON") << QByteArray("{\n!") << QByteArray("line 2, column 1: not JSON\n");
    QTest::newRow("wrong value") << QByteArray(R"({"sources": [{"name": "x"}, {"name": "y", "width": "wide"}]})")
                                 << QByteArray(
                                        "sources[1].width: must be a whole number from -2147483648 to 2147483647\n");
    QTest::newRow("no file") << QByteArray() << QByteArray("cannot be read: ");
}

void TestLoopbackRuntime::badScenario()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, reason);
    const QString path = json.isEmpty() ? m_folder.filePath(QStringLiteral("missing.json")) : scenarioFile(json);
    const Result result = run("start", path);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output, QByteArray("initialize 0 finder 0 receiver 0\n"));
    const QByteArray expected = kGreeting + "\nLoopback NDI runtime: scenario " + path.toUtf8() + ": " + reason;
    QCOMPARE(result.errors.left(expected.size()), expected);
    QCOMPARE(result.errors.count('\n'), 2); // one line for it, and no more
}

void TestLoopbackRuntime::failuresOnRequest()
{
    const QString scenario = scenarioFile(R"({"initialize": false, "finderFails": true, "receiverFails": true})");
    QCOMPARE(run("start", scenario).output, QByteArray("initialize 0 finder 0 receiver 0\n"));
    QCOMPARE(run("start", scenarioFile(R"({"initialize": false})")).output,
             QByteArray("initialize 0 finder 1 receiver 1\n"));
}

void TestLoopbackRuntime::truthSurvivesASuddenEnd()
{
    const QString path = m_folder.filePath(QString::fromUtf8("wahrheit ä.txt"));
    QCOMPARE(run("leave-suddenly", {}, path).exitCode, 42);
    const std::vector<TruthRecord> truth = readTruth(path.toStdString());
    QCOMPARE(countTruth(truth, "create"), std::int64_t{2});
    QCOMPARE(countTruth(truth, "video", 0), std::int64_t{20});
    QCOMPARE(countTruth(truth, "free", 0), std::int64_t{20});
    QCOMPARE(countTruth(truth, "destroy"), std::int64_t{0});
    QCOMPARE(QFileInfo(path).size(), qint64(1 << 20) * 64);
    std::int64_t beforeNs = 0;
    std::int64_t number = 0;
    for (const TruthRecord &record : truth) {
        if (record.kind != "video")
            continue;
        QCOMPARE(record.number, number++);
        QVERIFY(record.timeNs > beforeNs);
        QCOMPARE(record.note, std::string("1920x1080"));
        beforeNs = record.timeNs;
    }
}

void TestLoopbackRuntime::truthFileOfGivenLength()
{
    const QString path = m_folder.filePath(QStringLiteral("short.txt"));
    QCOMPARE(run("leave-suddenly", {}, path, {QStringLiteral("TRUTH_RECORDS=10")}).exitCode, 42);
    QCOMPARE(QFileInfo(path).size(), qint64(640));
    const std::vector<TruthRecord> truth = readTruth(path.toStdString());
    QCOMPARE(truth.size(), std::size_t{10});
    QCOMPARE(truth.back().kind, std::string("full"));
    QVERIFY(truth.back().number >= 2 + 40 - 9);
}

void TestLoopbackRuntime::endWithThreadsRunning()
{
    for (int i = 0; i < 5; ++i)
        QCOMPARE(run("leave-politely").exitCode, 7);
}

void TestLoopbackRuntime::wholeLifeAndUnload()
{
    const Result result = run("whole-life");
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output, QByteArray("1 0\n"));
}

void TestLoopbackRuntime::unpacedByEnvironment()
{
    const QString path = m_folder.filePath(QStringLiteral("unpaced.txt"));
    QCOMPARE(run("many-frames", {}, path, {QStringLiteral("UNPACED=1")}).exitCode, 0);
    const std::vector<TruthRecord> truth = readTruth(path.toStdString());
    QCOMPARE(countTruth(truth, "video"), std::int64_t{1000});
    QVERIFY(truth.back().timeNs - truth.front().timeNs < 20'000'000'000);
}

void TestLoopbackRuntime::truthThatCannotBeWritten()
{
    const Result result = run("start", {}, m_folder.filePath(QStringLiteral("missing/truth.txt")));
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.errors.contains("Loopback NDI runtime: truth file "));
    QCOMPARE(result.output, QByteArray("initialize 1 finder 1 receiver 1\n")); // and all else works
}

int main(int argc, char *argv[])
{
    const QString task = QString::fromLatin1(qgetenv("VEXA_TEST_CHILD"));
    if (!task.isEmpty())
        return runChild(task);
    QCoreApplication application(argc, argv);
    TestLoopbackRuntime test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_loopback_runtime.moc"
