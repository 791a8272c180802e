#pragma once

#include <cstddef>
#include <cstdio>

/// The line about a dump, for a process that is crashing: no heap, no locks, no exceptions.
class DumpMessage final {
public:
    /// id: name of the dump without ".dmp". The text is valid until the next call; what does not fit is cut.
    void set(bool isWritten, const char *folder, const char *id)
    {
        const int length =
            std::snprintf(m_text, sizeof m_text, "%s, dump path: %s/%s\n",
                          isWritten ? "Succeed to write minidump" : "Failed to write minidump", folder, id);
        m_size = length < 0 ? 0 : static_cast<std::size_t>(length);
        if (m_size >= sizeof m_text)
            m_size = sizeof m_text - 1;
    }
    const char *text() const { return m_text; }
    std::size_t size() const { return m_size; } ///< in bytes, without a terminator

private:
    char m_text[4608] = {}; // the longest path of Linux and the words around it
    std::size_t m_size = 0;
};
