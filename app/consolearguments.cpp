#include "app/consolearguments.h"

#include <optional>

namespace {

std::optional<QString> optionValue(const QStringList &arguments, QLatin1String option)
{
    const int position = arguments.indexOf(option);
    if (position < 0 || position + 1 >= arguments.size())
        return std::nullopt;
    return arguments.at(position + 1);
}

int numberValue(const QStringList &arguments, QLatin1String option, int valueWhenAbsent)
{
    const std::optional<QString> text = optionValue(arguments, option);
    return text ? text->toInt() : valueWhenAbsent; // 0 for what is no number
}

} // namespace

ConsoleRequest parseConsoleArguments(const QStringList &arguments)
{
    ConsoleRequest request;
    if (arguments.contains(QLatin1String("-help")))
        return request;
    if (arguments.contains(QLatin1String("-findsources"))) {
        request.action = ConsoleRequest::Action::FindSources;
        return request;
    }
    if (!arguments.contains(QLatin1String("-test")))
        return request;
    request.action = ConsoleRequest::Action::Test;
    request.sourceName = optionValue(arguments, QLatin1String("-test")).value_or(QString());
    request.minutes = numberValue(arguments, QLatin1String("-time"), request.minutes);
    request.receivers = numberValue(arguments, QLatin1String("-receivers"), request.receivers);
    return request;
}
