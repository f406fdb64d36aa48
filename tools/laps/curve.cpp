#include "tools/laps/curve.h"

#include "sdk/utilities.h"

#include <algorithm>
#include <cmath>

namespace rataip::laps {

using TLM::SDK::Channel;
using TLM::SDK::Lap;

namespace {

constexpr double kMetresPerKilometre = 1000.0;
constexpr double kPercent = 100.0;

QList<double> scaled(const Channel& channel, double factor) {
    QList<double> values = channel.samples;
    for (double& value : values) {
        value = isReading(value) ? value * factor : value;
    }
    return values;
}

AxisValues distanceOf(const Lap& lap) {
    const QString name = QStringLiteral("Distance");
    if (const auto metres = lap.channel(QStringLiteral("lapdist"))) {
        return {metres->samples, name, metres->unit()};
    }
    const auto share = lap.channel(QStringLiteral("lapdistpct"));
    if (!share) {
        return {{}, name, {}};
    }
    bool isNumber = false;
    const double kilometres = lap.value(QStringLiteral("Track length")).value.toDouble(&isNumber);
    if (isNumber && kilometres > 0.0) {
        return {scaled(*share, kilometres * kMetresPerKilometre), name, QStringLiteral("m")};
    }
    return {scaled(*share, kPercent), name, QStringLiteral("%")};
}

AxisValues timeOf(const Lap& lap) {
    const QString name = QStringLiteral("Time");
    const auto clock = lap.channel(QStringLiteral("sessiontime"));
    if (!clock) {
        return {{}, name, {}};
    }
    QList<double> values = clock->samples;
    const auto first = std::find_if(values.cbegin(), values.cend(), isReading);
    const double start = first == values.cend() ? 0.0 : *first;
    for (double& value : values) {
        value = isReading(value) ? value - start : value;
    }
    return {values, name, clock->unit()};
}

/** Appends the lowest and the highest point of a run in their original order. */
void appendExtremes(QList<QPointF>& curve, QList<QPointF>::const_iterator begin,
                    QList<QPointF>::const_iterator end) {
    const auto [lowest, highest] = std::minmax_element(
        begin, end, [](const QPointF& left, const QPointF& right) { return left.y() < right.y(); });
    curve.append(*std::min(lowest, highest));
    if (lowest != highest) {
        curve.append(*std::max(lowest, highest));
    }
}

}  // namespace

bool isReading(double value) {
    return TLM::SDK::isValidValue(value) && std::isfinite(value);
}

AxisValues axisOf(const Lap& lap, Axis axis) {
    return axis == Axis::Distance ? distanceOf(lap) : timeOf(lap);
}

void widen(Range& range, const AxisValues& axis) {
    for (const double value : axis.values) {
        if (isReading(value)) {
            range.low = std::min(range.low, value);
            range.high = std::max(range.high, value);
        }
    }
}

QList<QPointF> curveOf(const Channel& channel, const AxisValues& axis) {
    const qsizetype size = std::min(channel.samples.size(), axis.values.size());
    QList<QPointF> points;
    points.reserve(size);
    for (qsizetype i = 0; i < size; ++i) {
        if (isReading(axis.values.at(i)) && isReading(channel.sample(i))) {
            points.append({axis.values.at(i), channel.sample(i)});
        }
    }
    return points;
}

QList<QPointF> thinned(const QList<QPointF>& curve, qsizetype columns) {
    const qsizetype runs = std::max<qsizetype>(columns, 1);
    if (curve.size() <= 2 * runs + 2) {
        return curve;
    }
    QList<QPointF> points;
    points.reserve(2 * runs + 2);
    points.append(curve.constFirst());
    const qsizetype inner = curve.size() - 2;
    for (qsizetype run = 0; run < runs; ++run) {
        appendExtremes(points, curve.cbegin() + 1 + run * inner / runs,
                       curve.cbegin() + 1 + (run + 1) * inner / runs);
    }
    points.append(curve.constLast());
    return points;
}

}  // namespace rataip::laps
