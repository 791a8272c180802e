#pragma once

#include <QString>

#include <memory>
#include <vector>

class QMenu;
class QWidget;

struct StylePage {
    QString name;
    std::unique_ptr<QWidget> (*make)();
};

/// Every page there is; each call of make() gives a window of its own.
std::vector<StylePage> stylePages();

/// Every kind of control: enabled in the left half, disabled in the right.
std::unique_ptr<QWidget> makeControlsPage();
std::unique_ptr<QMenu> makeMenu();
