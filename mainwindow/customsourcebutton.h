#pragma once

#include <QColor>
#include <QString>
#include <QToolButton>

/// Round button of a chart's legend: shows the number of a series in its colour, and each release of the
/// mouse shows or hides the series. GUI thread, owned by its parent.
class CustomSourceButton : public QToolButton {
    Q_OBJECT

public:
    /// index: of the series, from 0. The label is index + 1 until setLabel().
    CustomSourceButton(QWidget *parent, int index, const QColor &color);

    void setLabel(const QString &text);
    bool isShown() const { return state; }

signals:
    /// true: the series is to be shown.
    void stateChanged(bool state);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void toggle();

    bool state = true;
    bool pressed = false;
    QString label;
    QColor color;
};
