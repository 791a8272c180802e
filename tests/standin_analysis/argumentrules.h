#pragma once

#include <string>
#include <string_view>
#include <vector>

/// How the start-up code of a Windows program takes its command line apart, by the published rules.
inline std::vector<std::string> windowsArguments(std::string_view line)
{
    std::vector<std::string> words;
    std::size_t at = 0;
    std::string word;
    // The program's name: up to the closing quotation mark or the first blank; backslashes mean nothing.
    if (!line.empty() && line[0] == '"') {
        for (++at; at < line.size() && line[at] != '"'; ++at)
            word += line[at];
        ++at;
    } else {
        for (; at < line.size() && line[at] != ' ' && line[at] != '\t'; ++at)
            word += line[at];
    }
    words.push_back(word);
    for (;;) {
        while (at < line.size() && (line[at] == ' ' || line[at] == '\t'))
            ++at;
        if (at >= line.size())
            return words;
        word.clear();
        bool isQuoted = false;
        for (; at < line.size() && (isQuoted || (line[at] != ' ' && line[at] != '\t')); ++at) {
            std::size_t backslashes = 0;
            for (; at < line.size() && line[at] == '\\'; ++at)
                ++backslashes;
            const bool isMark = at < line.size() && line[at] == '"';
            word.append(isMark ? backslashes / 2 : backslashes, '\\');
            if (!isMark && backslashes > 0) {
                --at; // the loop looks at it next
            } else if (!isMark) {
                word += line[at];
            } else if (backslashes % 2 == 1) {
                word += '"';
            } else if (isQuoted && at + 1 < line.size() && line[at + 1] == '"') {
                word += '"';
                ++at;
            } else {
                isQuoted = !isQuoted;
            }
        }
        words.push_back(word);
    }
}
