#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <filesystem> // opens UTF-8 names
#endif

/// Reads the truth file of the loopback runtime; docs/loopback.md describes it. Header only, so
/// that a test needs nothing of the loopback but this file.
namespace loopback {

/// One line of the truth file.
struct TruthRecord {
    std::string kind;        ///< "create", "video", "free", ...
    int receiver = -1;       ///< order of creation in the process, from 0; -1: none
    std::int64_t timeNs = 0; ///< steady clock
    std::int64_t number = 0; ///< most kinds: the frame's number
    std::string note;        ///< second value as text, "1920x1080" with video frames
};

/// The complete lines in `bytes`. A line that another thread is just writing is left out; the
/// unused rest of the file, NUL bytes, ends the reading.
inline std::vector<TruthRecord> parseTruth(const std::string &bytes)
{
    constexpr std::size_t lineBytes = 64;
    const auto column = [](const std::string &line, std::size_t at, std::size_t width) {
        const std::string text = line.substr(at, width);
        const std::size_t first = text.find_first_not_of(' ');
        const std::size_t last = text.find_last_not_of(' ');
        return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
    };
    std::vector<TruthRecord> records;
    for (std::size_t at = 0; at + lineBytes <= bytes.size() && bytes[at] != '\0'; at += lineBytes) {
        const std::string line = bytes.substr(at, lineBytes);
        if (line.back() != '\n' || line.find('\0') != std::string::npos)
            continue;
        TruthRecord record;
        record.kind = column(line, 0, 8);
        record.receiver = static_cast<int>(std::strtol(column(line, 9, 6).c_str(), nullptr, 10));
        record.timeNs = std::strtoll(column(line, 16, 18).c_str(), nullptr, 10);
        record.number = std::strtoll(column(line, 35, 12).c_str(), nullptr, 10);
        record.note = column(line, 48, 15);
        records.push_back(std::move(record));
    }
    return records;
}

/// All lines written so far; empty when the file cannot be read. The path is UTF-8.
inline std::vector<TruthRecord> readTruth(const std::string &path)
{
#if defined(_WIN32)
    std::ifstream file(std::filesystem::u8path(path), std::ios::binary);
#else
    std::ifstream file(path, std::ios::binary);
#endif
    std::string bytes;
    std::vector<char> chunk(std::size_t{64} * 4096);
    while (file) { // the file is big and mostly unused: stop at its first unused line
        file.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        const auto got = static_cast<std::size_t>(file.gcount());
        bytes.append(chunk.data(), got);
        if (got < chunk.size() || chunk[chunk.size() - 64] == '\0')
            break;
    }
    return parseTruth(bytes);
}

/// How many lines of a kind there are; of one receiver, or of all with -1.
inline std::int64_t countTruth(const std::vector<TruthRecord> &records, const std::string &kind, int receiver = -1)
{
    return std::count_if(records.begin(), records.end(), [&kind, receiver](const TruthRecord &record) {
        return record.kind == kind && (receiver < 0 || record.receiver == receiver);
    });
}

} // namespace loopback
