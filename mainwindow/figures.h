#pragma once

#include "charts/repaintpacer.h"

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

/// The figures of the running test: the panel above the charts and the rows of the status table. Their texts are exact
/// at once, while they are painted at the pace of measurements, for hundreds come in a second. GUI thread; must not
/// outlive the form.
class FigurePanel final {
    Q_DISABLE_COPY_MOVE(FigurePanel)

public:
    /// Gives the panel's labels a fixed size that holds any figure: a new text then lays nothing out.
    explicit FigurePanel(const Ui::NDIWindow &form);

    /// Puts a measurement into the panel and into the row of the status table; a row that is not there is left out.
    void show(int statusRow, const Figures &figures);
    /// No video comes: zeros in the status table, the panel stays.
    void showNoVideo(int statusRow);

private:
    void fillStatusRow(int row, const QString &rate, const QString &interval);

    const Ui::NDIWindow &m_form;
    RepaintPacer m_pacer;
};
