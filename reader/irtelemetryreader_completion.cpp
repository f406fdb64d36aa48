#include "reader/debuglines.h"
#include "reader/farthestdistance.h"
#include "reader/irtelemetryreader.h"
#include "reader/zeroreadings.h"

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

namespace {

// The time of a lap that has none, by agreement with the host: a second less than an hour.
constexpr float invalidLapTimeSeconds = 3599.0F;

constexpr float millisecondsPerSecond = 1000.0F;

// A reading this close to nothing was not measured.
constexpr double zeroReading = 1e-12;

constexpr double inWorldLapDistance = -0.2;

bool fitsInt(double number) {
    // NaN fails both.
    return number > static_cast<double>(std::numeric_limits<int>::min()) - 1.0 &&
           number < static_cast<double>(std::numeric_limits<int>::max()) + 1.0;
}

bool isLapTime(float seconds) {
    return !(seconds < 0.0F) && !reader::isZeroLapTime(seconds) &&
           fitsInt(static_cast<double>(millisecondsPerSecond * seconds));
}

void setLapType(Lap& lap, CarStatus status) {
    if (status == CarStatus::OutLap) {
        lap.setLapType(LapType::OutLap);
    } else if (status == CarStatus::FlyingLap) {
        lap.setLapType(LapType::FlyingLap);
    }
}

/** An out lap has a time in a race alone: elsewhere it began in the pits. */
void setLapTime(RecorderCar& car, bool completed) {
    RecorderSample& current = car.current;
    const bool isRace = current.sessionType == static_cast<qint32>(Session::Race);
    const bool isUntimed = car.lap->lapType() == LapType::OutLap && !isRace;
    if (!completed || isUntimed || !isLapTime(current.lastLapTime)) {
        current.lastLapTime = invalidLapTimeSeconds;
    }
    const int milliseconds = static_cast<int>(millisecondsPerSecond * current.lastLapTime);
    car.lap->setLapTime(QTime(0, 0, 0, 0).addMSecs(milliseconds));
}

/** A lap that the simulator numbers 0 when it ends early has its number in its first sample. */
void restoreLapNumber(RecorderCar& car) {
    if (car.current.lap != 0 || car.current.lapInStint <= 0) {
        return;
    }
    const auto numbers = car.lap->channel(u"lap"_s);
    if (numbers == nullptr || numbers->samples.isEmpty()) {
        return;
    }
    const double number = numbers->samples.constFirst();
    if (fitsInt(number)) {
        car.current.lap = static_cast<qint32>(number);
    }
}

void setLapCounters(RecorderCar& car, bool completed, bool diskLoading) {
    Lap& lap = *car.lap;
    lap.setLapInStint(car.previous.lapInStint);
    if (completed) {
        lap.setLapInSession(std::max(car.previous.lap, 1) - 1);
    } else {
        restoreLapNumber(car);
        lap.setLapInSession(std::max(car.previous.lap, 0));
        if (diskLoading) {
            lap.setLapInSession(car.current.lap);
            lap.setLapInStint(car.current.lapInStint);
        }
    }
    lap.setStintInSession(car.previous.stintInSession);
}

bool isOutOfLine(const Channel& channel, qsizetype i) {
    return channel.sample(i) > channel.sample(i + 1) || std::fabs(channel.sample(i)) <= zeroReading;
}

/** Replaces leftovers from the last reading back, by values that rise with lap distance. */
void repairBeginning(Channel& channel, const Channel& distance) {
    struct Reference {
        double reading;
        double distance;
    };
    std::optional<Reference> good;
    const qsizetype count = std::min(channel.samples.size(), distance.samples.size());
    for (qsizetype i = count - 2; i >= 0; --i) {
        if (!isOutOfLine(channel, i)) {
            continue;
        }
        if (!good || good->reading < 0.0) {
            good = Reference{channel.sample(i + 1), distance.sample(i + 1)};
        }
        if (std::fabs(good->reading) <= zeroReading) {
            return;
        }
        channel.setSample(i, distance.sample(i) * good->reading / good->distance);
    }
}

}  // namespace

void iRTelemetryReader::processLap(int index, bool completed) {
    endLap(index, completed);
    reader::writeDebugLines(takeDebugLines());
}

QStringList iRTelemetryReader::closeOpenLaps() {
    for (int car = 0; car < carCount(); ++car) {
        // The last tick's laps are the host's: one of its threads may be writing them to disk.
        m_cars[car].leaveReadyLap();
        endLap(car, false);
    }
    return takeDebugLines();
}

QStringList iRTelemetryReader::takeDebugLines() {
    return std::exchange(m_debugLines, {});
}

void iRTelemetryReader::endLap(int index, bool completed) {
    RecorderCar& car = m_cars[index];
    Lap& lap = *car.lap;
    // Asked before this function looks at them itself.
    const bool areChannelsSeen = lap.areChannelsSeen();
    car.closeLap();
    if (lap.isEmpty()) {
        return;
    }
    if (areChannelsSeen) {
        car.course.spoil();
    }
    setLapType(lap, car.previous.status);
    setLapTime(car, completed);
    lap.setLapId(car.previous.lapId);
    lap.setStintId(car.previous.stintId);
    setLapCounters(car, completed, m_diskLoading);
    lap.setCompleted(completed);
    lap.setDetailedTelemetry(car.detailedTelemetry);
    lap.setDateTime(QDateTime::currentDateTime());
    lap.removeValue(reader::farthestDistanceName());
    getSessionInfo(index, &lap);
    cleanupLap(index);
    deriveChannels(index);
    normalizeChannelBeginning(index, u"lapcurrentlaptime"_s);
    normalizeChannelBeginning(index, u"energybatterytomgu_klap"_s);
    normalizeChannelBeginning(index, u"energymgu_klapdeploypct"_s);
}

void iRTelemetryReader::normalizeChannelBeginning(int car, const QString& name) {
    Lap& lap = *m_cars[car].lap;
    const auto channel = lap.channel(name);
    const auto distance = lap.channel(keyOf(KnownValue::LapDistPct));
    if (channel != nullptr && distance != nullptr) {
        repairBeginning(*channel, *distance);
    }
}

void iRTelemetryReader::cleanupLap(int car) {
    if (isReplay()) {
        m_cars[car].lap->removeChannel(u"lapcurrentlaptime"_s);
    }
}

bool iRTelemetryReader::isLapReady(int car) const {
    return m_cars[car].lapReady;
}

QSharedPointer<Lap> iRTelemetryReader::lap(int car) const {
    return m_cars[car].lap;
}

bool iRTelemetryReader::isCarInWorld(int car) const {
    return static_cast<double>(m_cars[car].current.lapDistPct) > inWorldLapDistance;
}

bool iRTelemetryReader::isMyLapReady() const {
    return hasOwnCarSlot() && isLapReady(m_myCarIdx);
}

QSharedPointer<Lap> iRTelemetryReader::myLap() const {
    return hasOwnCarSlot() ? lap(m_myCarIdx) : QSharedPointer<Lap>();
}

void iRTelemetryReader::processMyLap(bool completed) {
    if (hasOwnCarSlot()) {
        processLap(m_myCarIdx, completed);
    }
}
