#include "resources/fonts.h"

#include "resources/vexaresources.h"

#include <QDir>
#include <QFontDatabase>

int loadFonts(const QString &folder)
{
    initVexaResources();
    int registered = 0;
    const QDir fonts(folder);
    const QStringList names = fonts.entryList({QStringLiteral("KumbhSans-*.ttf")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        if (QFontDatabase::addApplicationFont(fonts.filePath(name)) >= 0)
            ++registered;
    }
    return registered;
}
