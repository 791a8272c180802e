#include "tests/gallery/pages.h"

#include "tests/gallery/chartpage.h"
#include "tests/gallery/widgetpage.h"

#include <QWidget>

std::vector<std::pair<QString, QWidget *>> galleryPages()
{
    return {{QStringLiteral("Charts"), makeChartPage()}, {QStringLiteral("Widgets"), makeWidgetPage()}};
}
