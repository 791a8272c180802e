#include "app/consolelife.h"
#include "app/consoleplatform.h"
#include "app/windowlife.h"
#include "crash/qbreakpadhandler.h"
#include "ndi/ndimetatypes.h"

#include <QCoreApplication>
#include <QDir>

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

} // namespace

int main(int argc, char *argv[])
{
    restrictLibrarySearch();
    attachConsole();
    installCrashHandler();
    QCoreApplication::setApplicationName(QStringLiteral("TessalyNDIVexa"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VEXA_VERSION));
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
