#include "reader/irtelemetryreader.h"

#include <QDebug>

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::Channel;
using TLM::SDK::Lap;

namespace {

// What counts as no fuel density at all.
constexpr double zeroDensity = 1e-12;

// A lap whose first reading lies before this part of the lap starts at the line.
constexpr double lapStartDistance = 0.01;

constexpr double metresPerKilometre = 1000.0;

// A speed spike leaves and returns by more than this, in the unit of speed, and by more than this
// many times what remains of it.
constexpr double spikeStep = 5.0;
constexpr double spikeRatio = 5.0;

/**
 * Adds the north offset to the heading. The offset is stored as "YawOffset" and the heading is
 * recorded as "yaw", so that neither is found under the names asked for here and both reach the
 * host as they are, which is what hosts are used to.
 */
void correctYaw(Lap& lap) {
    const double offset = lap.value(u"yawOffset"_s).value.toDouble();
    if (const auto yaw = lap.channel(u"Yaw"_s)) {
        for (double& reading : yaw->samples) {
            reading += offset;
        }
    }
    lap.removeValue(u"yawOffset"_s);
}

QSharedPointer<Channel> createChannel(const QString& unit = {}) {
    auto channel = QSharedPointer<Channel>::create();
    channel->setUnit(unit);
    return channel;
}

void addFuelWeight(Lap& lap) {
    const auto level = lap.channel(u"fuellevel"_s);
    const double density = lap.value(u"Kg per fuel litre"_s).value.toDouble();
    if (level == nullptr || std::fabs(density) <= zeroDensity) {
        return;
    }
    const auto weight = createChannel(u"kg"_s);
    weight->samples.resize(level->samples.size());
    std::transform(level->samples.cbegin(), level->samples.cend(), weight->samples.begin(),
                   [density](double reading) { return reading * density; });
    lap.addChannel(weight, u"fuelweight"_s);
}

void renamePercentUnits(Lap& lap) {
    for (const auto& channel : lap.channels()) {
        if (channel->unit() == "%"_L1) {
            channel->setUnit(u"pu"_s);
        }
    }
}

/** Lets the last entry repeat the one before; a lone entry stays 0. */
void repeatLast(QList<double>& readings) {
    if (readings.size() > 1) {
        readings.last() = readings[readings.size() - 2];
    }
}

/** The steps from each of the first `count` readings to the next. */
QList<double> steps(const QList<double>& readings, qsizetype count) {
    QList<double> result(count);
    std::transform(readings.cbegin() + 1, readings.cbegin() + count, readings.cbegin(),
                   result.begin(), std::minus<>());
    repeatLast(result);
    return result;
}

QList<double> runningTime(const QList<double>& timeSteps) {
    QList<double> result(timeSteps.size());
    double time = 0.0;
    std::span<double> times(result);
    for (qsizetype i = 0; i < timeSteps.size(); ++i) {
        times[static_cast<std::size_t>(i)] = time;
        time += timeSteps[i];
    }
    return result;
}

QList<double> lapDistance(const QList<double>& fractions, qsizetype count, double kilometres) {
    QList<double> result(count);
    std::transform(
        fractions.cbegin(), fractions.cbegin() + count, result.begin(),
        [kilometres](double fraction) { return fraction * kilometres * metresPerKilometre; });
    return result;
}

QList<double> speedAlong(const QList<double>& distance, const QList<double>& timeSteps) {
    QList<double> result = steps(distance, distance.size());
    std::transform(result.cbegin(), result.cend() - 1, timeSteps.cbegin(), result.begin(),
                   std::divides<>());
    repeatLast(result);
    return result;
}

bool isSpike(double before, double reading, double after) {
    const double rise = reading - before;
    const double fall = after - reading;
    return rise * fall < 0.0 &&
           std::fabs(rise) + std::fabs(fall) > spikeRatio * std::fabs(rise + fall) &&
           (rise > spikeStep || fall > spikeStep);
}

void repairSpikes(std::span<double> speed) {
    for (std::size_t i = 1; i + 1 < speed.size(); ++i) {
        const double before = speed[i - 1];
        const double after = speed[i + 1];
        if (isSpike(before, speed[i], after)) {
            qDebug() << "peak detected" << i << before << speed[i] << after;
            speed[i] = (before + after) * 0.5;
            qDebug() << "peak fixed" << speed[i];
        }
    }
}

void addSpeedAndDistance(Lap& lap, const QList<double>& fractions, const QList<double>& timeSteps,
                         double trackKilometres, const QString& timeUnit) {
    const auto distance = createChannel(u"m"_s);
    distance->samples = lapDistance(fractions, timeSteps.size(), trackKilometres);
    const auto speed = createChannel("m/"_L1 + timeUnit);
    speed->samples = speedAlong(distance->samples, timeSteps);
    repairSpikes(speed->samples);
    lap.addChannel(speed, u"speed"_s);
    lap.addChannel(distance, u"lapdist"_s);
}

}  // namespace

void iRTelemetryReader::preprocessLap(int car) {
    Lap& lap = *m_cars[car].lap;
    correctYaw(lap);
    addFuelWeight(lap);
    renamePercentUnits(lap);
    if (car != m_myCarIdx || isReplay()) {
        addTimeAndDistance(lap);
    }
}

void iRTelemetryReader::addTimeAndDistance(Lap& lap) const {
    const auto fractions = lap.channel(u"lapdistpct"_s);
    const auto sessionTime = lap.channel(u"sessiontime"_s);
    if (fractions == nullptr || sessionTime == nullptr) {
        return;
    }
    // The two differ by the entries that a channel lacks when it came to the lap late.
    const qsizetype count = std::min(fractions->samples.size(), sessionTime->samples.size());
    if (count == 0) {
        return;
    }
    const auto timeSteps = createChannel();
    timeSteps->samples = steps(sessionTime->samples, count);
    if (fractions->samples.constFirst() < lapStartDistance) {
        const auto time = createChannel();
        time->samples = runningTime(timeSteps->samples);
        lap.addChannel(time, u"lapcurrentlaptime"_s);
    }
    const QVariant trackLength = lap.value(u"Track length"_s).value;
    if (isLive() && trackLength.isValid()) {
        addSpeedAndDistance(lap, fractions->samples, timeSteps->samples, trackLength.toDouble(),
                            sessionTime->unit());
    }
    lap.addChannel(timeSteps, u"dt"_s);
}
