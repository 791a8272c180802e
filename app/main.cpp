#include "app/consolelife.h"
#include "app/consoleplatform.h"
#include "crash/qbreakpadhandler.h"
#include "ndi/ndimetatypes.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>
#include <string>
#include <vector>

namespace {

void installCrashHandler()
{
    const QString workingFolder = QDir::currentPath();
    if (!workingFolder.isEmpty()) // empty: the folder was removed under the program
        QBreakpadHandler::instance()->setDumpPath(workingFolder + QLatin1Char(folderSeparator)
                                                  + QLatin1String("crashes"));
}

/// The window is not part of this program yet.
int runWindow()
{
    std::fputs("This build has no window yet. Start it with -help to see what it can do on the console.\n", stderr);
    std::fflush(stderr);
    releaseConsole();
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    attachConsole();
    installCrashHandler();
    if (argc < 2)
        return runWindow();

    std::vector<std::string> bytes = commandLine(argc, argv);
    std::vector<char *> pointers;
    pointers.reserve(bytes.size() + 1);
    for (std::string &argument : bytes)
        pointers.push_back(&argument[0]);
    int count = int(pointers.size());
    pointers.push_back(nullptr);
    QCoreApplication application(count, pointers.data()); // takes the options that are Qt's own
    registerNdiMetaTypes();
    QStringList arguments;
    for (int i = 1; i < count; ++i)
        arguments.append(QString::fromLatin1(pointers[std::size_t(i)]));
    return runConsole(arguments);
}
