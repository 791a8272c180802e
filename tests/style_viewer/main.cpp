// Shows every kind of widget in every state in the program's style, for looking at it.
//   vexa_style_viewer            a window with all of them
//   vexa_style_viewer FOLDER/    writes a picture of each page there, and ends
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/style_viewer/pages.h"
#include "widgets/darkstyle.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QMenu>
#include <QScreen>
#include <QTabWidget>
#include <QToolTip>

#include <cstdio>
#include <memory>

namespace {

void settle()
{
    QElapsedTimer settling;
    settling.start();
    while (settling.elapsed() < 250)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

bool save(const QPixmap &picture, const QString &folder, const QString &name)
{
    const QString file = QDir(folder).filePath(QStringLiteral("style-%1.png").arg(name));
    if (!picture.save(file)) {
        std::fprintf(stderr, "vexa_style_viewer: '%s' cannot be written\n", qPrintable(file));
        return false;
    }
    return true;
}

/// What pops up is a window of its own, so the screen is taken.
bool savePopups(const QString &folder)
{
    const std::unique_ptr<QWidget> page = makeControlsPage();
    page->move(0, 0);
    page->show();
    settle();
    auto *const combo = page->findChild<QComboBox *>();
    combo->showPopup();
    settle();
    bool saved = save(QGuiApplication::primaryScreen()->grabWindow(0), folder, QStringLiteral("list"));
    combo->hidePopup();
    const std::unique_ptr<QMenu> menu = makeMenu();
    menu->popup(QPoint(60, 60));
    menu->setActiveAction(menu->actions().constFirst());
    settle();
    saved = save(QGuiApplication::primaryScreen()->grabWindow(0), folder, QStringLiteral("menu")) && saved;
    menu->close();
    QToolTip::showText(QPoint(200, 200), QStringLiteral("Shows or hides graph 1"), page.get());
    settle();
    return save(QGuiApplication::primaryScreen()->grabWindow(0), folder, QStringLiteral("tip")) && saved;
}

int writePictures(const QString &folder)
{
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "vexa_style_viewer: the folder '%s' cannot be made\n", qPrintable(folder));
        return 1;
    }
    bool saved = true;
    for (const StylePage &page : stylePages()) {
        const std::unique_ptr<QWidget> widget = page.make();
        widget->show();
        settle();
        saved = save(widget->grab(), folder, page.name) && saved;
    }
    return savePopups(folder) && saved ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QApplication::setStyle(new DarkStyle);
    initVexaResources();
    loadFonts();
    if (argc > 1)
        return writePictures(QString::fromLocal8Bit(argv[1]));
    QTabWidget window;
    for (const StylePage &page : stylePages()) {
        QWidget *const widget = page.make().release();
        widget->setWindowFlags(Qt::Widget);
        window.addTab(widget, page.name);
    }
    window.show();
    return QApplication::exec();
}
