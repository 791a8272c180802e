#pragma once

#include <QObject>

#include <functional>

class PreviewChoice;
class QAbstractButton;
class QRadioButton;
class QWidget;
namespace Ui {
class NDIWindow;
}

/// The four modes: what of the form each of them shows, and that ANALYSIS cannot be had without its tool.
/// GUI thread; form, preview and window have to live as long.
class ModeSwitch final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModeSwitch)

public:
    enum class Mode { single = 1, multiple = 2, analysis = 3, benchmark = 4 };

    /// window: parent of the message about the missing tool.
    ModeSwitch(const Ui::NDIWindow *form, PreviewChoice *preview, std::function<bool()> analysisToolThere,
               QWidget *window);

    static const QString &toolMissingText();

    /// From now on the radio buttons switch.
    void connectOptions();
    void switchTo(Mode mode);
    /// As if the user had chosen it, even while it is disabled.
    void choose(QRadioButton *option);
    /// The details of all sources take the place of the charts, or give it back.
    void expandDetails(bool expanded);

private:
    void showCharts(Mode mode);
    void showBenchmark();
    void refuseAnalysis();

    const Ui::NDIWindow *ui;
    PreviewChoice *m_preview;
    const std::function<bool()> m_analysisToolThere;
    QWidget *m_window;
    QAbstractButton *m_lastOption = nullptr; ///< the mode's radio button before ANALYSIS was tried
};
