#include "app/windowplatform.h"

#include <QCoreApplication>

std::vector<std::string> windowArguments()
{
    return {"TessalyNDIVexa"}; // the desktop and QT_QPA_PLATFORM decide on the rest
}

QString displayProblem()
{
    for (const char *variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        if (!qEnvironmentVariableIsEmpty(variable))
            return {};
    }
    return QCoreApplication::translate("WindowStart",
                                       "There is no display for the window (DISPLAY and WAYLAND_DISPLAY "
                                       "are not set). TessalyNDIVexa -help tells what works without one.");
}
