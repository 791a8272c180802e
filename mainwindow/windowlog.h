#pragma once

#include <QLoggingCategory>

/// What the window is about, for whoever drives it from outside: sources listed, tests and analyses started and
/// ended. Off until QT_LOGGING_RULES says vexa.window.debug=true.
Q_DECLARE_LOGGING_CATEGORY(windowLog)
