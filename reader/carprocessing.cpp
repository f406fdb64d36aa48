#include "reader/carprocessing.h"

#include "reader/lapcompletion.h"
#include "reader/numbers.h"

#include <cmath>
#include <cstddef>
#include <optional>

using namespace Qt::StringLiterals;
using TLM::SDK::CarStatus;
using TLM::SDK::Value;

namespace reader {

namespace {

// A single-precision constant, as the simulator's own readings are.
constexpr float kMissingReading = 1e25F;

// At or below this the simulator has no place on the track for the car.
constexpr float kNotInWorldLapDistance = -0.5F;

// A car on pit road that moves less than this part of a lap in a tick stands in its stall.
constexpr double kStandingLapDistance = 0.001;

constexpr float kStandingSpeed = 1.0F;

constexpr double kReplaySpeedTolerance = 0.001;

/** Where a car is. In its stall it may be on pit road too. */
struct Place {
    bool inPitStall = false;
    bool onPitRoad = false;
    bool onTrack = false;
};

QVariant read(const CarSample& sample, const QString& name) {
    return sample.value(name).value;
}

float floatOr(float fallback, const QVariant& reading) {
    return reading.isValid() ? reading.toFloat() : fallback;
}

int intOr(int fallback, const QVariant& reading) {
    return reading.isValid() ? toInt(reading) : fallback;
}

void readPosition(RecorderCar& car) {
    const QVariant* const lapDistPct = car.sample.known(KnownValue::LapDistPct);
    const QVariant* const sessionState = car.sample.known(KnownValue::SessionState);
    const QVariant* const sessionTick = car.sample.known(KnownValue::SessionTick);
    RecorderSample& current = car.current;
    current.lapDistPct = lapDistPct == nullptr ? -1.0F : floatOr(-1.0F, *lapDistPct);
    current.sessionState = sessionState == nullptr ? 0 : toInt(*sessionState);
    current.sessionTick = sessionTick == nullptr ? 0 : toULongLong(*sessionTick);
}

bool isOwnCarInPitStall(const CarSample& sample, Feed feed) {
    if (feed == Feed::Live) {
        const QVariant onTrack = read(sample, u"isontrack"_s);
        return !onTrack.isValid() || !onTrack.toBool();
    }
    const QVariant inPitStall = read(sample, u"playercarinpitstall"_s);
    return !inPitStall.isValid() || inPitStall.toBool();
}

void markFullTelemetry(CarSample& sample) {
    static const QString kName = u"fulltelemetry"_s;
    const Value mark = sample.value(kName);
    // Once set it stays, and a change would have the places of all values found anew.
    if (mark.value.typeId() != QMetaType::Int || mark.value.toInt() != 1 ||
        !mark.unit().isEmpty()) {
        sample.set(kName, Value(QVariant(1), QString()));
    }
}

Place readOwnCar(RecorderCar& car, Feed feed) {
    RecorderSample& current = car.current;
    current.lap = intOr(-1, read(car.sample, u"lap"_s));
    Place place;
    if (isOwnCarInPitStall(car.sample, feed)) {
        place.inPitStall = true;
    } else {
        place.onPitRoad = read(car.sample, u"onpitroad"_s).toBool();
        place.onTrack = !place.onPitRoad;
        const QString lastLapTime = feed == Feed::Replay ? u"lastlaptime"_s : u"laplastlaptime"_s;
        current.lastLapTime = floatOr(-1.0F, read(car.sample, lastLapTime));
        current.lapCurrentLapTime =
            floatOr(kMissingReading, read(car.sample, u"lapcurrentlaptime"_s));
    }
    markFullTelemetry(car.sample);
    return place;
}

bool isStanding(const RecorderCar& car) {
    const float step = car.current.lapDistPct - car.previous.lapDistPct;
    return static_cast<double>(std::fabs(step)) < kStandingLapDistance;
}

void readLapNumberAndTime(RecorderCar& car, const std::optional<CarResult>& result) {
    car.current.lap = -1;
    if (result) {
        car.current.lap = result->lap;
        car.current.lastLapTime = result->lastLapTime;
    }
    if (car.current.lap == -1) {
        car.current.lap = incrementSaturated(toInt(read(car.sample, u"lapcompleted"_s)));
        car.current.lastLapTime = static_cast<float>(read(car.sample, u"lastlaptime"_s).toDouble());
    }
}

Place readOtherCar(RecorderCar& car, const std::optional<CarResult>& result) {
    readLapNumberAndTime(car, result);
    const QVariant* const onPitRoad = car.sample.known(KnownValue::OnPitRoad);
    if (onPitRoad == nullptr || !onPitRoad->isValid() || onPitRoad->toBool()) {
        return {.inPitStall = isStanding(car), .onPitRoad = true};
    }
    return {.onTrack = true};
}

void moveStatusOn(RecorderCar& car, const Place& place, const SessionFacts& session) {
    if (car.current.sessionType == -1 && session.kind) {
        car.current.sessionType = static_cast<qint32>(*session.kind);
    }
    car.updateCarStatus(place.inPitStall, place.onPitRoad, place.onTrack);
    car.current.lapAborted = car.isLapAborted();
}

bool waitsForLap(const RecorderCar& car) {
    const CarStatus status = car.current.status;
    const bool inPits = status == CarStatus::InPitStall || status == CarStatus::InPitlane;
    return status == CarStatus::WaitingForStart || (inPits && car.lap.isEmpty());
}

bool isStandingBySpeed(const CarSample& sample) {
    const QVariant* const speed = sample.known(KnownValue::Speed);
    return speed != nullptr && speed->toFloat() < kStandingSpeed;
}

bool isPlayedAtOtherSpeed(const CarSample& sample) {
    const double speed = read(sample, u"replayplayspeed"_s).toDouble();
    return std::fabs(speed - 1.0) > kReplaySpeedTolerance;
}

LapOutcome discardReplayLap(RecorderCar& car) {
    if (car.lap.isEmpty()) {
        return LapOutcome::GoesOn;
    }
    car.lap.discard();
    car.nextLap.discard();
    car.current.status = CarStatus::OutLap;
    return LapOutcome::Discarded;
}

LapOutcome recordSample(RecorderCar& car, bool isOwn, const TickContext& tick) {
    if (waitsForLap(car) || isStandingBySpeed(car.sample)) {
        return LapOutcome::GoesOn;
    }
    const auto track =
        needsCourse(isOwn, tick.feed) ? std::optional(tick.trackKilometres) : std::nullopt;
    if (car.lap.noteDistance(car.current.lapDistPct) == LapPart::AfterLine) {
        car.nextLap.add(car.sample, track);
        return LapOutcome::GoesOn;
    }
    if (tick.feed == Feed::Replay && car.detailedTelemetry && isPlayedAtOtherSpeed(car.sample)) {
        return discardReplayLap(car);
    }
    car.lap.add(car.sample, track);
    return LapOutcome::GoesOn;
}

}  // namespace

LapOutcome processCar(RecorderCar& car, int index, const TickContext& tick) {
    if (car.driverName.isEmpty()) {
        return LapOutcome::GoesOn;
    }
    readPosition(car);
    if (car.current.sessionTick == car.previous.sessionTick) {
        return LapOutcome::GoesOn;
    }
    if (car.current.lapDistPct <= kNotInWorldLapDistance) {
        car.current.status = CarStatus::NotInWorld;
        return LapOutcome::GoesOn;
    }
    const bool isOwn = index == tick.ownCar;
    if (!isOwn && tick.sessionNumber < 0) {
        return LapOutcome::GoesOn;
    }
    const Place place =
        isOwn ? readOwnCar(car, tick.feed)
              : readOtherCar(car, tick.session.results[static_cast<std::size_t>(index)]);
    moveStatusOn(car, place, tick.session);
    if (car.current.lapAborted || tick.isNewSession) {
        return LapOutcome::Aborted;
    }
    if (car.current.lapCompleted) {
        return LapOutcome::Completed;
    }
    return recordSample(car, isOwn, tick);
}

}  // namespace reader
