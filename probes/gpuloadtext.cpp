#include "probes/gpuloadtext.h"

#include <QList>
#include <QString>

#include <cmath>
#include <limits>

namespace {

std::optional<double> numberOn(const QByteArray &line)
{
    bool isNumber = false;
    const double value = QString::fromLatin1(line).trimmed().toDouble(&isNumber);
    return isNumber ? std::optional<double>(value) : std::nullopt;
}

/// How far the counter has moved on; 0 when it is new or went back.
quint64 growth(const QMap<QByteArray, quint64> &before, const QByteArray &name, quint64 now)
{
    const auto then = before.constFind(name);
    return then != before.constEnd() && now > *then ? now - *then : 0;
}

} // namespace

int wholePercent(double percent)
{
    using Limits = std::numeric_limits<int>;
    if (std::isnan(percent))
        return 0;
    if (percent >= static_cast<double>(Limits::max()))
        return Limits::max();
    if (percent <= static_cast<double>(Limits::min()))
        return Limits::min();
    return static_cast<int>(percent);
}

std::optional<int> percentOfFirstLine(const QByteArray &output)
{
    const std::optional<double> percent = numberOn(output.mid(0, output.indexOf('\n')));
    return percent ? std::optional<int>(wholePercent(*percent)) : std::nullopt;
}

std::optional<double> sumOfLines(const QByteArray &output)
{
    std::optional<double> sum;
    for (const QByteArray &line : output.split('\n')) {
        const std::optional<double> value = numberOn(line);
        if (value && std::isfinite(*value))
            sum = sum.value_or(0.0) + *value;
    }
    return sum;
}

std::optional<DrmUsage> parseDrmUsage(const QByteArray &text)
{
    static const QByteArray engineKey("drm-engine-");
    static const QByteArray capacityKey("drm-engine-capacity-");
    static const QByteArray cyclesKey("drm-cycles-");
    static const QByteArray totalKey("drm-total-cycles-");
    DrmUsage usage;
    bool isKnownDriver = false;
    bool hasClient = false;
    for (const QByteArray &line : text.split('\n')) {
        const int colon = line.indexOf(':');
        if (colon < 0)
            continue;
        const QByteArray key = line.left(colon);
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (key == "drm-driver") {
            isKnownDriver = value == "i915" || value == "xe";
        } else if (key == "drm-pdev") {
            usage.adapter = value;
        } else {
            bool isNumber = false;
            const quint64 number = value.mid(0, value.indexOf(' ')).toULongLong(&isNumber); // a unit may follow
            if (!isNumber || key.startsWith(capacityKey))
                continue;
            if (key == "drm-client-id") {
                usage.clientId = number;
                hasClient = true;
            } else if (key.startsWith(engineKey)) {
                usage.busyNs.insert(key.mid(engineKey.size()), number);
            } else if (key.startsWith(cyclesKey)) {
                usage.busyCycles.insert(key.mid(cyclesKey.size()), number);
            } else if (key.startsWith(totalKey)) {
                usage.totalCycles.insert(key.mid(totalKey.size()), number);
            }
        }
    }
    return isKnownDriver && hasClient ? std::optional<DrmUsage>(usage) : std::nullopt;
}

double drmBusyPercent(const DrmUsage &before, const DrmUsage &after, qint64 elapsedNs)
{
    double percent = 0.0;
    if (elapsedNs > 0) {
        for (auto engine = after.busyNs.cbegin(); engine != after.busyNs.cend(); ++engine) {
            const quint64 busy = growth(before.busyNs, engine.key(), engine.value());
            percent += 100.0 * static_cast<double>(busy) / static_cast<double>(elapsedNs);
        }
    }
    for (auto engine = after.busyCycles.cbegin(); engine != after.busyCycles.cend(); ++engine) {
        const quint64 total = growth(before.totalCycles, engine.key(), after.totalCycles.value(engine.key()));
        const quint64 busy = growth(before.busyCycles, engine.key(), engine.value());
        if (total > 0 && !after.busyNs.contains(engine.key()))
            percent += 100.0 * static_cast<double>(busy) / static_cast<double>(total);
    }
    return percent;
}
