#pragma once

#include <QVector>

class QWidget;
namespace Ui {
class NDIWindow;
}

/// Which controls are usable while the window is idle or busy. GUI thread; the form has to live as long.
class ControlStates final {
public:
    /// Bits of a mask, but for idle.
    enum State { idle = 0, single = 1, multiple = 2, analysis = 4 };

    explicit ControlStates(const Ui::NDIWindow *form);

    /// Leaves what the state does not forbid as it is. Idle again, all are usable but for BENCHMARK, which only
    /// allowBenchmark() brings back, and the button for TEST, which only an analysis takes away.
    void enter(State state);
    /// After the user's stop or an analysis.
    void allowBenchmark();

private:
    struct Control {
        QWidget *widget;
        int busyStates; ///< those in which it stays usable
        bool comesBack; ///< when the window is idle again
    };
    const Ui::NDIWindow *ui;
    QVector<Control> m_controls;
};
