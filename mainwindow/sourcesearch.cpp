#include "mainwindow/sourcesearch.h"

SourceSearch::SourceSearch()
{
    finderThread.setObjectName(QStringLiteral("source finder"));
    QObject::connect(&finderThread, &QThread::started, &sourceFinder, &SourceFinder::start);
    QObject::connect(&sourceFinder, &SourceFinder::finished, &finderThread, &QThread::quit);
    sourceFinder.moveToThread(&finderThread);
}

SourceSearch::~SourceSearch()
{
    requestEnd();
    finderThread.wait();
}

bool SourceSearch::start()
{
    if (finderThread.isRunning())
        return false;
    finderThread.start(QThread::InheritPriority);
    return true;
}

void SourceSearch::requestEnd()
{
    finderThread.quit();
}
