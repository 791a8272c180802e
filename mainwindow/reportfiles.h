#pragma once

#include <functional>

class ModeSwitch;
class QWidget;
namespace Ui {
class NDIWindow;
}

// Reports as files: the dialogs that ask for one, and which charts take part. GUI thread. Both functions run
// dialogs of their own on top of window, and do nothing more when the window is gone after that.

/// Writes what the charts of the chosen mode show into a file that the user names.
void exportCharts(QWidget *window, const Ui::NDIWindow &form);
/// Shows a report that the user chooses, in the mode that it was made in. A report of an analysis is left alone
/// while analyses are not offered or analysisToolThere says no.
/// beforeFilling: called before the charts are touched.
void importCharts(QWidget *window, const Ui::NDIWindow &form, ModeSwitch &modes,
                  const std::function<bool()> &analysisToolThere, const std::function<void()> &beforeFilling);
/// Whether the charts show a report: marks the buttons for import.
void markRevision(const Ui::NDIWindow &form, bool on);
