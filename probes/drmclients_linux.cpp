#include "probes/drmclients_linux.h"

#include "probes/startoffile_linux.h"

#include <QFile>

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

constexpr qint64 enoughBytes = 4096; ///< of what /proc tells of one descriptor

bool startsWithDigit(const char *name)
{
    return std::isdigit(static_cast<unsigned char>(name[0])) != 0;
}

} // namespace

DrmClients::DrmClients(QByteArray procFolder) : m_procFolder(std::move(procFolder)) {}

double DrmClients::busyPercent(qint64 nowNs)
{
    const double percent = readClients(nowNs);
    lookForClients(nowNs);
    return percent;
}

double DrmClients::readClients(qint64 nowNs)
{
    double percent = 0.0;
    const auto update = [&percent, nowNs](Client &client) {
        const std::optional<DrmUsage> usage =
            parseDrmUsage(readStartOfFile(QFile::decodeName(client.path), enoughBytes));
        // Another user under the same number: the process ended, or opened something else.
        if (!usage || usage->clientId != client.usage.clientId || usage->adapter != client.usage.adapter)
            return false;
        percent += drmBusyPercent(client.usage, *usage, nowNs - client.readNs);
        client.usage = *usage;
        client.readNs = nowNs;
        return true;
    };
    std::vector<Client> alive;
    for (Client &client : m_clients) {
        if (update(client))
            alive.push_back(std::move(client));
    }
    m_clients = std::move(alive);
    return percent;
}

void DrmClients::lookForClients(qint64 nowNs)
{
    if (!m_processes)
        m_processes.reset(opendir(m_procFolder.constData()));
    for (int looks = 0; m_processes && looks < looksPerCycle; ++looks) {
        if (!m_descriptors && !openNextProcess()) {
            m_processes.reset(); // the next call begins another round
            return;
        }
        const dirent *const entry = m_descriptors ? readdir(m_descriptors.get()) : nullptr;
        if (!entry)
            m_descriptors.reset();
        else if (startsWithDigit(entry->d_name))
            lookAtDescriptor(entry->d_name, nowNs);
    }
}

/// Goes to the next process, which may turn out to be closed to us. False at the end of the round.
bool DrmClients::openNextProcess()
{
    const dirent *entry = readdir(m_processes.get());
    while (entry && !startsWithDigit(entry->d_name))
        entry = readdir(m_processes.get());
    if (!entry)
        return false;
    m_processFolder = m_procFolder + '/' + entry->d_name;
    m_descriptors.reset(opendir((m_processFolder + "/fd").constData()));
    return true;
}

void DrmClients::lookAtDescriptor(const char *name, qint64 nowNs)
{
    constexpr char deviceFolder[] = "/dev/dri/";
    char target[sizeof deviceFolder - 1];
    const ssize_t length = readlinkat(dirfd(m_descriptors.get()), name, target, sizeof target);
    if (length != ssize_t(sizeof target) || std::memcmp(target, deviceFolder, sizeof target) != 0)
        return;
    Client client;
    client.path = m_processFolder + "/fdinfo/" + name;
    const std::optional<DrmUsage> usage = parseDrmUsage(readStartOfFile(QFile::decodeName(client.path), enoughBytes));
    if (!usage || isKnown(*usage) || clientCount() >= mostClients)
        return;
    client.usage = *usage;
    client.readNs = nowNs;
    m_clients.push_back(std::move(client));
}

/// Several descriptors, of several processes, may belong to one user.
bool DrmClients::isKnown(const DrmUsage &usage) const
{
    return std::any_of(m_clients.cbegin(), m_clients.cend(), [&usage](const Client &client) {
        return client.usage.clientId == usage.clientId && client.usage.adapter == usage.adapter;
    });
}
