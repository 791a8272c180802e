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
    /// Makes the next render() show what was appended. Ours needs nothing.
    virtual void refresh() {}
    /// Moves the cursor that reads values, where the library has one.
    virtual bool hover(int x)
    {
        Q_UNUSED(x);
        return false;
    }
};

struct ChartPeerFactory {
    QString name;
    std::function<std::unique_ptr<ChartPeer>()> make;
};

/// Ours first, then every library that was there at build time, with and without filled areas.
std::vector<ChartPeerFactory> chartPeers();
