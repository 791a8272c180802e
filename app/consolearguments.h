#pragma once

#include <QString>
#include <QStringList>

/// What the console program was asked to do.
struct ConsoleRequest {
    enum class Action { PrintUsage, FindSources, Test };
    Action action = Action::PrintUsage;
    QString sourceName; ///< as a console text; empty when none was given
    int minutes = 1;    ///< as given, not checked; 0 for what is no number
    int receivers = 1;  ///< likewise
};

/// Reads the arguments, without the program's name. The element right after an option's first
/// occurrence is its value, whatever it looks like; an option at the end has no value. Pure.
ConsoleRequest parseConsoleArguments(const QStringList &arguments);
