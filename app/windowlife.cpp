#include "app/windowlife.h"

#include "app/backgroundrecovery.h"
#include "app/firstpaint.h"
#include "app/interrupts.h"
#include "app/openglcheck.h"
#include "app/runtimecheck.h"
#include "app/startupbox.h"
#include "app/unusedmemory.h"
#include "app/windowplatform.h"
#include "mainwindow/ndiwindow.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "widgets/darkstyle.h"
#include "widgets/framelesswindow.h"
#include "widgets/stylesheetnoise.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QIcon>
#include <QOffscreenSurface>
#include <QPointer>
#include <QSplashScreen>

#include <array>

namespace {

void chooseScaling()
{
    // Whoever set one of these knows better.
    const std::array<const char *, 4> choices{"QT_DEVICE_PIXEL_RATIO", "QT_AUTO_SCREEN_SCALE_FACTOR", "QT_SCALE_FACTOR",
                                              "QT_SCREEN_SCALE_FACTORS"};
    bool chosen = false;
    for (const char *choice : choices)
        chosen = chosen || qEnvironmentVariableIsSet(choice);
    if (!chosen)
        QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
}

void chooseFont()
{
    loadFonts();
    const int bold = QFontDatabase::addApplicationFont(QStringLiteral(":/font/KumbhSans-Bold.ttf"));
    const QString family = QFontDatabase::applicationFontFamilies(bold).value(0);
    QFont font = family.isEmpty() ? QApplication::font() : QFont(family); // a build without the font has another
    font.setWeight(QFont::Bold);
    QApplication::setFont(font);
}

/// Made by QIcon, which knows the pictures for screens of high density.
QPixmap splashPicture()
{
    const QIcon picture(QStringLiteral(":/images/Vexa_splash-screen.png"));
    const QList<QSize> sizes = picture.availableSizes();
    return sizes.isEmpty() ? QPixmap() : picture.pixmap(sizes.constFirst());
}

} // namespace

int runWindow()
{
    keepFewMemoryStores();
    const QString problem = displayProblem();
    if (!problem.isEmpty())
        return reportWithoutScreen(problem);
    chooseScaling();
    static WindowArguments arguments; // as long as the process: the application keeps what it was given
    QApplication application(arguments.count, arguments.values());
    QApplication::setStyle(new DarkStyle);
    const StyleSheetNoiseFilter noiseFilter;
    initVexaResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/vexa.svg")));
    // The window ends the program itself, when its tests have ended and their record is written.
    QApplication::setQuitOnLastWindowClosed(false);

    QOffscreenSurface surface;
    if (!isOpenGlUsable(&surface)) {
        if (showStartupFailure(QStringLiteral("This machine doesn't support OpenGL.")))
            QCoreApplication::quit();
        return 0;
    }
    NDIWindowParts parts = NDIWindowParts::ofThisMachine();
    switch (checkRuntime()) {
    case RuntimeCheck::Usable:
        break;
    case RuntimeCheck::Refused:
        // The program goes on when the box was closed in another way than by its button.
        if (showStartupFailure(QStringLiteral("This computer can't test NDI performance because the CPU is not "
                                              "sufficient."))) {
            QCoreApplication::quit();
            return 0;
        }
        break;
    case RuntimeCheck::Missing:
        if (!offerRevisionOnly())
            return 0;
        parts.revisionOnly = true;
        break;
    }

    QSplashScreen splash(splashPicture(), Qt::SplashScreen);
    splash.show();
    QApplication::processEvents(); // what follows keeps the event loop waiting
    chooseFont();

    const QPointer<FramelessWindow> frame = new FramelessWindow; // deletes itself when it is closed
    frame->setWindowTitle(QStringLiteral("Tessaly NDI VEXA"));
    const QPointer<NDIWindow> window = new NDIWindow(parts); // the frame's
    frame->setContent(window);
    QObject::connect(frame, &FramelessWindow::requestClose, window, &NDIWindow::requestClose);
    bool isOver = false; // a window that cannot work says so before the event loop runs
    QObject::connect(window, &NDIWindow::closeWindow, &application, [&isOver] {
        isOver = true;
        QCoreApplication::quit();
    });
    Interrupts interrupts;
    QObject::connect(&interrupts, &Interrupts::interrupted, frame, &QWidget::close, Qt::QueuedConnection);
    interrupts.arm();
    frame->show();
    logFirstPaint(frame);
    frame->maximizeOrCenter();
    splash.finish(frame);
    if (window) // the splash lets events in, and one may have closed it
        window->warmUpPreview();
    int status = 0;
    {
        // Ends before all that it uses; a window that is closed meanwhile leaves nobody to be told.
        const BackgroundRecovery recovery([&frame](const QStringList &lines) {
            if (frame)
                showRecoveredRecords(lines, frame);
        });
        if (!isOver)
            status = QApplication::exec();
    }
    delete frame.data();
    return status;
}
