#pragma once

#include <QString>

#include <atomic>
#include <optional>

/// Asks Windows' management service (WMI, root\cimv2). The query is WQL; what comes back is the named
/// property of the first object found in which it is text. Empty when there is none, or no service.
/// Blocks: up to 30 s for the answer, and longer where connecting to the service itself hangs; setting the
/// flag from another thread ends the wait for an answer within 100 ms. Any thread; its use of COM is left
/// as it was.
std::optional<QString> managementText(const QString &query, const wchar_t *property, const std::atomic<bool> &abort);
