#include "app/consolelife.h"

#include "app/consolearguments.h"
#include "app/consoleplatform.h"
#include "app/consolewriter.h"
#include "app/interrupts.h"
#include "app/journalrecovery.h"
#include "app/ndimainobject.h"

#include <QCoreApplication>

namespace {

constexpr int consoleStatus = 1; // of every way out

void printBanner()
{
    StandardConsoleWriter console;
    const QString stars(52, QLatin1Char('*'));
    printConsoleLine(&console, QLatin1Char('\n') + stars);
    printConsoleLine(&console, QStringLiteral("**\tTessaly NDI VEXA Command Line\t\t**"));
    printConsoleLine(&console, stars + QLatin1Char('\n'));
}

void tellRecoveredJournals()
{
    StandardConsoleWriter console;
    const QStringList lines = recoverJournals();
    for (const QString &line : lines)
        printConsoleLine(&console, consoleTextFromUnicode(line));
}

} // namespace

int runConsole(const QStringList &arguments)
{
    Interrupts interrupts; // first, so that no interrupt ends the process in its own way
    printBanner();
    NDIMainObject mainObject;
    // Direct, on the object's own thread: nothing more is printed once it wants to end.
    QObject::connect(
        &mainObject, &NDIMainObject::quitApplication, &mainObject, [] { endProcess(consoleStatus); },
        Qt::DirectConnection);

    const ConsoleRequest request = parseConsoleArguments(arguments);
    if (request.action != ConsoleRequest::Action::PrintUsage)
        tellRecoveredJournals();
    switch (request.action) {
    case ConsoleRequest::Action::FindSources:
        mainObject.findSources(true);
        endProcess(consoleStatus);
    case ConsoleRequest::Action::Test:
        if (mainObject.startTest(request.sourceName, request.minutes, request.receivers))
            break;
        [[fallthrough]];
    case ConsoleRequest::Action::PrintUsage:
        mainObject.printUsage();
        endProcess(consoleStatus);
    }
    QObject::connect(&interrupts, &Interrupts::interrupted, &mainObject, &NDIMainObject::stopTest);
    interrupts.arm();
    return QCoreApplication::exec();
}
