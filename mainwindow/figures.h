#pragma once

#include <QString>

namespace Ui {
class NDIWindow;
}

/// Numbers as the window shows them: at most six significant digits.
QString sixDigits(double number);

/// One video frame's measurement, as the panel beside the charts shows it.
struct Figures {
    double fps;        ///< received frames in the last second
    double nominalFps; ///< as the frame states it
    quint32 fourCC;
    int width; ///< pixels
    int height;
    int intervalMs; ///< since the previous frame
};

/// Puts a measurement into the panel and into the row of the status table; a row that is not there is left out.
/// GUI thread.
void showFigures(const Ui::NDIWindow &form, int statusRow, const Figures &figures);
/// No video comes: zeros in the status table, the panel stays.
void showNoVideo(const Ui::NDIWindow &form, int statusRow);
