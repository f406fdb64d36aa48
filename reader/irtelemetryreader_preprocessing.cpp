#include "reader/irtelemetryreader.h"

#include <QDebug>

#include <algorithm>
#include <cmath>
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
    // Asked first, because the values are shared with other laps and removing copies them.
    if (lap.containsValue(u"yawOffset"_s)) {
        lap.removeValue(u"yawOffset"_s);
    }
}

void addChannel(Lap& lap, const QString& name, const QList<double>& samples,
                const QString& unit = {}) {
    const auto channel = QSharedPointer<Channel>::create();
    channel->samples = samples;
    channel->setUnit(unit);
    lap.addChannel(channel, name);
}

void addFuelWeight(Lap& lap) {
    const auto level = lap.channel(u"fuellevel"_s);
    const double density = lap.value(u"Kg per fuel litre"_s).value.toDouble();
    if (level == nullptr || std::fabs(density) <= zeroDensity) {
        return;
    }
    QList<double> weight(level->samples.size());
    std::transform(level->samples.cbegin(), level->samples.cend(), weight.begin(),
                   [density](double reading) { return reading * density; });
    addChannel(lap, u"fuelweight"_s, weight, u"kg"_s);
}

void renamePercentUnits(Lap& lap) {
    for (const auto& channel : lap.channels()) {
        if (channel->unit() == "%"_L1) {
            channel->setUnit(u"pu"_s);
        }
    }
}

/**
 * What follows from clock and place of a lap's samples. All of it is derived in one pass: at a
 * session's end 64 laps of thousands of samples are closed in one tick, and it is the way to the
 * memory that takes the time.
 */
struct Course {
    QList<double> timeSteps;    // to the next sample
    QList<double> time;         // since the first sample
    QList<double> distance;     // metres
    QList<double> speed;        // to the next sample
    bool hasSteepRise = false;  // of the speed, without which it has no spike

    /** The last entries of steps and speed repeat the ones before; lone ones are 0. */
    Course(std::span<const double> clock, std::span<const double> fractions, double kilometres);
};

Course::Course(std::span<const double> clock, std::span<const double> fractions, double kilometres)
    : timeSteps(static_cast<qsizetype>(clock.size())),
      time(timeSteps.size()),
      distance(timeSteps.size()),
      speed(timeSteps.size()) {
    double* const stepAt = timeSteps.data();
    double* const timeAt = time.data();
    double* const distanceAt = distance.data();
    double* const speedAt = speed.data();
    double elapsed = 0.0;
    double lastStep = 0.0;
    double lastSpeed = 0.0;
    bool isSteep = false;
    double here = fractions[0] * kilometres * metresPerKilometre;
    const std::size_t last = clock.size() - 1;
    for (std::size_t i = 0; i < last; ++i) {
        const double next = fractions[i + 1] * kilometres * metresPerKilometre;
        const double step = clock[i + 1] - clock[i];
        const double speedHere = (next - here) / step;
        isSteep = isSteep || (i > 0 && speedHere - lastSpeed > spikeStep);
        stepAt[i] = step;
        timeAt[i] = elapsed;
        distanceAt[i] = here;
        speedAt[i] = speedHere;
        elapsed += step;
        here = next;
        lastStep = step;
        lastSpeed = speedHere;
    }
    stepAt[last] = lastStep;
    timeAt[last] = elapsed;
    distanceAt[last] = here;
    speedAt[last] = lastSpeed;
    hasSteepRise = isSteep;
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
    const QVariant trackLength = lap.value(u"Track length"_s).value;
    const auto readings = [count](const Channel& channel) {
        return std::span(channel.samples).first(static_cast<std::size_t>(count));
    };
    Course course(readings(*sessionTime), readings(*fractions), trackLength.toDouble());
    if (fractions->samples.constFirst() < lapStartDistance) {
        addChannel(lap, u"lapcurrentlaptime"_s, course.time);
    }
    if (isLive() && trackLength.isValid()) {
        if (course.hasSteepRise) {
            repairSpikes(course.speed);
        }
        addChannel(lap, u"speed"_s, course.speed, "m/"_L1 + sessionTime->unit());
        addChannel(lap, u"lapdist"_s, course.distance, u"m"_s);
    }
    addChannel(lap, u"dt"_s, course.timeSteps);
}
