#include "app/windowplatform.h"

std::vector<std::string> windowArguments()
{
    // Windows scales the window itself: sizes in the form are those of a screen of 96 dpi.
    return {"TessalyNDIVexa.exe", "--platform", "windows:dpiawareness=0"};
}

QString displayProblem()
{
    return {};
}
