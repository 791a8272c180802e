// Shows the program's widgets with live data, for looking at them.
//   vexa_gallery                 a window with a page for each kind of widget
//   vexa_gallery FOLDER          writes a picture of every page and of charts in many states there, and ends
#include "tests/gallery/chartpage.h"
#include "tests/gallery/pages.h"
#include "tests/gallery/widgetpage.h"

#include "resources/fonts.h"
#include "resources/vexaresources.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPixmap>
#include <QTabWidget>
#include <QTimer>

#include <cstdio>

namespace {

int writePictures(const QString &folder, QTabWidget &tabs)
{
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "vexa_gallery: the folder '%s' cannot be made\n", qPrintable(folder));
        return 1;
    }
    const auto save = [&](const QString &name, const QPixmap &picture) {
        const QString file = QDir(folder).filePath(name + QStringLiteral(".png"));
        std::printf("%s\n", qPrintable(file));
        return picture.save(file);
    };
    bool saved = true;
    for (int page = 0; page < tabs.count(); ++page) {
        tabs.setCurrentIndex(page);
        QElapsedTimer shown;
        for (shown.start(); shown.elapsed() < 500;) // the preview needs some paints
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        saved = save(QStringLiteral("page-%1").arg(tabs.tabText(page).toLower()), tabs.grab()) && saved;
    }
    for (const auto &[name, picture] : chartStates())
        saved = save(QStringLiteral("chart-%1").arg(name), picture) && saved;
    for (const auto &[name, picture] : dialogStates())
        saved = save(name, picture) && saved;
    return saved ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    initVexaResources();
    loadFonts();

    QTabWidget tabs;
    tabs.setWindowTitle(QStringLiteral("VEXA gallery"));
    tabs.setStyleSheet(QStringLiteral("QTabWidget::pane{background:#151515;}"));
    for (const auto &[name, page] : galleryPages())
        tabs.addTab(page, name);
    tabs.resize(1200, 800);
    tabs.show();

    if (argc > 1) {
        const QString folder = QString::fromLocal8Bit(argv[1]);
        QTimer::singleShot(1500, &tabs, [&tabs, folder] { QCoreApplication::exit(writePictures(folder, tabs)); });
    }
    return QApplication::exec();
}
