#pragma once

#include <QColor>
#include <QRect>
#include <QWidget>

/// Geometry of the twelve spokes of a busy indicator, in whole pixels of the widget.
struct SpokeGeometry {
    int outerRadius = 0; ///< from the middle to the outer end of a spoke
    int length = 0;      ///< of a spoke
    int width = 0;       ///< of a spoke
    int cornerRadius = 0;

    /// The spoke that points to twelve o'clock, with the middle of the widget as the origin.
    QRect spoke() const;
};

/// For a widget of this size. Up to 32 pixels the spokes are thicker. Nothing has a negative size.
SpokeGeometry spokeGeometry(const QSize &size);

/// How many spokes a busy indicator has.
constexpr int spokeCount = 12;
/// Opacity of a spoke, counted from the leading one, 0 to 11: from 1 down to 1/12.
double spokeOpacity(int spoke);

/// A busy indicator: twelve spokes that turn by 30 degrees a step. GUI thread only.
class QProgressIndicator : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QProgressIndicator)

public:
    explicit QProgressIndicator(QWidget *parent = nullptr);

    bool isAnimated() const { return m_timerId != -1; }
    /// Whether the spokes stay, standing still, when the animation has been stopped.
    bool isDisplayedWhenStopped() const { return m_displayedWhenStopped; }
    /// Degrees clockwise, a multiple of 30 below 360.
    int angle() const { return m_angle; }
    /// Milliseconds from step to step, 1 or more.
    int animationDelay() const { return m_delayMs; }
    QColor color() const { return m_color; }

    QSize sizeHint() const override;

public slots:
    /// Begins at angle 0; when it runs already, it goes on from there at its pace.
    void startAnimation();
    void stopAnimation();
    /// delay: milliseconds; below 1 counts as 1. A running animation goes on at the new pace.
    void setAnimationDelay(int delay);
    void setDisplayedWhenStopped(bool state);
    /// Its own opacity is not used.
    void setColor(QColor color);

protected:
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    int m_angle = 0;
    int m_timerId = -1; ///< -1: not animated
    int m_delayMs = 40;
    bool m_displayedWhenStopped = false;
    QColor m_color = Qt::black;
};
