#include "reader/debuglines.h"
#include "reader/farthestdistance.h"
#include "reader/irtelemetryreader.h"
#include "reader/numbers.h"
#include "sdk/number.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::CarStatus;
using TLM::SDK::DynamicData;
using TLM::SDK::Lap;
using TLM::SDK::Value;

namespace {

// A single-precision constant, as the simulator's own readings are.
constexpr float missingReading = 1e25F;

// At or below this the simulator has no place on the track for the car.
constexpr float notInWorldLapDistance = -0.5F;

// A car on pit road that moves less than this part of a lap in a tick stands in its stall.
constexpr double standingLapDistance = 0.001;

constexpr float standingSpeed = 1.0F;

// A fall of the lap distance by more than half a lap from near the lap's end is the line.
constexpr double lineCrossingFall = 0.5;
constexpr double lineCrossingFrom = 0.9;

constexpr double replaySpeedTolerance = 0.001;

QVariant read(const DynamicData& values, const QString& name) {
    return values.value(name).value;
}

float floatOr(float fallback, const QVariant& reading) {
    return reading.isValid() ? reading.toFloat() : fallback;
}

int intOr(int fallback, const QVariant& reading) {
    return reading.isValid() ? reader::toInt(reading) : fallback;
}

bool isOwnCarInPitStall(const DynamicData& values, bool live) {
    if (live) {
        const QVariant onTrack = read(values, u"isontrack"_s);
        return !onTrack.isValid() || !onTrack.toBool();
    }
    const QVariant inPitStall = read(values, u"playercarinpitstall"_s);
    return !inPitStall.isValid() || inPitStall.toBool();
}

bool isStanding(const RecorderCar& car) {
    const float step = car.current.lapDistPct - car.previous.lapDistPct;
    return static_cast<double>(std::fabs(step)) < standingLapDistance;
}

void readLapNumberAndTime(RecorderCar& car, const std::optional<CarResult>& result) {
    car.current.lap = -1;
    if (result) {
        car.current.lap = result->lap;
        car.current.lastLapTime = result->lastLapTime;
    }
    if (car.current.lap == -1) {
        car.current.lap =
            reader::incrementSaturated(reader::toInt(read(car.sample, u"lapcompleted"_s)));
        car.current.lastLapTime = static_cast<float>(read(car.sample, u"lastlaptime"_s).toDouble());
    }
}

void markFullTelemetry(RecorderCar& car) {
    static const QString name = u"fulltelemetry"_s;
    const Value mark = std::as_const(car.sample).value(name);
    // Set once is set for good, and a change would have the places of all values found anew.
    if (mark.value.typeId() != QMetaType::Int || mark.value.toInt() != 1 ||
        !mark.unit().isEmpty()) {
        car.sample.setValue(name, QVariant(1), QString());
        ++car.sampleRevision;
    }
}

bool waitsForLap(const RecorderCar& car) {
    const CarStatus status = car.current.status;
    const bool inPits = status == CarStatus::InPitStall || status == CarStatus::InPitlane;
    return status == CarStatus::WaitingForStart || (inPits && car.lap->isEmpty());
}

enum class LapPart { BeforeLine, BehindLine };

/** Keeps the lap's farthest distance, and says where the car is. */
LapPart noteLapDistance(Lap& lap, float lapDistPct) {
    const QString& name = reader::farthestDistanceName();
    const auto kept = lap.data().find(name);
    if (kept == lap.data().end()) {
        lap.setValue(name, QVariant(lapDistPct), QString());
        return LapPart::BeforeLine;
    }
    const double farthest = kept->value.toDouble();
    const double distance = static_cast<double>(lapDistPct);
    if (distance > farthest) {
        kept->value.setValue(distance);
        return LapPart::BeforeLine;
    }
    const bool hasCrossedLine =
        farthest - distance > lineCrossingFall && farthest > lineCrossingFrom;
    return hasCrossedLine ? LapPart::BehindLine : LapPart::BeforeLine;
}

bool isPlayedAtOtherSpeed(const DynamicData& values) {
    const double speed = read(values, u"replayplayspeed"_s).toDouble();
    return std::fabs(speed - 1.0) > replaySpeedTolerance;
}

void abandonReplayLap(RecorderCar& car) {
    car.lap->clear();
    car.nextLap->clear();
    car.course.clear();
    car.nextCourse.clear();
    car.current.status = CarStatus::OutLap;
}

}  // namespace

void iRTelemetryReader::processData() {
    const int sessionNumber = ownSessionNumber();
    const bool sessionChanged = isSessionRestarted();
    m_results.refresh(*this, sessionNumber, static_cast<int>(m_cars.size()));
    for (int car = 0; car < m_cars.size(); ++car) {
        processCar(car, sessionNumber, sessionChanged);
    }
    reader::writeDebugLines(takeDebugLines());
}

int iRTelemetryReader::ownSessionNumber() const {
    if (!hasOwnCarSlot()) {
        return -1;
    }
    return reader::toInt(read(m_cars[m_myCarIdx].sample, u"sessionnum"_s));
}

