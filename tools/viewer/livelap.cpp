#include "tools/viewer/livelap.h"

#include "tools/laps/curve.h"
#include "tools/laps/displayunit.h"

#include <algorithm>

namespace rataip::viewer {

using laps::isReading;
using TLM::SDK::DynamicData;
using TLM::SDK::Lap;

namespace {

constexpr double kPercent = 100.0;
constexpr double kNewLapDrop = 0.5;

laps::AxisValues percentOfLap(const Lap& lap) {
    laps::AxisValues axis;
    if (const auto share = lap.channel(QStringLiteral("lapdistpct"))) {
        axis.values = share->samples;
        for (double& value : axis.values) {
            value = isReading(value) ? value * kPercent : value;
        }
    }
    return axis;
}

/**
 * While the car stands still, its readings lie above each other. The first, the lowest, the highest
 * and the newest of them draw the same line as all of them.
 */
void addPoint(QList<QPointF>& curve, const QPointF& point) {
    constexpr qsizetype kPointsPerPlace = 4;
    const qsizetype first = curve.size() - kPointsPerPlace;
    // All four are compared, because the share may also decrease.
    const bool isFull = first >= 0 && std::all_of(curve.cbegin() + first, curve.cend(),
                                                  [&point](const QPointF& other) {
                                                      return other.x() == point.x();
                                                  });
    if (!isFull) {
        curve.append(point);
        return;
    }
    const auto [lowest, highest] =
        std::minmax({curve.at(first + 1).y(), curve.at(first + 2).y(), curve.at(first + 3).y()});
    curve[first + 1].setY(lowest);
    curve[first + 2].setY(highest);
    curve[first + 3] = point;
}

}  // namespace

bool isOwnFlyingLap(const Lap& lap) {
    return lap.detailedTelemetry() && lap.completed() &&
           lap.lapType() == TLM::SDK::LapType::FlyingLap;
}

void LiveLap::add(const DynamicData& values) {
    bool isNumber = false;
    const double share = values.value(QStringLiteral("lapdistpct")).value.toDouble(&isNumber);
    if (!isNumber || !isReading(share) || share < 0.0) {
        return;
    }
    if (m_lastShare - share > kNewLapDrop) {
        m_current = TraceCurves();
    }
    m_lastShare = share;
    for (std::size_t i = 0; i < kLiveTraces.size(); ++i) {
        const TLM::SDK::Value value = values.value(QString::fromLatin1(kLiveTraces[i].channel));
        const double reading = value.value.toDouble(&isNumber);
        if (isNumber && isReading(reading)) {
            const laps::DisplayUnit display = laps::displayUnit(value.unit());
            m_units[i] = display.unit;
            addPoint(m_current[i], {share * kPercent, reading * display.factor});
        }
    }
}

void LiveLap::addFinished(const Lap& lap) {
    if (!isOwnFlyingLap(lap)) {
        return;
    }
    const laps::AxisValues axis = percentOfLap(lap);
    for (std::size_t i = 0; i < kLiveTraces.size(); ++i) {
        m_previous[i].clear();
        const auto channel = lap.channel(QString::fromLatin1(kLiveTraces[i].channel));
        if (!channel) {
            continue;
        }
        const laps::DisplayUnit display = laps::displayUnit(channel->unit());
        m_previous[i] = laps::curveOf(*channel, axis);
        for (QPointF& point : m_previous[i]) {
            point.setY(point.y() * display.factor);
        }
    }
    ++m_previousRevision;
}

void LiveLap::restart() {
    m_current = TraceCurves();
    m_lastShare = -1.0;
}

}  // namespace rataip::viewer
