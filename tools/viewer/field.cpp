#include "tools/viewer/field.h"

#include <algorithm>
#include <cmath>

namespace rataip::viewer {

using TLM::SDK::CarInfo;
using TLM::SDK::DynamicData;
using TLM::SDK::Sample;

namespace {

std::optional<double> numberOf(const DynamicData& values, const QString& name) {
    const auto found = values.data().constFind(name);
    if (found == values.data().cend()) {
        return std::nullopt;
    }
    bool isNumber = false;
    const double number = found->value.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<int> countOf(const DynamicData& values, const QString& name) {
    const std::optional<double> number = numberOf(values, name);
    return number && *number >= 0.0 && *number < 1e9 ? std::optional(static_cast<int>(*number))
                                                     : std::nullopt;
}

/** Sources report -1 for a car out of the world. A share may slightly exceed 0 to 1. */
std::optional<double> shareOf(const DynamicData& values) {
    const std::optional<double> share = numberOf(values, QStringLiteral("lapdistpct"));
    return share && *share > -0.2 ? std::optional(std::clamp(*share, 0.0, 1.0)) : std::nullopt;
}

/** The own car's last lap time has a different name from the other cars'. */
std::optional<double> lastLapOf(const CarState& car, const DynamicData& values) {
    const std::optional<double> seconds = numberOf(
        values, car.isOwn() ? QStringLiteral("laplastlaptime") : QStringLiteral("lastlaptime"));
    return seconds && *seconds > 0.0 ? seconds : std::nullopt;
}

/**
 * In laps. Uses the number of the current lap, which changes at the line together with the share of
 * the lap. The number of completed laps follows up to half a second later; with it the car would
 * fall back by a lap in between.
 */
double distanceOf(const CarState& car) {
    return car.lap.value_or(0) + car.share.value_or(0.0);
}

void rank(QList<CarState>& cars) {
    QList<CarState*> running;
    for (CarState& car : cars) {
        if (car.isInWorld()) {
            running.append(&car);
        }
    }
    std::stable_sort(running.begin(), running.end(),
                     [](const CarState* left, const CarState* right) {
                         return distanceOf(*left) > distanceOf(*right);
                     });
    int position = 0;
    for (CarState* car : running) {
        car->position = ++position;
    }
}

}  // namespace

void Field::setCars(const TLM::SDK::LivePluginInfo& info) {
    m_slots.resize(info.cars.size());
    for (qsizetype slot = 0; slot < info.cars.size(); ++slot) {
        m_slots[slot].info = info.cars.at(slot);
    }
}

void Field::setSamples(const QList<Sample>& samples) {
    const qsizetype count = std::min(samples.size(), m_slots.size());
    for (qsizetype slot = 0; slot < count; ++slot) {
        CarState& car = m_slots[slot];
        if (car.info.driverName().isEmpty()) {
            continue;
        }
        const DynamicData& values = samples.at(slot);
        car.share = shareOf(values);
        car.lap = countOf(values, QStringLiteral("lap"));
        car.lastLapSeconds = lastLapOf(car, values);
    }
}

void Field::clearSamples() {
    for (CarState& car : m_slots) {
        CarInfo info = car.info;
        info.setStatus(TLM::SDK::CarStatus::NotConnected);
        car = CarState();
        car.info = info;
    }
}

std::optional<qsizetype> Field::ownSlot() const {
    // A slot without a driver has the record's defaults, which include detailed telemetry.
    const auto own = std::find_if(m_slots.cbegin(), m_slots.cend(), [](const CarState& car) {
        return car.isOwn() && !car.info.driverName().isEmpty();
    });
    return own == m_slots.cend() ? std::nullopt : std::optional(own - m_slots.cbegin());
}

QList<CarState> Field::cars() const {
    QList<CarState> cars;
    for (const CarState& car : m_slots) {
        if (!car.info.driverName().isEmpty()) {
            cars.append(car);
        }
    }
    rank(cars);
    return cars;
}

}  // namespace rataip::viewer
