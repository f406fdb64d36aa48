#include "reader/recordercar.h"

#include "reader/numbers.h"
#include "sdk/utilities.h"

using TLM::SDK::CarStatus;
using TLM::SDK::Session;

namespace reader {

namespace {

// Cars further round the lap than this stand on the grid before a race, not on an out lap.
constexpr double kGridLapDistance = 0.65;

// A pit exit beyond this lies before the line: the out lap begins after it.
constexpr double kPitExitBeforeLineLapDistance = 0.8;

// A running lap time that falls by more than this has begun anew; less is a correction of it.
constexpr float kLapTimeFallSeconds = 5.0F;

constexpr qint32 kSessionStateRacing = 4;

bool isOffTrack(CarStatus status) {
    return status == CarStatus::Undefined || status == CarStatus::NotInWorld ||
           status == CarStatus::InPitStall || status == CarStatus::InPitlane;
}

bool startsOutLap(CarStatus previous) {
    return previous == CarStatus::WaitingForStart || previous == CarStatus::InPitStall ||
           previous == CarStatus::Undefined;
}

}  // namespace

void RecorderCar::startStint() {
    current.stintId = QUuid::createUuid();
    current.stintInSession += 1;
    current.lapInStint = 0;
}

void RecorderCar::startLap() {
    sample.clear();
    LapRecorder followingLap(nextLap.expectedSamples());
    lap = nextLap;
    nextLap = followingLap;
    current.lapInStint += 1;
    lapReady = false;
    lap.header().setLapInSession(current.lap);
    current.lapId = QUuid::createUuid();
    lap.header().setLapInStint(current.lapInStint);
}

void RecorderCar::closeLap() {
    lapReady = true;
    nextLap.expect(lap.expectedOfNext());
}

void RecorderCar::leaveReadyLap() {
    if (lapReady) {
        lap = LapRecorder(lap.expectedSamples());
    }
}

void RecorderCar::prepareTick() {
    previous = current;
    if (lapReady) {
        startLap();
    }
}

void RecorderCar::updateCarStatus(bool inPitStall, bool onPitRoad, bool onTrack) {
    if (inPitStall) {
        current.status = CarStatus::InPitStall;
    } else if (onPitRoad) {
        current.status = CarStatus::InPitlane;
    } else if (onTrack && updateOnTrackStatus() == OnTrackStatus::Settled) {
        updateLapCompleted();
    }
}

double RecorderCar::lapDistance() const {
    return static_cast<double>(current.lapDistPct);
}

bool RecorderCar::isBeforeRaceStart() const {
    return current.sessionType == static_cast<qint32>(Session::Race) && current.sessionState >= 1 &&
           current.sessionState < kSessionStateRacing;
}

bool RecorderCar::isRacingOnOutLap() const {
    return current.sessionType == static_cast<qint32>(Session::Race) &&
           current.sessionState == kSessionStateRacing && previous.status == CarStatus::OutLap;
}

RecorderCar::OnTrackStatus RecorderCar::updateOnTrackStatus() {
    if (isBeforeRaceStart()) {
        if (previous.status == CarStatus::OutLap) {
            current.status = CarStatus::OutLap;
            return OnTrackStatus::Settled;
        }
        return waitForStartOrBeginOutLap(kGridLapDistance);
    }
    if (isRacingOnOutLap()) {
        current.status =
            lapDistance() > kGridLapDistance ? CarStatus::OutLap : CarStatus::FlyingLap;
        return OnTrackStatus::Settled;
    }
    if (previous.status == CarStatus::InPitlane) {
        return waitForStartOrBeginOutLap(kPitExitBeforeLineLapDistance);
    }
    if (startsOutLap(previous.status)) {
        return beginOutLap();
    }
    return OnTrackStatus::Settled;
}

RecorderCar::OnTrackStatus RecorderCar::waitForStartOrBeginOutLap(double lastDistanceOfOutLap) {
    return lapDistance() > lastDistanceOfOutLap ? waitForStart() : beginOutLap();
}

RecorderCar::OnTrackStatus RecorderCar::beginOutLap() {
    current.status = CarStatus::OutLap;
    startLap();
    startStint();
    return OnTrackStatus::Settled;
}

RecorderCar::OnTrackStatus RecorderCar::waitForStart() {
    current.status = CarStatus::WaitingForStart;
    current.lapCompleted = false;
    return OnTrackStatus::Waiting;
}

void RecorderCar::updateLapCompleted() {
    current.lapCompleted = isLapCompleted();
    if (current.lapCompleted && current.status == CarStatus::OutLap) {
        current.status = CarStatus::FlyingLap;
    }
}

bool RecorderCar::isLapCompleted() const {
    if (previous.lap < 0 || current.status == CarStatus::WaitingForStart ||
        previous.status == CarStatus::WaitingForStart || previous.lapAborted) {
        return false;
    }
    return detailedTelemetry ? isOwnLapCompleted() : current.lap != previous.lap;
}

bool RecorderCar::isOwnLapCompleted() const {
    if (current.status == CarStatus::FlyingLap && previous.status == CarStatus::OutLap) {
        return true;
    }
    const float time = current.lapCurrentLapTime;
    const float timeBefore = previous.lapCurrentLapTime;
    if (isZeroLapTime(time)) {
        return current.lap >= 0 && previous.lap < current.lap;
    }
    const bool hasBegunAnew = timeBefore - time > kLapTimeFallSeconds &&
                              TLM::SDK::isValidValue(static_cast<double>(timeBefore));
    // A recording may begin within a lap, with a running time that is not positive yet.
    return diskLoading ? hasBegunAnew : hasBegunAnew && time > 0.0F && timeBefore > 0.0F;
}

bool RecorderCar::isLapAborted() const {
    if (previous.lap < 0 || current.status == CarStatus::WaitingForStart) {
        return false;
    }
    if (diskLoading) {
        return current.lap == 0 && previous.lap != 0;
    }
    return !isOffTrack(previous.status) && isOffTrack(current.status);
}

}  // namespace reader
