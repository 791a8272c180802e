#include "charts/customplot.h"

#include "charts/chartstyle.h"
#include "charts/cursorpick.h"
#include "mainwindow/customsourcebutton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QSpacerItem>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>

#include <cmath>
#include <utility>

namespace {

QLabel *headerLabel(QWidget *parent, const QString &name, const QString &text)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setStyleSheet(QStringLiteral("#%1{color:white}").arg(name));
    label->setFont(ChartStyle::font(8));
    return label;
}

QToolButton *drawingToggle(QWidget *parent, const QString &picture, bool checked)
{
    auto *button = new QToolButton(parent);
    button->setCheckable(true);
    button->setChecked(checked);
    button->setStyleSheet(QStringLiteral("QToolButton{border-image: url(:/images/%1-OFF.png);}"
                                         "QToolButton:checked{border-image: url(:/images/%1-ON.png);}")
                              .arg(picture));
    return button;
}

/// In logical pixels: a new sample moves the whole smooth curve, after a few knots by less than a person can see.
constexpr double streamTolerance = 1.0 / 16.0;

QSpacerItem *wideSpacer()
{
    return new QSpacerItem(40, 20, QSizePolicy::Expanding, QSizePolicy::Minimum);
}

} // namespace

CustomPlot::CustomPlot(QWidget *parent)
    : QWidget(parent), seriesColors{QColor(21, 207, 187), QColor(153, 0, 255),   QColor(251, 135, 25),
                                    QColor(230, 51, 64),  QColor(37, 204, 85),   QColor(26, 83, 92),
                                    QColor(0, 102, 255),  QColor(230, 230, 230), QColor(0, 0, 255),
                                    QColor(233, 122, 205)}
{
    setAttribute(Qt::WA_MouseTracking);
    connect(&m_pacer, &RepaintPacer::due, this, [this] {
        if (isVisible())
            update(bringUpToDate(streamTolerance) + std::exchange(m_unpainted, QRegion()));
    });
}

CustomPlot::~CustomPlot() = default;

void CustomPlot::setGround(const QColor &colour, int cornerSize)
{
    m_ground = colour;
    m_cornerSize = cornerSize;
    setAttribute(Qt::WA_OpaquePaintEvent);
    cutCorners();
}

void CustomPlot::cutCorners()
{
    const QRect corner(0, 0, m_cornerSize, m_cornerSize);
    if (corner.isEmpty() || size().isEmpty())
        return;
    const int right = width() - m_cornerSize;
    const int bottom = height() - m_cornerSize;
    QRegion painted(rect());
    for (const QPoint &place : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)})
        painted -= corner.translated(place);
    setMask(painted);
}

void CustomPlot::setupLayout()
{
    if (mainLayout)
        return;
    mainLayout = new QVBoxLayout(this);
    mainLayout->setSpacing(0);
    mainLayout->setContentsMargins(5, 5, 10, 10);

    topWidget = new QWidget(this);
    topWidget->setFixedHeight(30);
    topLayout = new QHBoxLayout(topWidget);
    topLayout->setContentsMargins(25, 5, 10, 0);
    topLayout->setSpacing(4);

    QLabel *nameLabel = headerLabel(topWidget, QStringLiteral("nameLabel"), title);
    nameLabel->setFixedWidth(80);

    middleWidget = new QWidget(topWidget);
    middleLayout = new QHBoxLayout(middleWidget);
    middleLayout->setContentsMargins(0, 0, 0, 0);
    middleLayout->setSpacing(4);
    labelContainer = new QWidget(middleWidget);
    labelLayout = new QHBoxLayout(labelContainer);
    labelLayout->setContentsMargins(0, 0, 0, 0);
    labelLayout->setSpacing(5);
    labelLayout->addWidget(
        headerLabel(labelContainer, QStringLiteral("recLabel"), QStringLiteral("RECEIVER:        ")));
    middleLayout->addItem(wideSpacer());
    middleLayout->addWidget(labelContainer);
    middleLayout->addItem(wideSpacer());

    smoothButton = drawingToggle(topWidget, QStringLiteral("smooth-graph"), true);
    smoothButton->setAccessibleName(tr("Smooth curve"));
    smoothButton->setToolTip(tr("Smooth curve: averages over five pixels, joined by a spline"));
    rawButton = drawingToggle(topWidget, QStringLiteral("raw-graph"), false);
    rawButton->setAccessibleName(tr("Raw samples"));
    rawButton->setToolTip(tr("Raw samples: every value as it was measured"));
    for (QToolButton *button : {smoothButton, rawButton})
        connect(button, &QToolButton::released, this, &CustomPlot::scheduleRepaint);

    topLayout->addWidget(nameLabel);
    topLayout->addWidget(middleWidget);
    topLayout->addWidget(smoothButton);
    topLayout->addWidget(rawButton);
    mainLayout->addWidget(topWidget);
    mainLayout->addItem(new QSpacerItem(20, 40, QSizePolicy::Minimum, QSizePolicy::Expanding));
}