void iRTelemetryReader::processCar(int index, int sessionNumber, bool sessionChanged) {
    RecorderCar& car = m_cars[index];
    if (car.driverName.isEmpty()) {
        return;
    }
    readPosition(index);
    if (car.current.sessionTick == car.previous.sessionTick) {
        return;
    }
    if (car.current.lapDistPct <= notInWorldLapDistance) {
        car.current.status = CarStatus::NotInWorld;
        return;
    }
    Place place;
    if (index == m_myCarIdx) {
        place = readOwnCar(car);
    } else if (sessionNumber < 0) {
        return;
    } else {
        readLapNumberAndTime(car, m_results.result(index));
        place = readOtherCar(index);
    }
    settleSessionType(car.current, sessionNumber);
    car.updateCarStatus(place.inPitStall, place.onPitRoad, place.onTrack);
    car.current.lapAborted = car.isLapAborted();
    if (car.current.lapAborted || sessionChanged) {
        endLap(index, false);
    } else if (car.current.lapCompleted) {
        endLap(index, true);
    } else {
        recordSample(index);
    }
}

iRTelemetryReader::Place iRTelemetryReader::readOwnCar(RecorderCar& car) const {
    RecorderSample& current = car.current;
    current.lap = intOr(-1, read(car.sample, u"lap"_s));
    Place place;
    if (isOwnCarInPitStall(car.sample, isLive())) {
        place.inPitStall = true;
    } else {
        place.onPitRoad = read(car.sample, u"onpitroad"_s).toBool();
        place.onTrack = !place.onPitRoad;
        const QString lastLapTime = isReplay() ? u"lastlaptime"_s : u"laplastlaptime"_s;
        current.lastLapTime = floatOr(-1.0F, read(car.sample, lastLapTime));
        current.lapCurrentLapTime =
            floatOr(missingReading, read(car.sample, u"lapcurrentlaptime"_s));
    }
    markFullTelemetry(car);
    return place;
}

iRTelemetryReader::Place iRTelemetryReader::readOtherCar(int index) const {
    const QVariant* const onPitRoad = known(index, KnownValue::OnPitRoad);
    if (onPitRoad == nullptr || !onPitRoad->isValid() || onPitRoad->toBool()) {
        return {.inPitStall = isStanding(m_cars[index]), .onPitRoad = true};
    }
    return {.onTrack = true};
}

const QVariant* iRTelemetryReader::known(int index, KnownValue value) const {
    const RecorderCar& car = m_cars[index];
    const auto remembered =
        m_generations[static_cast<std::size_t>(index)].find(value, car.sampleRevision);
    if (remembered && !car.sampleHandedOut) {
        return *remembered;
    }
    const auto found = car.sample.data().constFind(keyOf(value));
    return found == car.sample.data().cend() ? nullptr : &found->value;
}

void iRTelemetryReader::readPosition(int index) {
    const QVariant* const lapDistPct = known(index, KnownValue::LapDistPct);
    const QVariant* const sessionState = known(index, KnownValue::SessionState);
    const QVariant* const sessionTick = known(index, KnownValue::SessionTick);
    RecorderSample& current = m_cars[index].current;
    current.lapDistPct = lapDistPct == nullptr ? -1.0F : floatOr(-1.0F, *lapDistPct);
    current.sessionState = sessionState == nullptr ? 0 : reader::toInt(*sessionState);
    current.sessionTick = sessionTick == nullptr ? 0 : reader::toULongLong(*sessionTick);
}

/**
 * Sample values have lower-case names, so that no "Speed" is found and no standing car is held
 * back: hosts are used to the readings of a car that stands.
 */
bool iRTelemetryReader::isStandingBySpeed(int index) const {
    const QVariant* const speed = known(index, KnownValue::Speed);
    return speed != nullptr && speed->toFloat() < standingSpeed;
}

void iRTelemetryReader::settleSessionType(RecorderSample& current, int sessionNumber) {
    if (current.sessionType != -1) {
        return;
    }
    if (const auto kind = m_sessionKind.of(*this, sessionNumber)) {
        current.sessionType = static_cast<qint32>(*kind);
    }
}

void iRTelemetryReader::recordSample(int index) {
    RecorderCar& car = m_cars[index];
    if (waitsForLap(car) || isStandingBySpeed(index)) {
        return;
    }
    if (noteLapDistance(*car.lap, car.current.lapDistPct) == LapPart::BehindLine) {
        car.nextLap->addSample(car.sample);
        followCourse(index, car.nextCourse, *car.nextLap);
        return;
    }
    if (isReplay() && car.detailedTelemetry && isPlayedAtOtherSpeed(car.sample)) {
        if (!car.lap->isEmpty()) {
            abandonReplayLap(car);
            m_debugLines.append(u"Replay lap aborted"_s);
        }
        return;
    }
    car.lap->addSample(car.sample);
    followCourse(index, car.course, *car.lap);
}

/** Goes along with what addSample() appended to `lap`. */
void iRTelemetryReader::followCourse(int index, LapCourse& course, const Lap& lap) const {
    if (!needsCourse(index)) {
        return;
    }
    const QVariant* const clock = known(index, KnownValue::SessionTime);
    const QVariant* const fraction = known(index, KnownValue::LapDistPct);
    if (clock != nullptr && fraction != nullptr) {
        course.setTrack(m_trackKilometres);
        course.add(TLM::SDK::toNumber(*clock), TLM::SDK::toNumber(*fraction));
    } else if (!lap.isEmpty()) {
        course.spoil();
    }
}
