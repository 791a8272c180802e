#include "app/windowlife.h"

#include "mainwindow/ndiwindow.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"

#include <QApplication>
#include <QIcon>

int runWindow(int argc, char *argv[])
{
    QApplication application(argc, argv);
    initVexaResources();
    loadFonts();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/vexa.svg")));

    NDIWindow window;
    QObject::connect(&window, &NDIWindow::closeWindow, &application, &QApplication::quit, Qt::QueuedConnection);
    window.setWindowTitle(QStringLiteral("Tessaly NDI VEXA"));
    window.show();
    return QApplication::exec();
}
