// A test as the receivers feed it, to be killed: eight threads of 60 rows a second. Each row that was handed
// over is then written to the file that is the first argument; the journal is where the environment says. A dot on
// standard output tells that the test has begun.
#include "app/testrecorder.h"

#include <QCoreApplication>
#include <QFile>

#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr int receivers = 8;
constexpr std::chrono::microseconds interval(16667);

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QFile truth(QString::fromLocal8Bit(argv[1]));
    if (argc != 2 || !truth.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return 1;
    std::mutex mutex; // guards truth
    TestRecorder recorder;
    recorder.begin({QStringLiteral("KILLED, 1"), QString::fromUtf8("B\xc3\xbchne")});
    std::fputc('.', stdout);
    std::fflush(stdout);
    const auto begin = std::chrono::steady_clock::now();
    std::vector<std::thread> threads;
    for (int receiver = 0; receiver < receivers; ++receiver) {
        threads.emplace_back([&, receiver] {
            const std::shared_ptr<MeasurementSink> sink = recorder.sink();
            auto next = begin + receiver * interval / receivers;
            int lastMs = 0;
            for (;;) {
                std::this_thread::sleep_until(next);
                next += interval;
                const auto elapsed = std::chrono::steady_clock::now() - begin;
                const auto nowMs = int(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
                const Measurement row{
                    1000.0 / (nowMs - lastMs + 1), 60.0, nowMs, 1920, 1080, nowMs - lastMs, receiver % 2, receiver};
                lastMs = nowMs;
                sink->add(row);
                const std::lock_guard<std::mutex> locker(mutex);
                truth.write(reinterpret_cast<const char *>(&row), qint64(sizeof row));
            }
        });
    }
    threads.front().join(); // never: somebody kills this process
    return 0;
}
