#pragma once

#include <QString>

#include <utility>
#include <vector>

class QWidget;

/// Name and widget of every page; the caller takes the widgets over.
std::vector<std::pair<QString, QWidget *>> galleryPages();
