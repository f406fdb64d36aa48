#include "tools/viewer/livelap.h"

#include "sdk/utilities.h"
#include "tools/laps/curve.h"
#include "tools/laps/displayunit.h"

#include <cmath>

namespace rataip::viewer {

using TLM::SDK::DynamicData;
using TLM::SDK::Lap;

namespace {

constexpr double percent = 100.0;
constexpr double dropOfANewLap = 0.5;

bool isReading(double value) {
    return TLM::SDK::isValidValue(value) && std::isfinite(value);
}

bool isPreviousFlyingLap(const Lap& lap) {
    return lap.detailedTelemetry() && lap.completed() &&
           lap.lapType() == TLM::SDK::LapType::FlyingLap;
}

laps::AxisValues percentOfLap(const Lap& lap) {
    laps::AxisValues axis;
    if (const auto share = lap.channel(QStringLiteral("lapdistpct"))) {
        axis.values = share->samples;
        for (double& value : axis.values) {
            value = isReading(value) ? value * percent : value;
        }
    }
    return axis;
}

}  // namespace

void LiveLap::add(const DynamicData& values) {
    bool isNumber = false;
    const double share = values.value(QStringLiteral("lapdistpct")).value.toDouble(&isNumber);
    if (!isNumber || !isReading(share) || share < 0.0) {
        return;
    }
    if (m_lastShare - share > dropOfANewLap) {
        m_current = TraceCurves();
    }
    m_lastShare = share;
    for (std::size_t i = 0; i < liveTraces.size(); ++i) {
        const TLM::SDK::Value value = values.value(QString::fromLatin1(liveTraces[i].channel));
        const double reading = value.value.toDouble(&isNumber);
        if (isNumber && isReading(reading)) {
            const laps::DisplayUnit display = laps::displayUnit(value.unit());
            m_units[i] = display.unit;
            m_current[i].append({share * percent, reading * display.factor});
        }
    }
}

void LiveLap::addFinished(const Lap& lap) {
    if (!isPreviousFlyingLap(lap)) {
        return;
    }
    const laps::AxisValues axis = percentOfLap(lap);
    for (std::size_t i = 0; i < liveTraces.size(); ++i) {
        m_previous[i].clear();
        const auto channel = lap.channel(QString::fromLatin1(liveTraces[i].channel));
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
