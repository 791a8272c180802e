#include "ndi/sourcelist.h"

#include "ndi/readablememory.h"

#include <QLoggingCategory>

#include <array>
#include <atomic>
#include <cstring>

namespace {

Q_LOGGING_CATEGORY(ndiLog, "vexa.ndi", QtInfoMsg)

constexpr std::uint32_t mostSources = 100000;
constexpr std::size_t longestTextBytes = 1024 * std::size_t(1024);

/// Whether a text with an end begins at this address.
bool isReadableText(const char *text)
{
    std::array<char, 256> buffer;
    for (std::size_t done = 0; done < longestTextBytes;) {
        // Up to the next multiple of the buffer's size: a page of memory may end there.
        const std::size_t bytes = buffer.size() - (reinterpret_cast<std::uintptr_t>(text) + done) % buffer.size();
        if (!copyIfReadable(text + done, buffer.data(), bytes))
            return false;
        if (std::memchr(buffer.data(), '\0', bytes))
            return true;
        done += bytes;
    }
    return false;
}

/// How many entries from the first one on are readable and have a name. For a list whose true length is unknown.
std::uint32_t countReadableSources(const NDIlib_source_t *sources)
{
    std::uint32_t count = 0;
    NDIlib_source_t source;
    while (count < mostSources && copyIfReadable(sources + count, &source, sizeof source) && source.p_ndi_name
           && isReadableText(source.p_ndi_name) && (!source.p_url_address || isReadableText(source.p_url_address)))
        ++count;
    return count;
}

} // namespace

SourceList::SourceList(const NDIlib_source_t *sources, std::uint32_t count)
{
    if (!sources)
        count = 0;
    if (count > mostSources) {
        // A search asks again and again: one line for each wrong count in a row.
        static std::atomic<std::uint32_t> reported{0};
        if (reported.exchange(count) != count)
            qCWarning(ndiLog, "The NDI runtime reports %u sources; only the readable ones are listed, at most %u",
                      count, mostSources);
        count = countReadableSources(sources);
    }
    for (std::uint32_t i = 0; i < count; ++i)
        m_owned.append(NdiSource(sources[i]));
    for (const NdiSource &source : qAsConst(m_owned))
        m_array.append(source.view());
}
