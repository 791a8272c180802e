#include "probes/loadreader.h"

#include "probes/childoutput.h"
#include "probes/gpuloadtext.h"
#include "probes/graphicsdriver.h"

#include <windows.h>

#include <pdh.h>

#include <mutex>

namespace {

/// The processor time counter of the performance library, open until the process ends.
class ProcessorCounter final {
public:
    std::optional<int> read()
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        if (!m_query) {
            if (PdhOpenQueryW(nullptr, 0, &m_query) != ERROR_SUCCESS) {
                m_query = nullptr;
                return std::nullopt;
            }
            // The English name is understood on every Windows, whatever its language.
            PdhAddEnglishCounterW(m_query, L"\\Processor(_Total)\\% Processor Time", 0, &m_counter);
            PdhCollectQueryData(m_query);
            return std::nullopt; // a rate needs two collections
        }
        PdhCollectQueryData(m_query);
        PDH_FMT_COUNTERVALUE value{};
        if (PdhGetFormattedCounterValue(m_counter, PDH_FMT_DOUBLE, nullptr, &value) != ERROR_SUCCESS)
            return std::nullopt;
        return qBound(0, wholePercent(value.doubleValue), 100);
    }

private:
    std::mutex m_mutex; // guards both handles
    PDH_HQUERY m_query = nullptr;
    PDH_HCOUNTER m_counter = nullptr;
};

class WindowsLoadReader final : public LoadReader {
public:
    std::optional<int> processorPercent() override
    {
        static ProcessorCounter counter;
        return counter.read();
    }

    std::optional<int> graphicsPercent(const LoadAbort &abort) override
    {
        const QString shell = QStringLiteral("C:\\Windows\\System32\\WindowsPowerShell\\v1.0\\powershell.exe");
        const QStringList arguments{
            QStringLiteral("-Command"),
            QStringLiteral("Write-Output (((Get-Counter \"\\GPU Engine(*engtype_3D)\\Utilization "
                           "Percentage\").CounterSamples | where CookedValue).CookedValue | measure -sum).sum")};
        const std::optional<QByteArray> output = childOutput(shell, arguments, std::chrono::seconds(30), abort);
        return output ? percentOfFirstLine(*output) : std::nullopt;
    }
};

} // namespace

std::unique_ptr<LoadReader> makeLoadReader()
{
    initialiseGraphicsDriver();
    return std::make_unique<WindowsLoadReader>();
}
