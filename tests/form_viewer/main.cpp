// Shows the window's form with sample texts, for looking at it.
//   vexa_form_viewer [STATE]     a window in one of the states
//   vexa_form_viewer FOLDER/     writes a picture of every state at several sizes there, and ends
#include "tests/form_viewer/formsamples.h"

#include "resources/fonts.h"
#include "resources/vexaresources.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QStyleFactory>

#include <cstdio>

namespace {

int writePictures(const QString &folder)
{
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "vexa_form_viewer: the folder '%s' cannot be made\n", qPrintable(folder));
        return 1;
    }
    FormSample window;
    window.show();
    for (const QSize size : {QSize(1752, 968), QSize(1280, 720), QSize(1248, 640)}) {
        for (const QString &state : FormSample::states()) {
            window.show(state);
            window.resize(size);
            for (int turn = 0; turn < 4; ++turn)
                QCoreApplication::processEvents();
            window.show(state); // column widths by the new size
            QElapsedTimer settling;
            settling.start();
            while (settling.elapsed() < 60)
                QCoreApplication::processEvents();
            const QString file = QDir(folder).filePath(QStringLiteral("form-%1-%2.png")
                                                           .arg(state)
                                                           .arg(size.width())
                                                           .replace(QLatin1Char(' '), QLatin1Char('-')));
            if (!window.grab().save(file))
                return 1;
            std::printf("%s %dx%d, least %dx%d\n", qPrintable(file), window.width(), window.height(),
                        window.minimumSizeHint().width(), window.minimumSizeHint().height());
        }
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    initVexaResources();
    loadFonts();

    const QString argument = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("idle");
    if (!FormSample::states().contains(argument))
        return writePictures(argument);
    FormSample window;
    window.show();
    window.show(argument);
    return QApplication::exec();
}
