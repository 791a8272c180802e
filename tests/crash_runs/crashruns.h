#pragma once

#include "tests/support/programrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtTest>

#include <memory>
#include <utility>
#include <vector>

// The real program, made to crash by its runtime.

#ifdef Q_OS_WIN
constexpr bool isWindows = true;
#else
constexpr bool isWindows = false;
#endif

inline QByteArray crashScenario(const QByteArray &kind, const QByteArray &call)
{
    return R"({"crash": {"kind": ")" + kind + R"(", "in": ")" + call + R"("}})";
}

inline QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

/// What the process ends with: on Windows a status, elsewhere a signal.
inline int crashEnding(const QByteArray &kind)
{
    if (!isWindows)
        return kind == "abort" || kind == "pureVirtual" ? 6 : 11;
    if (kind == "abort")
        return 3;
    return kind == "stackOverflow" ? int(0xC00000FD) : int(0xC0000005);
}

/// Runs of one life of the program, each of which crashes. Under Wine a dump takes seconds, in which the program mostly
/// waits: so each is started before the one before it has ended.
class CrashRuns final {
public:
    CrashRuns(QString life, QStringList arguments) : m_life(std::move(life)), m_arguments(std::move(arguments)) {}

    void add(const QByteArray &kind, const QByteArray &call)
    {
        auto run = std::make_unique<ProgramRun>(m_arguments);
        run->setScenario(crashScenario(kind, call));
        m_crashes.push_back({kind, m_life.toLatin1() + '-' + kind + '-' + call, std::move(run)});
    }

    /// Rows for check().
    void addRows() const
    {
        QTest::addColumn<int>("index");
        for (std::size_t i = 0; i < m_crashes.size(); ++i)
            QTest::newRow(m_crashes[i].name.constData()) << int(i);
    }

    /// Whether the run ended as it should and left a dump, which is kept as keepIn/LIFE-KIND-CALL.dmp.
    void check(int index, const QString &keepIn)
    {
        const Crash &crash = m_crashes[std::size_t(index)];
        ProgramRun &run = *crash.run;
        for (; m_started < m_crashes.size() && m_started < std::size_t(index) + 2; ++m_started)
            m_crashes[m_started].run->start();
        QVERIFY2(run.waitForFinished(200000), run.account());
        const bool endsByStatus = isWindows && crash.kind == "abort";
        QVERIFY2(run.process().exitStatus() == (endsByStatus ? QProcess::NormalExit : QProcess::CrashExit),
                 run.account());
        QCOMPARE(run.process().exitCode(), crashEnding(crash.kind));

        const QString folder = QDir(run.folder()).canonicalPath() + QStringLiteral("/crashes");
        const QStringList dumps = entriesOf(folder);
        QVERIFY2(dumps.size() == 1, run.account());
        QVERIFY(dumps.first().endsWith(QLatin1String(".dmp")));
        const QString path = folder + QLatin1Char('/') + dumps.first();
        QFile dump(path);
        QVERIFY(dump.open(QIODevice::ReadOnly));
        QCOMPARE(dump.read(4), QByteArray("MDMP"));
        QVERIFY(dump.size() > 10000);
        const QByteArray told = "Succeed to write minidump, dump path: " + QDir::toNativeSeparators(folder).toUtf8()
                                + '/' + QFileInfo(path).completeBaseName().toUtf8() + '\n';
        QVERIFY2(run.standardError().contains(told), run.account());
        QVERIFY(!QDir(QFileInfo(ProgramRun::programPath()).path()).exists(QStringLiteral("crashes")));

        QVERIFY(QDir().mkpath(keepIn));
        const QString kept = keepIn + QLatin1Char('/') + QString::fromLatin1(crash.name) + QStringLiteral(".dmp");
        QFile::remove(kept);
        QVERIFY(QFile::copy(path, kept));
    }

private:
    struct Crash {
        QByteArray kind;
        QByteArray name;
        std::unique_ptr<ProgramRun> run;
    };
    const QString m_life;
    const QStringList m_arguments;
    std::vector<Crash> m_crashes;
    std::size_t m_started = 0; ///< runs, in their order
};