bool CustomPlot::isSeriesVisible(int index) const
{
    return isSeries(index) && seriesVisible[static_cast<std::size_t>(index)] != 0;
}

QColor CustomPlot::seriesColor(int index) const
{
    if (index < seriesColors.size())
        return seriesColors.at(qMax(index, 0));
    constexpr double goldenAngle = 137.50776405; // degrees: no two hues ever meet, neighbours lie far apart
    const QColor first = seriesColors.first();
    return QColor::fromHsvF(std::fmod(index * goldenAngle, 360.0) / 360.0, first.saturationF(), first.valueF());
}

void CustomPlot::addLegendButton(int index)
{
    auto *button = new CustomSourceButton(labelContainer, index, seriesColor(index));
    connect(button, &CustomSourceButton::stateChanged, this, [this, index](bool shown) {
        if (!isSeries(index))
            return;
        seriesVisible[static_cast<std::size_t>(index)] = shown ? 1 : 0;
        scheduleRepaint();
    });
    labelLayout->addWidget(button);
    sourceButtons.append(button);
}

void CustomPlot::setMetaInfo(int lengthS, int top, int count)
{
    qDeleteAll(sourceButtons);
    sourceButtons.clear();
    sourceCount = qMax(count, 0);
    const auto size = static_cast<std::size_t>(sourceCount);
    for (std::vector<PointSeries> *lists : {&values, &avgValues, &minValues, &maxValues}) {
        lists->clear();
        lists->resize(size);
    }
    seriesVisible.assign(size, 0);
    if (labelLayout) {
        seriesVisible.assign(size, 1);
        for (int i = 0; i < sourceCount; ++i)
            addLegendButton(i);
    }
    maxX = lengthS;
    maxY = top;
    m_picture.restart();
    scheduleRepaint();
}

void CustomPlot::appendNewData(int testIndex, int time, double value)
{
    if (!isSeries(testIndex))
        return;
    values[static_cast<std::size_t>(testIndex)].append(QPointF(time, value));
    maxY = grownAxisTop(value, maxY);
    scheduleRepaintForSample();
}

void CustomPlot::appendNewMultiData(int testIndex, int time, double min_value, double max_value, double avg_value)
{
    if (!isSeries(testIndex))
        return;
    const auto index = static_cast<std::size_t>(testIndex);
    if (avgValues[index].size() != maxValues[index].size() || avgValues[index].size() != minValues[index].size())
        return;
    avgValues[index].append(QPointF(time, avg_value));
    maxValues[index].append(QPointF(time, max_value));
    minValues[index].append(QPointF(time, min_value));
    maxY = grownAxisTop(max_value, maxY);
    scheduleRepaintForSample();
}

// cppcheck-suppress passedByValue ; others connect to this signature
// NOLINTNEXTLINE(performance-unnecessary-value-param): the same
void CustomPlot::setGraphLabel(int index, QString label)
{
    if (index < 0 || index >= sourceButtons.size())
        return;
    sourceButtons.at(index)->setLabel(label);
    scheduleRepaint();
}

void CustomPlot::scheduleRepaint()
{
    // A hidden chart is brought up to date when it is shown.
    if (isVisible())
        m_pacer.request();
}

void CustomPlot::scheduleRepaintForSample()
{
    if (isVisible())
        m_pacer.requestForMeasurement();
}

