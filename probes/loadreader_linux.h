#pragma once

#include "probes/loadreader.h"

#include <QString>
#include <QStringList>

#include <optional>

class DrmClients;
class ProcessorLoad;

/// Reads the load from /proc, /sys and, on a machine with an NVIDIA adapter, nvidia-smi. Which adapters
/// there are is found out once, in the first cycle.
class LinuxLoadReader final : public LoadReader {
public:
    /// root: stands before "/proc" and "/sys", empty for the real ones. processor outlives the reader.
    LinuxLoadReader(ProcessorLoad &processor, QString root);
    ~LinuxLoadReader() override;

    std::optional<int> processorPercent() override;
    std::optional<int> graphicsPercent(const LoadAbort &abort) override;

private:
    void findAdapters();

    ProcessorLoad &m_processor;
    QString m_root;
    bool m_hasLooked = false;
    QString m_nvidiaTool;                ///< empty without an NVIDIA adapter
    QStringList m_amdFolders;            ///< one for each AMD adapter
    std::unique_ptr<DrmClients> m_intel; ///< null without an Intel adapter
};
