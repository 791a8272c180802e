#pragma once

#include <QPixmap>
#include <QString>

#include <utility>
#include <vector>

class QWidget;

/// Four charts that are fed 60 times a second for each of their series.
QWidget *makeChartPage();

/// Charts in the states that are easy to get wrong, by name.
std::vector<std::pair<QString, QPixmap>> chartStates();
