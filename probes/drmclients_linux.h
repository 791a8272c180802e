#pragma once

#include "probes/gpuloadtext.h"

#include <dirent.h>

#include <memory>
#include <vector>

/// Load of Intel's graphics adapters, gathered from the open descriptors of the processes that we may
/// look into. Each call does a bounded amount of work, so a program that begins to draw is found after
/// some seconds. Not thread-safe.
class DrmClients final {
public:
    static constexpr int looksPerCycle = 128; ///< processes and descriptors looked at by one call
    static constexpr int mostClients = 32;    ///< more users than these are left out

    /// procFolder: "/proc", or a tree like it.
    explicit DrmClients(QByteArray procFolder);

    /// Percent of one engine since the previous call, summed over engines, users and adapters; a user
    /// counts from the call after the one that found it. nowNs: steady clock.
    double busyPercent(qint64 nowNs);

    int clientCount() const { return static_cast<int>(m_clients.size()); }

private:
    struct FolderCloser {
        void operator()(DIR *folder) const noexcept { closedir(folder); }
    };
    using Folder = std::unique_ptr<DIR, FolderCloser>;
    struct Client {
        QByteArray path; ///< of the descriptor's text
        DrmUsage usage;
        qint64 readNs = 0;
    };

    double readClients(qint64 nowNs);
    void lookForClients(qint64 nowNs);
    bool openNextProcess();
    void lookAtDescriptor(const char *name, qint64 nowNs);
    bool isKnown(const DrmUsage &usage) const;

    QByteArray m_procFolder;
    std::vector<Client> m_clients;
    Folder m_processes;         ///< where the present round stands; null between rounds
    Folder m_descriptors;       ///< of the process being looked at; null between two of them
    QByteArray m_processFolder; ///< of that process
};
