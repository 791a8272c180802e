#include "relay/commandfile.h"

#include <algorithm>

namespace relay {

namespace {

constexpr std::string_view sourceMark = "\" /source:\"";
constexpr std::string_view timeMark = "\" /time:";

ParsedCommandFile failed(const char *problem)
{
    return {std::nullopt, problem};
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

} // namespace

ParsedCommandFile parseCommandFile(std::string_view text)
{
    if (text.empty())
        return failed("it is empty");
    if (text.size() > maxCommandFileBytes)
        return failed("it is too long");
    if (text.find('\0') != std::string_view::npos)
        return failed("it holds a NUL");
    if (text.front() != '"')
        return failed("it does not begin with the tool's path in quotation marks");
    text.remove_prefix(1);

    const std::size_t toolEnd = text.find('"');
    if (toolEnd == std::string_view::npos || text.substr(toolEnd, sourceMark.size()) != sourceMark)
        return failed("the tool's path is not followed by /source: and a quotation mark");
    const std::string_view tool = text.substr(0, toolEnd);
    text.remove_prefix(toolEnd + sourceMark.size());

    const std::size_t sourceEnd = text.rfind(timeMark);
    if (sourceEnd == std::string_view::npos)
        return failed("the source is not followed by a quotation mark and /time:");
    const std::string_view source = text.substr(0, sourceEnd);
    const std::string_view seconds = text.substr(sourceEnd + timeMark.size());

    if (tool.empty())
        return failed("the tool's path is empty");
    if (source.empty())
        return failed("the source is empty");
    if (seconds.empty() || !std::all_of(seconds.begin(), seconds.end(), isDigit))
        return failed("/time: is not followed by digits alone");
    return {Command{std::string(tool), std::string(source), std::string(seconds)}, {}};
}

std::string sourceArgument(const Command &command)
{
    return "/source:" + command.source;
}

std::string timeArgument(const Command &command)
{
    return "/time:" + command.seconds;
}

} // namespace relay
