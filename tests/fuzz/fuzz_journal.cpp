// Journals that other hands, or a failing disk, have made.
#include "app/journalformat.h"
#include "app/recordfile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // The first byte says whether checksums are put right, so that there is a way past them.
    if (size == 0)
        return 0;
    QByteArray bytes(reinterpret_cast<const char *>(data + 1), int(size - 1));
    constexpr int headBytes = 20;
    constexpr int checksumAt = 16;
    if (data[0] % 2 == 1) {
        for (int at = bytes.indexOf("VXJB"); at >= 0 && bytes.size() - at >= headBytes;
             at = bytes.indexOf("VXJB", at + 1)) {
            char *const head = bytes.data() + at;
            std::uint32_t payload = 0;
            for (int i = 0; i < 4; ++i)
                payload |= std::uint32_t(static_cast<unsigned char>(head[8 + i])) << (8 * i);
            if (payload > std::uint32_t(bytes.size() - at - headBytes))
                continue;
            const std::uint32_t crc = crc32c(head + headBytes, payload, crc32c(head, checksumAt));
            for (int i = 0; i < 4; ++i)
                head[checksumAt + i] = char(crc >> (8 * i));
        }
    }
    JournalReader reader(bytes);
    static_cast<void>(recordName(reader.start().startTime));
    qint64 rows = 0;
    for (Measurement row; reader.nextRow(&row); ++rows)
        static_cast<void>(recordRow(reader.sourceName(row.sourceIndex), row));
    if (rows != reader.rowCount() || rows * journalRowBytes > bytes.size())
        std::abort();
    return 0;
}