std::vector<CustomPlot::Callout> CustomPlot::makeCallouts(const ChartGeometry &geometry) const
{
    const bool raw = rawButton && rawButton->isChecked();
    const bool smooth = smoothButton && smoothButton->isChecked();
    if (!geometry.isDrawable() || !geometry.showsCursor(hoverTime) || (!raw && !smooth))
        return {};

    // A list is drawn, and so can be read, from two points on in the raw and three in the smooth drawing.
    const std::size_t fewest = raw ? 2 : 3;
    double plain = 0.0;
    double average = 0.0;
    double maximum = 0.0;
    double minimum = 0.0;
    const auto pickLargest = [&](const PointSeries &points, double &largest) {
        largest = std::max(largest, pickValue(points, hoverTime, geometry.lengthMs()).value_or(-1.0));
    };
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!seriesVisible[i])
            continue;
        if (values[i].size() >= fewest)
            pickLargest(values[i], plain);
        const std::size_t size = avgValues[i].size();
        if (size >= fewest && maxValues[i].size() == size && minValues[i].size() == size) {
            pickLargest(avgValues[i], average);
            pickLargest(maxValues[i], maximum);
            pickLargest(minValues[i], minimum);
        }
    }

    std::vector<Callout> callouts;
    const auto add = [&](CalloutFigure figure, double value) {
        if (!(value > 0.0))
            return;
        const QPointF anchor(geometry.cursorX(hoverTime), geometry.map(QPointF(0.0, value)).y());
        callouts.push_back({calloutSide(figure, anchor, geometry), anchor, value});
    };
    add(CalloutFigure::plain, plain);
    add(CalloutFigure::average, average);
    add(CalloutFigure::maximum, maximum);
    add(CalloutFigure::minimum, minimum);
    return callouts;
}

/// Updates picture and callouts and returns what has to be painted again. tolerance: see ChartView.
QRegion CustomPlot::bringUpToDate(double tolerance)
{
    ChartView view;
    view.geometry = ChartGeometry(size(), maxY, maxX);
    view.pixelRatio = devicePixelRatioF();
    view.verticalLines = xGridCount;
    view.horizontalLines = yGridCount;
    view.raw = rawButton && rawButton->isChecked();
    view.smooth = smoothButton && smoothButton->isChecked();
    view.cursorMs = hoverTime;
    view.tolerance = tolerance;
    const ChartContents contents{values,        avgValues,
                                 minValues,     maxValues,
                                 seriesVisible, [this](std::size_t i) { return seriesColor(static_cast<int>(i)); }};
    QRegion changed = m_picture.update(contents, view);

    std::vector<Callout> callouts = makeCallouts(view.geometry);
    const auto same = [](const Callout &a, const Callout &b) {
        return a.side == b.side && a.anchor == b.anchor && a.value == b.value;
    };
    if (!std::equal(callouts.begin(), callouts.end(), m_callouts.begin(), m_callouts.end(), same)) {
        for (const Callout &callout : m_callouts)
            changed += calloutBounds(callout.side, callout.anchor).toAlignedRect();
        for (const Callout &callout : callouts)
            changed += calloutBounds(callout.side, callout.anchor).toAlignedRect();
        m_callouts = std::move(callouts);
    }
    return changed & QRegion(rect());
}

void CustomPlot::paintEvent(QPaintEvent *event)
{
    ++m_paints;
    const bool whole = event->rect() == rect(); // may as well be exact
    const QRegion changed = bringUpToDate(whole ? 0.0 : streamTolerance);
    QPainter painter(this);
    if (m_ground.isValid())
        painter.fillRect(event->rect(), m_ground);
    painter.drawImage(QPointF(0, 0), m_picture.image());
    for (const Callout &callout : m_callouts)
        paintCallout(painter, callout.side, callout.anchor, callout.value);

    // Samples that came after this paint was asked for may have changed more than it covers.
    m_unpainted += changed.subtracted(event->region());
    if (!m_unpainted.isEmpty())
        scheduleRepaintForSample();
}

void CustomPlot::mouseMoveEvent(QMouseEvent *event)
{
    const std::optional<int> time = ChartGeometry(size(), maxY, maxX).cursorTime(event->localPos().x());
    if (!time)
        return;
    hoverTime = *time;
    scheduleRepaint();
}

void CustomPlot::showEvent(QShowEvent *event)
{
    if (const QWindow *window = this->window()->windowHandle(); window && window->screen())
        m_pacer.setDisplayRate(window->screen()->refreshRate());
    QWidget::showEvent(event);
}

void CustomPlot::hideEvent(QHideEvent *event)
{
    m_picture.release();
    QWidget::hideEvent(event);
}

void CustomPlot::resizeEvent(QResizeEvent *event)
{
    cutCorners();
    QWidget::resizeEvent(event);
}
