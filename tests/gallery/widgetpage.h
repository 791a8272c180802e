#pragma once

#include <QPixmap>
#include <QString>

#include <utility>
#include <vector>

class QWidget;

/// Spinners, round progress bars, the load chart and a preview of colour bars.
QWidget *makeWidgetPage();

/// Message boxes and the benchmark dialog in their states, by name.
std::vector<std::pair<QString, QPixmap>> dialogStates();
