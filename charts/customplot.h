#pragma once

#include "charts/callout.h"
#include "charts/chartgeometry.h"
#include "charts/chartpicture.h"
#include "charts/pointseries.h"
#include "charts/repaintpacer.h"

#include <QColor>
#include <QList>
#include <QRegion>
#include <QString>
#include <QWidget>

#include <vector>

class CustomSourceButton;
class QHBoxLayout;
class QToolButton;
class QVBoxLayout;

/// Time-series chart: one plain or band series per receiver over the test time, raw, smooth or both,
/// with a legend that hides series and a cursor that reads values. Samples may come at any pace: they are
/// only stored, and a repaint follows at most once per frame of the display. Whatever lies outside of the
/// series' count is ignored. GUI thread.
class CustomPlot : public QWidget {
    Q_OBJECT

public:
    explicit CustomPlot(QWidget *parent = nullptr);
    ~CustomPlot() override;

    /// Shown left in the header; to be set before setupLayout().
    void setTitle(const QString &text) { title = text; }
    /// Fills the widget with a colour. Without one it is transparent, and each paint draws all that lies below it, too.
    /// Squares of cornerSize pixels in the corners stay transparent and are not painted.
    void setGround(const QColor &colour, int cornerSize);
    /// Builds the header with the two drawing toggles. Once, before the first setMetaInfo().
    void setupLayout();

    int seriesCount() const { return sourceCount; }
    double axisLengthS() const { return maxX; }
    double axisTop() const { return maxY; }
    int cursorTimeMs() const { return hoverTime; } ///< negative: no cursor
    bool isSeriesVisible(int index) const;
    /// Colour of a series; beyond the ten of the list further ones with the golden angle between their hues.
    QColor seriesColor(int index) const;
    /// The stored samples, times in ms; 0 <= index < seriesCount().
    const PointSeries &plainPoints(int index) const { return values[static_cast<std::size_t>(index)]; }
    const PointSeries &averagePoints(int index) const { return avgValues[static_cast<std::size_t>(index)]; }
    const PointSeries &minimumPoints(int index) const { return minValues[static_cast<std::size_t>(index)]; }
    const PointSeries &maximumPoints(int index) const { return maxValues[static_cast<std::size_t>(index)]; }
    /// The legend's buttons, one for each series once the header stands.
    const QList<CustomSourceButton *> &legendButtons() const { return sourceButtons; }
    QToolButton *smoothToggle() const { return smoothButton; } ///< null before setupLayout()
    QToolButton *rawToggle() const { return rawButton; }       ///< null before setupLayout()
    /// How often the whole picture was drawn anew, and how often the widget painted itself.
    int fullRedraws() const { return m_picture.fullRedraws(); }
    int paints() const { return m_paints; }

public slots:
    /// Starts a new chart of maxX seconds and maxY value units.
    void setMetaInfo(int maxX, int maxY, int sourceCount);
    /// time in ms of test time.
    void appendNewData(int testIndex, int time, double value);
    /// time in ms of test time. Dropped when the three lists of the series differ in length.
    void appendNewMultiData(int testIndex, int time, double min_value, double max_value, double avg_value);
    void setGraphLabel(int index, QString label);

signals:
    void finished(); ///< never sent; others may connect to it

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Callout {
        CalloutSide side;
        QPointF anchor;
        double value;
    };

    bool isSeries(int index) const { return index >= 0 && index < sourceCount; }
    void addLegendButton(int index);
    void cutCorners();
    void scheduleRepaint();
    void scheduleRepaintForSample();
    QRegion bringUpToDate(double tolerance);
    std::vector<Callout> makeCallouts(const ChartGeometry &geometry) const;

    double maxY = 60.0;
    double maxX = 60.0;
    double yGridCount = 7.0;
    double xGridCount = 7.0;
    QString title;
    std::vector<PointSeries> values;
    std::vector<PointSeries> avgValues;
    std::vector<PointSeries> minValues;
    std::vector<PointSeries> maxValues;
    int sourceCount = 0;
    QList<QColor> seriesColors;
    QList<CustomSourceButton *> sourceButtons;
    std::vector<quint8> seriesVisible;
    QVBoxLayout *mainLayout = nullptr;
    QHBoxLayout *topLayout = nullptr;
    QHBoxLayout *labelLayout = nullptr;
    QHBoxLayout *middleLayout = nullptr;
    QWidget *topWidget = nullptr;
    QWidget *labelContainer = nullptr;
    QWidget *middleWidget = nullptr;
    int hoverTime = -10000;
    QToolButton *smoothButton = nullptr;
    QToolButton *rawButton = nullptr;

    ChartPicture m_picture;
    QColor m_ground; ///< invalid: none
    int m_cornerSize = 0;
    RepaintPacer m_pacer;
    std::vector<Callout> m_callouts; ///< as they are drawn now
    QRegion m_unpainted;             ///< changed, but outside of what the last paint covered
    int m_paints = 0;
};
