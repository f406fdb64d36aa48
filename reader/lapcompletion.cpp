#include "reader/lapcompletion.h"

#include "reader/numbers.h"
#include "sdk/shared.h"

#include <QDateTime>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::CarStatus;
using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::LapType;
using TLM::SDK::Session;

namespace reader {

namespace {

// The time of a lap that has none, by agreement with the host: a second less than an hour.
constexpr float kInvalidLapTimeSeconds = 3599.0F;

constexpr float kMillisecondsPerSecond = 1000.0F;

// A reading this close to zero was not measured.
constexpr double kZeroReading = 1e-12;

// A lap whose first reading lies before this part of the lap starts at the line.
constexpr double kLapStartDistance = 0.01;

bool fitsInt(double number) {
    // NaN fails both.
    return number > static_cast<double>(std::numeric_limits<int>::min()) - 1.0 &&
           number < static_cast<double>(std::numeric_limits<int>::max()) + 1.0;
}

bool isLapTime(float seconds) {
    return !(seconds < 0.0F) && !isZeroLapTime(seconds) &&
           fitsInt(static_cast<double>(kMillisecondsPerSecond * seconds));
}

void setLapType(Lap& lap, CarStatus status) {
    if (status == CarStatus::OutLap) {
        lap.setLapType(LapType::OutLap);
    } else if (status == CarStatus::FlyingLap) {
        lap.setLapType(LapType::FlyingLap);
    }
}

/** An out lap has a time in a race alone: elsewhere it began in the pits. */
void setLapTime(Lap& lap, RecorderSample& current, bool completed) {
    const bool isRace = current.sessionType == static_cast<qint32>(Session::Race);
    const bool isUntimed = lap.lapType() == LapType::OutLap && !isRace;
    if (!completed || isUntimed || !isLapTime(current.lastLapTime)) {
        current.lastLapTime = kInvalidLapTimeSeconds;
    }
    const int milliseconds = static_cast<int>(kMillisecondsPerSecond * current.lastLapTime);
    lap.setLapTime(QTime(0, 0, 0, 0).addMSecs(milliseconds));
}

/** A lap that the simulator numbers 0 when it ends early has its number in its first sample. */
void restoreLapNumber(RecorderSample& current, const Lap& lap) {
    if (current.lap != 0 || current.lapInStint <= 0) {
        return;
    }
    const auto numbers = lap.channel(u"lap"_s);
    if (numbers == nullptr || numbers->samples.isEmpty()) {
        return;
    }
    const double number = numbers->samples.constFirst();
    if (fitsInt(number)) {
        current.lap = static_cast<qint32>(number);
    }
}

void setLapCounters(Lap& lap, RecorderCar& car, bool completed, bool diskLoading) {
    lap.setLapInStint(car.previous.lapInStint);
    if (completed) {
        lap.setLapInSession(std::max(car.previous.lap, 1) - 1);
    } else {
        restoreLapNumber(car.current, lap);
        lap.setLapInSession(std::max(car.previous.lap, 0));
        if (diskLoading) {
            lap.setLapInSession(car.current.lap);
            lap.setLapInStint(car.current.lapInStint);
        }
    }
    lap.setStintInSession(car.previous.stintInSession);
}

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
    const auto channel = TLM::SDK::makeShared<Channel>();
    channel->samples = samples;
    channel->setUnit(unit);
    lap.addChannel(channel, name);
}

void addFuelWeight(Lap& lap) {
    const auto level = lap.channel(u"fuellevel"_s);
    const double density = lap.value(u"Kg per fuel litre"_s).value.toDouble();
    if (level == nullptr || !isDensity(density)) {
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

LapCourse courseAlong(const QList<double>& clock, const QList<double>& fractions, qsizetype count,
                      double kilometres) {
    LapCourse course(kilometres, count);
    for (qsizetype i = 0; i < count; ++i) {
        course.add(clock[i], fractions[i]);
    }
    return course;
}

QStringList addTimeAndDistance(Lap& lap, LapCourse course, Feed feed) {
    const auto fractions = lap.channel(nameOf(KnownValue::LapDistPct));
    const auto clock = lap.channel(u"sessiontime"_s);
    if (fractions == nullptr || clock == nullptr) {
        return {};
    }
    // The two differ by the entries that a channel lacks when it came to the lap late.
    const qsizetype count = std::min(fractions->samples.size(), clock->samples.size());
    if (count == 0) {
        return {};
    }
    const QVariant trackLength = lap.value(u"Track length"_s).value;
    const double kilometres = trackLength.toDouble();
    if (!course.isOf(fractions->samples.size(), kilometres) ||
        !course.isOf(clock->samples.size(), kilometres)) {
        course = courseAlong(clock->samples, fractions->samples, count, kilometres);
    }
    course.complete();
    if (fractions->samples.constFirst() < kLapStartDistance) {
        addChannel(lap, u"lapcurrentlaptime"_s, course.time());
    }
    QStringList lines;
    if (feed == Feed::Live && trackLength.isValid()) {
        lines = course.repairSpikes();
        addChannel(lap, u"speed"_s, course.speed(), "m/"_L1 + clock->unit());
        addChannel(lap, u"lapdist"_s, course.distance(), u"m"_s);
    }
    addChannel(lap, u"dt"_s, course.timeSteps());
    return lines;
}

bool isOutOfLine(const Channel& channel, qsizetype i) {
    return channel.sample(i) > channel.sample(i + 1) ||
           std::fabs(channel.sample(i)) <= kZeroReading;
}

}  // namespace

void describeLap(RecorderCar& car, bool completed, bool diskLoading) {
    Lap& lap = *car.lap;
    setLapType(lap, car.previous.status);
    setLapTime(lap, car.current, completed);
    lap.setLapId(car.previous.lapId);
    lap.setStintId(car.previous.stintId);
    setLapCounters(lap, car, completed, diskLoading);
    lap.setCompleted(completed);
    lap.setDetailedTelemetry(car.detailedTelemetry);
    lap.setDateTime(QDateTime::currentDateTime());
    lap.removeValue(LapRecorder::farthestDistanceName());
}

bool needsCourse(bool isOwnCar, Feed feed) {
    return !isOwnCar || feed == Feed::Replay;
}

QStringList deriveChannels(Lap& lap, LapCourse course, bool isOwnCar, Feed feed) {
    correctYaw(lap);
    addFuelWeight(lap);
    renamePercentUnits(lap);
    return needsCourse(isOwnCar, feed) ? addTimeAndDistance(lap, std::move(course), feed)
                                       : QStringList();
}

void repairBeginning(Lap& lap, const QString& name) {
    const auto channel = lap.channel(name);
    const auto distance = lap.channel(nameOf(KnownValue::LapDistPct));
    if (channel == nullptr || distance == nullptr) {
        return;
    }
    struct Reference {
        double reading;
        double distance;
    };
    std::optional<Reference> good;
    const qsizetype count = std::min(channel->samples.size(), distance->samples.size());
    for (qsizetype i = count - 2; i >= 0; --i) {
        if (!isOutOfLine(*channel, i)) {
            continue;
        }
        if (!good || good->reading < 0.0) {
            good = Reference{channel->sample(i + 1), distance->sample(i + 1)};
        }
        if (std::fabs(good->reading) <= kZeroReading) {
            return;
        }
        channel->setSample(i, distance->sample(i) * good->reading / good->distance);
    }
}

}  // namespace reader
