#include "probes/loadreader_linux.h"

#include "probes/childoutput.h"
#include "probes/drmclients_linux.h"
#include "probes/gpuloadtext.h"
#include "probes/graphicsdriver.h"
#include "probes/procstat.h"
#include "probes/startoffile_linux.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {

/// Empty when the file cannot be read. An adapter that sleeps is not woken up for it.
std::optional<double> amdPercent(const QString &deviceFolder)
{
    if (readStartOfFile(deviceFolder + QLatin1String("/power/runtime_status"), 64).trimmed() == "suspended")
        return 0.0;
    return sumOfLines(readStartOfFile(deviceFolder + QLatin1String("/gpu_busy_percent"), 64));
}

qint64 steadyNs()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

LinuxLoadReader::LinuxLoadReader(ProcessorLoad &processor, QString root)
    : m_processor(processor), m_root(std::move(root))
{
}

LinuxLoadReader::~LinuxLoadReader() = default;

std::optional<int> LinuxLoadReader::processorPercent()
{
    return m_processor.add(readStartOfFile(m_root + QLatin1String("/proc/stat"), 512));
}

std::optional<int> LinuxLoadReader::graphicsPercent(const LoadAbort &abort)
{
    if (!m_hasLooked)
        findAdapters();
    std::optional<double> sum;
    const auto add = [&sum](std::optional<double> percent) {
        if (percent)
            sum = sum.value_or(0.0) + *percent;
    };
    if (!m_nvidiaTool.isEmpty()) {
        const QStringList arguments{QStringLiteral("--query-gpu=utilization.gpu"),
                                    QStringLiteral("--format=csv,noheader,nounits")};
        const std::optional<QByteArray> output = childOutput(m_nvidiaTool, arguments, std::chrono::seconds(30), abort);
        if (output)
            add(sumOfLines(*output));
    }
    for (const QString &folder : m_amdFolders)
        add(amdPercent(folder));
    if (m_intel)
        add(m_intel->busyPercent(steadyNs()));
    return sum ? std::optional<int>(wholePercent(*sum)) : std::nullopt;
}

void LinuxLoadReader::findAdapters()
{
    m_hasLooked = true;
    if (!QDir(m_root + QLatin1String("/proc/driver/nvidia/gpus"))
             .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
             .isEmpty())
        m_nvidiaTool = QStandardPaths::findExecutable(QStringLiteral("nvidia-smi"));
    const QDir cards(m_root + QLatin1String("/sys/class/drm"));
    for (const QString &card : cards.entryList({QStringLiteral("card*")}, QDir::Dirs)) {
        if (card.contains(QLatin1Char('-'))) // a connector of a card
            continue;
        const QString device = cards.filePath(card) + QLatin1String("/device");
        if (QFile::exists(device + QLatin1String("/gpu_busy_percent")))
            m_amdFolders.append(device);
        const QByteArray facts = '\n' + readStartOfFile(device + QLatin1String("/uevent"), 1024) + '\n';
        if (!m_intel && (facts.contains("\nDRIVER=i915\n") || facts.contains("\nDRIVER=xe\n")))
            m_intel = std::make_unique<DrmClients>(QFile::encodeName(m_root) + "/proc");
    }
}

std::unique_ptr<LoadReader> makeLoadReader()
{
    static ProcessorLoad processor; // a second sampler goes on from the last reading of the first
    initialiseGraphicsDriver();
    return std::make_unique<LinuxLoadReader>(processor, QString());
}
