#include "app/firstpaint.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QProcess>
#include <QTextStream>
#include <QWidget>

#include <algorithm>

// How long it takes from the start of the program to its first painted window, beside a Qt program with an empty one.
// Needs a display. Usage: startup_bench [RUNS]

namespace {

constexpr int longestStartMs = 60000;

int showEmptyWindow(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QWidget window;
    window.resize(1752, 1018);
    window.show();
    logFirstPaint(&window);
    return QApplication::exec();
}

/// Milliseconds from the start of the program to its word that the window is painted; -1 when that did not come.
double startMs(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("vexa.startup.debug=true"));
    environment.insert(QStringLiteral("NDI_RUNTIME_DIR_V6"), QStringLiteral(VEXA_LOOPBACK_DIR));
    process.setProcessEnvironment(environment);
    QElapsedTimer clock;
    clock.start();
    process.setReadChannel(QProcess::StandardError);
    process.start(program, arguments);
    QByteArray said;
    double elapsedMs = -1;
    while (clock.elapsed() < longestStartMs && process.waitForReadyRead(longestStartMs)) {
        said += process.readAllStandardError();
        if (said.contains("window painted")) {
            elapsedMs = static_cast<double>(clock.nsecsElapsed()) / 1e6;
            break;
        }
    }
    process.kill();
    process.waitForFinished();
    return elapsedMs;
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc > 1 && qstrcmp(argv[1], "--empty") == 0)
        return showEmptyWindow(argc, argv);
    QCoreApplication application(argc, argv);
    const int runs = argc > 1 ? qMax(1, QByteArray(argv[1]).toInt()) : 11;
    QVector<double> empty;
    QVector<double> ours;
    // By turns, so that what else the machine does falls on both.
    for (int i = 0; i <= runs; ++i) {
        const double emptyMs = startMs(QCoreApplication::applicationFilePath(), {QStringLiteral("--empty")});
        const double oursMs = startMs(QStringLiteral(VEXA_PROGRAM), {});
        if (emptyMs < 0 || oursMs < 0) {
            QTextStream(stderr) << "startup_bench: a program showed no window\n";
            return 1;
        }
        if (i > 0) { // the first round fills the caches
            empty.append(emptyMs);
            ours.append(oursMs);
        }
    }
    QTextStream(stdout) << "empty Qt window: " << median(empty) << " ms\nTessalyNDIVexa:  " << median(ours)
                        << " ms\ndifference:      " << median(ours) - median(empty) << " ms (medians of " << runs
                        << " runs)\n";
    return 0;
}
