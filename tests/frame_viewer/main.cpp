// Shows the frame around the window's form with sample texts, for looking at it.
//   vexa_frame_viewer            a window
//   vexa_frame_viewer FILE.png   grabs the screen after a second and ends; "max" before it: maximised,
//                                "inactive": another window has the focus
#include "tests/form_viewer/formsamples.h"
#include "widgets/framelesswindow.h"

#include "resources/fonts.h"
#include "resources/vexaresources.h"

#include <QApplication>
#include <QScreen>
#include <QStyleFactory>
#include <QTimer>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Highlight, QColor(21, 207, 187));
    QApplication::setPalette(palette);
    initVexaResources();
    loadFonts();

    const QStringList arguments = QApplication::arguments();
    auto *const window = new FramelessWindow; // deletes itself
    auto *const content = new FormSample;
    window->setContent(content);
    QObject::connect(window, &FramelessWindow::requestClose, &application, &QApplication::quit);
    window->show();
    content->show(QStringLiteral("multiple"));
    if (arguments.contains(QStringLiteral("max")))
        window->maximizeOrCenter();
    QWidget other;
    if (arguments.contains(QStringLiteral("inactive"))) {
        other.resize(200, 80);
        other.show();
        other.activateWindow();
    } else {
        window->activateWindow();
    }
    if (arguments.last().endsWith(QLatin1String(".png"))) {
        QTimer::singleShot(1500, window, [&] {
            window->screen()->grabWindow(0).save(arguments.last());
            window->close();
        });
    }
    return QApplication::exec();
}
