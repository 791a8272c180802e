#pragma once

#include <QGradient>
#include <QImage>
#include <QPainterPath>
#include <QWidget>

/// Degrees of the arc that shows a value: 360 / (maximum - minimum) * value; 0 for an empty range.
double roundBarArcStep(double minimum, double maximum, double value);

/// Whole percents of the way from minimum to maximum, 0 to 100. Never more than has been reached: it
/// is 100 only at the end. An empty range is 0.
int roundBarPercent(double minimum, double maximum, double value);

/// The part of a ring from twelve o'clock, clockwise by degrees, with rounded ends that lie within the
/// arc. degrees: from -360 to 360, beyond is cut. The ring lies inside rect, which is square, and is
/// thickness wide. 0 degrees: an empty path.
QPainterPath roundBarArc(const QRectF &rect, double thickness, double degrees);

/// The stops of a conical gradient that runs clockwise, which Qt's own does not.
QGradientStops clockwiseStops(const QGradientStops &stops);

/// A circular progress display: a ring with an arc from twelve o'clock clockwise and a text in the
/// middle. Colours by palette: Window the disk below, Base the ring, Highlight the arc, AlternateBase
/// the disk in the middle, Text the text. It is square, at the top left of the widget.
/// GUI thread only. The steps of the painting may be overridden one by one.
class QRoundProgressBar : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QRoundProgressBar)

public:
    explicit QRoundProgressBar(QWidget *parent = nullptr);

    double minimum() const { return m_minimum; }
    double maximum() const { return m_maximum; }
    double value() const { return m_value; }
    QString format() const { return m_format; }
    QGradientStops dataColors() const { return m_dataColors; }
    /// What stands in the middle.
    QString text() const;

    /// Every "%p" in it stands for the percentage, a number without a sign of its own.
    void setFormat(const QString &format);
    /// Colours along the arc, positions 0 (twelve o'clock) to 1 (once around). Empty: the accent colour.
    void setDataColors(const QGradientStops &stops);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /// The two are swapped when they are the wrong way round; the value is kept within them. Numbers
    /// that are not finite change nothing, here and below.
    void setRange(double min, double max);
    void setMinimum(double min);
    void setMaximum(double max);
    /// Cut to the range.
    void setValue(double val);

protected:
    void paintEvent(QPaintEvent *event) override;

    virtual void drawBackground(QPainter &painter, const QRectF &baseRect);
    virtual void drawBase(QPainter &painter, const QRectF &baseRect);
    /// arcStep: degrees of the whole arc, as roundBarArcStep() gives it.
    virtual void drawValue(QPainter &painter, const QRectF &baseRect, double value, double arcStep);
    virtual void calculateInnerRect(const QRectF &baseRect, QRectF &innerRect, double &innerRadius);
    virtual void drawInnerBackground(QPainter &painter, const QRectF &innerRect);
    virtual void drawText(QPainter &painter, const QRectF &innerRect, double innerRadius, double value);

private:
    void rebuildGradient();

    double m_minimum = 0.0;
    double m_maximum = 100.0;
    double m_value = 0.0;
    QString m_format = QStringLiteral("%p%");
    QGradientStops m_dataColors;
    bool m_dataColorsChanged = false; ///< since the last paint
    QImage m_image;                   ///< kept from paint to paint, made anew for another size
};
