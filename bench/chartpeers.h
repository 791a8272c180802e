#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

/// Data of a five-minute test: the same points for every chart.
struct ChartData {
    static constexpr int series = 8;
    static constexpr int lengthS = 300;
    /// pointsPerSeries: spread evenly over the five minutes; values near 60 with a little noise, now and then a dip.
    explicit ChartData(int pointsPerSeries);

    int pointsPerSeries;
    double timeMs(int index) const;
    double value(int of, int index) const;
};

/// A chart of some library, fed and painted in the way that its users would.
class ChartPeer {
public:
    virtual ~ChartPeer() = default;
    virtual QWidget *widget() = 0;
    /// Stores one sample; paints nothing.
    virtual void append(int series, double timeMs, double value) = 0;
    /// Paints the stored samples into the window and returns when they are there.
    virtual void paint() = 0;
    /// Moves the mouse to x; the next paint() shows the cursor there. Only our chart has such a cursor.
    virtual void hover(int x) { Q_UNUSED(x); }
};

struct ChartPeerFactory {
    QString name;
    std::function<std::unique_ptr<ChartPeer>()> make;
};

/// The peer that our goals are ratios to, and our own chart in the drawing that they are for.
constexpr const char *chartPeerOfTheGoals = "QCustomPlot, lines (antialiased)";
constexpr const char *chartOfTheGoals = "ours, raw and smooth";

/// Ours first, then every library that was there at build time, with and without filled areas and with the
/// antialiasing that its users get: QCustomPlot's is on, that of Qwt, of Qt Charts and ours is off.
std::vector<ChartPeerFactory> chartPeers();
