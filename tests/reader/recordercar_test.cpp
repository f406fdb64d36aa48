#include "reader/recordercar.h"

#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using TLM::SDK::CarStatus;

namespace {

constexpr int kRace = 5;
constexpr int kPractice = 1;
constexpr int kFormation = 3;
constexpr int kRacing = 4;
constexpr float kMissing = 1e25F;

/** All statuses, including those that the recorder never sets. */
const std::vector<CarStatus> kAllStatuses = {CarStatus::Undefined,  CarStatus::NotConnected,
                                             CarStatus::NotInWorld, CarStatus::WaitingForStart,
                                             CarStatus::InPitStall, CarStatus::InPitlane,
                                             CarStatus::OutLap,     CarStatus::FlyingLap,
                                             CarStatus::OnTrack,    CarStatus::OffTrack};

/** Another car that was on track in the tick before, on lap 4, at 30 % of the lap. */
RecorderCar otherCarAfter(CarStatus previous) {
    RecorderCar car;
    car.previous.status = previous;
    car.current.status = previous;
    car.previous.lap = 4;
    car.current.lap = 4;
    car.current.lapDistPct = 0.3F;
    car.current.sessionType = kPractice;
    return car;
}

/** The same for the own car, 40 s into the lap. */
RecorderCar ownCarAfter(CarStatus previous) {
    RecorderCar car = otherCarAfter(previous);
    car.detailedTelemetry = true;
    car.previous.lapCurrentLapTime = 40.0F;
    car.current.lapCurrentLapTime = 40.1F;
    return car;
}

/** Another car in a race; 30 % of the lap is on the far side of the grid. */
RecorderCar racingCarAfter(CarStatus previous, int sessionState) {
    RecorderCar car = otherCarAfter(previous);
    car.current.sessionType = kRace;
    car.current.sessionState = sessionState;
    return car;
}

void driveOnTrack(RecorderCar& car) {
    car.updateCarStatus(false, false, true);
}

bool isOneOf(CarStatus status, const std::vector<CarStatus>& statuses) {
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

/** Whether a new stint and lap have begun. */
bool hasBegunOutLap(const RecorderCar& car) {
    return car.current.stintInSession == 1 && !car.current.stintId.isNull() &&
           !car.current.lapId.isNull() && car.current.lapInStint == 0;
}

/** The own car on a flying lap whose running lap time goes from `before` to `now`. */
RecorderCar ownCarWithLapTimes(float before, float now) {
    RecorderCar car = ownCarAfter(CarStatus::FlyingLap);
    car.previous.lapCurrentLapTime = before;
    car.current.lapCurrentLapTime = now;
    return car;
}

}  // namespace

TEST(RecorderSample, StartsWithEverythingUnknown) {
    const RecorderSample sample;
    EXPECT_TRUE(sample.lapId.isNull());
    EXPECT_TRUE(sample.stintId.isNull());
    EXPECT_TRUE(sample.spareText.isEmpty());
    EXPECT_EQ(sample.lap, -1);
    EXPECT_EQ(sample.lapInStint, -1);
    EXPECT_EQ(sample.stintInSession, 0);
    EXPECT_EQ(sample.sessionNum, -1);
    EXPECT_EQ(sample.lapDistPct, -1.0F);
    EXPECT_EQ(sample.lapCurrentLapTime, -1.0F);
    EXPECT_EQ(sample.lastLapTime, -1.0F);
    EXPECT_EQ(sample.spareInt1, -1);
    EXPECT_EQ(sample.spareInt2, -1);
    EXPECT_EQ(sample.sessionState, 0);
    EXPECT_EQ(sample.status, CarStatus::Undefined);
    EXPECT_EQ(sample.sessionType, -1);
    EXPECT_FALSE(sample.lapCompleted);
    EXPECT_FALSE(sample.lapAborted);
    EXPECT_FALSE(sample.spareFlag);
    EXPECT_EQ(sample.sessionTick, 0U);
}

TEST(RecorderCar, StartsWithTwoEmptyLapsAndNoDriver) {
    const RecorderCar car;
    ASSERT_FALSE(car.lap.isNull());
    ASSERT_FALSE(car.nextLap.isNull());
    EXPECT_NE(car.lap, car.nextLap);
    EXPECT_TRUE(car.lap->isEmpty());
    EXPECT_TRUE(car.nextLap->isEmpty());
    EXPECT_TRUE(car.sample.isEmpty());
    EXPECT_TRUE(car.driverName.isEmpty());
    EXPECT_TRUE(car.teamName.isEmpty());
    EXPECT_TRUE(car.carName.isEmpty());
    EXPECT_TRUE(car.className.isEmpty());
    EXPECT_FALSE(car.detailedTelemetry);
    EXPECT_FALSE(car.diskLoading);
    EXPECT_FALSE(car.lapReady);
}

TEST(RecorderCar, CopiesShareTheirLaps) {
    RecorderCar car;
    car.driverName = "Driver";
    const RecorderCar copy = car;
    EXPECT_EQ(copy.lap, car.lap);
    EXPECT_EQ(copy.nextLap, car.nextLap);
    EXPECT_EQ(copy.driverName, "Driver");
}

TEST(RecorderCarStartStint, CountsTheStintAndRestartsItsLaps) {
    RecorderCar car;
    car.current.lapInStint = 9;
    car.startStint();
    const QUuid first = car.current.stintId;
    EXPECT_FALSE(first.isNull());
    EXPECT_EQ(car.current.stintInSession, 1);
    EXPECT_EQ(car.current.lapInStint, 0);
    car.startStint();
    EXPECT_NE(car.current.stintId, first);
    EXPECT_EQ(car.current.stintInSession, 2);
    EXPECT_TRUE(car.previous.stintId.isNull()) << "only the current tick changes";
}

TEST(RecorderCarStartLap, PromotesTheNextLap) {
    RecorderCar car;
    const auto next = car.nextLap;
    car.startLap();
    EXPECT_EQ(car.lap, next);
    ASSERT_FALSE(car.nextLap.isNull());
    EXPECT_NE(car.nextLap, next);
    EXPECT_TRUE(car.nextLap->isEmpty());
}

TEST(RecorderCarStartLap, NumbersAndIdentifiesTheLap) {
    RecorderCar car;
    car.current.lap = 12;
    car.current.lapInStint = 3;
    car.startLap();
    EXPECT_EQ(car.current.lapInStint, 4);
    EXPECT_EQ(car.lap->lapInSession(), 12);
    EXPECT_EQ(car.lap->lapInStint(), 4);
    const QUuid first = car.current.lapId;
    EXPECT_FALSE(first.isNull());
    car.startLap();
    EXPECT_NE(car.current.lapId, first);
    EXPECT_EQ(car.current.stintInSession, 0) << "a lap does not start a stint";
}

TEST(RecorderCarStartLap, DropsTheValuesOfTheTickButNotTheCarRecord) {
    RecorderCar car;
    car.sample.setCarId("7");
    car.sample.setValue("speed", 41.5, "m/s");
    car.lapReady = true;
    car.startLap();
    EXPECT_TRUE(car.sample.isEmpty());
    EXPECT_EQ(car.sample.carId(), "7");
    EXPECT_FALSE(car.lapReady);
}

TEST(RecorderCarPrepareTick, RollsTheTickOver) {
    RecorderCar car;
    car.current.lap = 8;
    car.current.status = CarStatus::FlyingLap;
    car.current.sessionTick = 77;
    car.current.lapCompleted = true;
    const auto lap = car.lap;
    car.prepareTick();
    EXPECT_EQ(car.previous.lap, 8);
    EXPECT_EQ(car.previous.status, CarStatus::FlyingLap);
    EXPECT_EQ(car.previous.sessionTick, 77U);
    EXPECT_TRUE(car.previous.lapCompleted);
    EXPECT_EQ(car.current.lap, 8);
    EXPECT_EQ(car.lap, lap) << "a lap that is not closed goes on";
}

TEST(RecorderCarPrepareTick, StartsTheLapAfterAClosedOne) {
    RecorderCar car;
    car.lapReady = true;
    car.current.lapId = QUuid::createUuid();
    const QUuid closed = car.current.lapId;
    const auto next = car.nextLap;
    car.prepareTick();
    EXPECT_EQ(car.lap, next);
    EXPECT_FALSE(car.lapReady);
    EXPECT_EQ(car.previous.lapId, closed) << "current is copied to previous first";
    EXPECT_NE(car.current.lapId, closed);
}

TEST(RecorderCarStatus, IsInPitStallBeforeAnythingElse) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.updateCarStatus(true, true, true);
    EXPECT_EQ(car.current.status, CarStatus::InPitStall);
}

TEST(RecorderCarStatus, IsInPitlaneBeforeOnTrack) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.updateCarStatus(false, true, true);
    EXPECT_EQ(car.current.status, CarStatus::InPitlane);
}

TEST(RecorderCarStatus, StaysTheSameWhenTheCarIsNowhere) {
    for (const CarStatus previous : kAllStatuses) {
        RecorderCar car = otherCarAfter(previous);
        car.current.lap = 5;
        car.updateCarStatus(false, false, false);
        EXPECT_EQ(car.current.status, previous);
        EXPECT_FALSE(car.current.lapCompleted);
    }
}

TEST(RecorderCarStatus, KeepsACompletedLapCompletedInThePits) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.current.lapCompleted = true;
    car.updateCarStatus(true, false, false);
    EXPECT_TRUE(car.current.lapCompleted);
    car.updateCarStatus(false, true, false);
    EXPECT_TRUE(car.current.lapCompleted);
    car.updateCarStatus(false, false, false);
    EXPECT_TRUE(car.current.lapCompleted);
    driveOnTrack(car);
    EXPECT_FALSE(car.current.lapCompleted);
}

TEST(RecorderCarStatus, StartsAnOutLapAfterThePitLane) {
    RecorderCar car = otherCarAfter(CarStatus::InPitlane);
    const auto next = car.nextLap;
    car.sample.setValue("lap", 4, QString());
    driveOnTrack(car);
    EXPECT_EQ(car.current.status, CarStatus::OutLap);
    EXPECT_TRUE(hasBegunOutLap(car));
    EXPECT_EQ(car.lap, next);
    EXPECT_TRUE(car.sample.isEmpty());
    EXPECT_FALSE(car.current.lapCompleted);
}

TEST(RecorderCarStatus, StartsTheLapBeforeTheStint) {
    RecorderCar car = otherCarAfter(CarStatus::InPitlane);
    car.current.lapInStint = 6;
    driveOnTrack(car);
    EXPECT_EQ(car.lap->lapInStint(), 7) << "the lap is numbered in the stint that ends";
    EXPECT_EQ(car.current.lapInStint, 0);
}

TEST(RecorderCarStatus, WaitsForTheLineWhenThePitsEndShortlyBeforeIt) {
    RecorderCar car = otherCarAfter(CarStatus::InPitlane);
    car.current.lapDistPct = 0.85F;
    car.current.lapCompleted = true;
    driveOnTrack(car);
    EXPECT_EQ(car.current.status, CarStatus::WaitingForStart);
    EXPECT_FALSE(car.current.lapCompleted);
    EXPECT_EQ(car.current.stintInSession, 0);

    car.prepareTick();
    driveOnTrack(car);
    EXPECT_EQ(car.current.status, CarStatus::OutLap);
    EXPECT_TRUE(hasBegunOutLap(car));
}

TEST(RecorderCarStatus, ComparesThePitExitLimitInDoublePrecision) {
    // The single-precision 0.8 is above the double one.
    RecorderCar beyond = otherCarAfter(CarStatus::InPitlane);
    beyond.current.lapDistPct = 0.8F;
    driveOnTrack(beyond);
    EXPECT_EQ(beyond.current.status, CarStatus::WaitingForStart);

    RecorderCar before = otherCarAfter(CarStatus::InPitlane);
    before.current.lapDistPct = std::nextafter(0.8F, 0.0F);
    driveOnTrack(before);
    EXPECT_EQ(before.current.status, CarStatus::OutLap);
}

TEST(RecorderCarStatus, StartsAnOutLapAnywhereAfterGridStallOrUndefined) {
    for (const CarStatus previous :
         {CarStatus::WaitingForStart, CarStatus::InPitStall, CarStatus::Undefined}) {
        RecorderCar car = otherCarAfter(previous);
        car.current.lapDistPct = 0.95F;
        driveOnTrack(car);
        EXPECT_EQ(car.current.status, CarStatus::OutLap);
        EXPECT_TRUE(hasBegunOutLap(car));
    }
}

TEST(RecorderCarStatus, StaysTheSameOnTrack) {
    for (const CarStatus previous :
         {CarStatus::NotConnected, CarStatus::NotInWorld, CarStatus::OutLap, CarStatus::FlyingLap,
          CarStatus::OnTrack, CarStatus::OffTrack}) {
        RecorderCar car = otherCarAfter(previous);
        const auto lap = car.lap;
        driveOnTrack(car);
        EXPECT_EQ(car.current.status, previous);
        EXPECT_EQ(car.lap, lap);
        EXPECT_EQ(car.current.stintInSession, 0);
    }
}

TEST(RecorderCarStatus, OfACarBackInTheWorldOnTrackWaitsForThePits) {
    RecorderCar car = otherCarAfter(CarStatus::NotInWorld);
    for (int tick = 0; tick < 3; ++tick) {
        driveOnTrack(car);
        EXPECT_EQ(car.current.status, CarStatus::NotInWorld);
        car.prepareTick();
    }
    car.updateCarStatus(false, true, false);
    car.prepareTick();
    driveOnTrack(car);
    EXPECT_EQ(car.current.status, CarStatus::OutLap);
}

TEST(RecorderCarRaceStart, WaitsOnTheGridBeforeTheStart) {
    for (const int state : {1, 2, 3}) {
        for (const CarStatus previous : kAllStatuses) {
            if (previous == CarStatus::OutLap) {
                continue;
            }
            RecorderCar car = racingCarAfter(previous, state);
            car.current.lapDistPct = 0.9F;
            car.current.lapCompleted = true;
            driveOnTrack(car);
            EXPECT_EQ(car.current.status, CarStatus::WaitingForStart) << state;
            EXPECT_FALSE(car.current.lapCompleted);
        }
    }
}

TEST(RecorderCarRaceStart, StartsTheFormationLapBeyondTheGrid) {
    for (const int state : {1, 2, 3}) {
        for (const CarStatus previous : kAllStatuses) {
            if (previous == CarStatus::OutLap) {
                continue;
            }
            RecorderCar car = racingCarAfter(previous, state);
            driveOnTrack(car);
            EXPECT_EQ(car.current.status, CarStatus::OutLap) << state;
            EXPECT_TRUE(hasBegunOutLap(car));
        }
    }
}

TEST(RecorderCarRaceStart, ComparesTheGridLimitInDoublePrecision) {
    // The single-precision 0.65 is below the double one.
    RecorderCar before = racingCarAfter(CarStatus::InPitStall, kFormation);
    before.current.lapDistPct = 0.65F;
    driveOnTrack(before);
    EXPECT_EQ(before.current.status, CarStatus::OutLap);

    RecorderCar beyond = racingCarAfter(CarStatus::InPitStall, kFormation);
    beyond.current.lapDistPct = std::nextafter(0.65F, 1.0F);
    driveOnTrack(beyond);
    EXPECT_EQ(beyond.current.status, CarStatus::WaitingForStart);
}

TEST(RecorderCarRaceStart, KeepsTheFormationLapGoing) {
    for (const int state : {1, 2, 3}) {
        for (const float distance : {0.3F, 0.9F}) {
            RecorderCar car = racingCarAfter(CarStatus::OutLap, state);
            car.current.status = CarStatus::WaitingForStart;
            car.current.lapDistPct = distance;
            driveOnTrack(car);
            EXPECT_EQ(car.current.status, CarStatus::OutLap);
            EXPECT_FALSE(car.current.lapCompleted);
            EXPECT_EQ(car.current.stintInSession, 0);
        }
    }
}

TEST(RecorderCarRaceStart, CompletesAFormationLapThatCrossesTheLine) {
    RecorderCar car = racingCarAfter(CarStatus::OutLap, kFormation);
    car.current.lap = 5;
    driveOnTrack(car);
    EXPECT_TRUE(car.current.lapCompleted);
    EXPECT_EQ(car.current.status, CarStatus::FlyingLap);
}

TEST(RecorderCarRaceStart, TurnsTheFormationIntoAFlyingLapAtTheStart) {
    RecorderCar other = racingCarAfter(CarStatus::OutLap, kRacing);
    driveOnTrack(other);
    EXPECT_EQ(other.current.status, CarStatus::FlyingLap);
    EXPECT_FALSE(other.current.lapCompleted) << "another car's lap ends only by its number";

    RecorderCar own = ownCarAfter(CarStatus::OutLap);
    own.current.sessionType = kRace;
    own.current.sessionState = kRacing;
    driveOnTrack(own);
    EXPECT_EQ(own.current.status, CarStatus::FlyingLap);
    EXPECT_TRUE(own.current.lapCompleted) << "the formation lap ends at the start";
}

TEST(RecorderCarRaceStart, KeepsTheOutLapUntilTheLineAtTheStart) {
    RecorderCar car = ownCarAfter(CarStatus::OutLap);
    car.current.sessionType = kRace;
    car.current.sessionState = kRacing;
    car.current.status = CarStatus::FlyingLap;
    car.current.lapDistPct = std::nextafter(0.65F, 1.0F);
    driveOnTrack(car);
    EXPECT_EQ(car.current.status, CarStatus::OutLap);
    EXPECT_FALSE(car.current.lapCompleted);

    RecorderCar below = ownCarAfter(CarStatus::OutLap);
    below.current.sessionType = kRace;
    below.current.sessionState = kRacing;
    below.current.lapDistPct = 0.65F;
    driveOnTrack(below);
    EXPECT_EQ(below.current.status, CarStatus::FlyingLap);
}

TEST(RecorderCarRaceStart, StillRequiresAKnownLapThatWasNotAborted) {
    for (const int state : {kFormation, kRacing}) {
        RecorderCar unknown = ownCarAfter(CarStatus::OutLap);
        unknown.current.sessionType = kRace;
        unknown.current.sessionState = state;
        unknown.previous.lap = -1;
        unknown.current.lapCurrentLapTime = 0.0F;
        driveOnTrack(unknown);
        EXPECT_FALSE(unknown.current.lapCompleted);

        RecorderCar aborted = racingCarAfter(CarStatus::OutLap, state);
        aborted.current.lap = 5;
        aborted.previous.lapAborted = true;
        driveOnTrack(aborted);
        EXPECT_FALSE(aborted.current.lapCompleted);
    }
}

TEST(RecorderCarRaceStart, IsOverForCarsThatRace) {
    for (const CarStatus previous : {CarStatus::FlyingLap, CarStatus::OnTrack}) {
        RecorderCar car = racingCarAfter(previous, kRacing);
        driveOnTrack(car);
        EXPECT_EQ(car.current.status, previous);
    }
    RecorderCar fromPits = racingCarAfter(CarStatus::InPitlane, kRacing);
    driveOnTrack(fromPits);
    EXPECT_EQ(fromPits.current.status, CarStatus::OutLap);
    RecorderCar late = racingCarAfter(CarStatus::InPitlane, kRacing);
    late.current.lapDistPct = 0.85F;
    driveOnTrack(late);
    EXPECT_EQ(late.current.status, CarStatus::WaitingForStart);
}

TEST(RecorderCarRaceStart, HasNoRulesInOtherStatesOfTheRace) {
    for (const int state : {-1, 0, 5, 6}) {
        RecorderCar outLap = racingCarAfter(CarStatus::OutLap, state);
        driveOnTrack(outLap);
        EXPECT_EQ(outLap.current.status, CarStatus::OutLap) << state;
        RecorderCar flying = racingCarAfter(CarStatus::FlyingLap, state);
        driveOnTrack(flying);
        EXPECT_EQ(flying.current.status, CarStatus::FlyingLap) << state;
    }
}

TEST(RecorderCarRaceStart, HasNoRulesInOtherSessions) {
    for (const int type : {-1, 0, 1, 2, 3, 4, 6}) {
        RecorderCar flying = racingCarAfter(CarStatus::FlyingLap, kFormation);
        flying.current.sessionType = type;
        driveOnTrack(flying);
        EXPECT_EQ(flying.current.status, CarStatus::FlyingLap) << type;

        RecorderCar outLap = racingCarAfter(CarStatus::OutLap, kRacing);
        outLap.current.sessionType = type;
        driveOnTrack(outLap);
        EXPECT_EQ(outLap.current.status, CarStatus::OutLap) << type;
    }
}

TEST(RecorderCarCompletion, OfAnotherCarDependsOnItsLapNumber) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    driveOnTrack(car);
    EXPECT_FALSE(car.current.lapCompleted);
    car.current.lap = 5;
    driveOnTrack(car);
    EXPECT_TRUE(car.current.lapCompleted);
    EXPECT_EQ(car.current.status, CarStatus::FlyingLap);
    car.current.lap = 2;
    driveOnTrack(car);
    EXPECT_TRUE(car.current.lapCompleted) << "a number that falls ends the lap too";
}

TEST(RecorderCarCompletion, OfAnotherCarIgnoresLapTimes) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.previous.lapCurrentLapTime = 80.0F;
    car.current.lapCurrentLapTime = 0.1F;
    driveOnTrack(car);
    EXPECT_FALSE(car.current.lapCompleted);
}

TEST(RecorderCarCompletion, MakesTheNextLapAFlyingOne) {
    RecorderCar car = otherCarAfter(CarStatus::OutLap);
    car.current.lap = 5;
    driveOnTrack(car);
    EXPECT_TRUE(car.current.lapCompleted);
    EXPECT_EQ(car.current.status, CarStatus::FlyingLap);
}

TEST(RecorderCarCompletion, CountsAlsoInTheTickThatStartsAnOutLap) {
    RecorderCar car = otherCarAfter(CarStatus::InPitStall);
    car.current.lap = 5;
    driveOnTrack(car);
    EXPECT_TRUE(car.current.lapCompleted);
    EXPECT_EQ(car.current.status, CarStatus::FlyingLap);
    EXPECT_TRUE(hasBegunOutLap(car));
}

TEST(RecorderCarCompletion, DoesNotChangeOtherStatuses) {
    for (const CarStatus previous :
         {CarStatus::NotInWorld, CarStatus::OnTrack, CarStatus::OffTrack}) {
        RecorderCar car = otherCarAfter(previous);
        car.current.lap = 5;
        driveOnTrack(car);
        EXPECT_TRUE(car.current.lapCompleted);
        EXPECT_EQ(car.current.status, previous);
    }
}

TEST(RecorderCarCompletion, NeedsALapNumberInTheTickBefore) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.previous.lap = -1;
    EXPECT_FALSE(car.isLapCompleted());
    car.previous.lap = 0;
    EXPECT_TRUE(car.isLapCompleted());
}

TEST(RecorderCarCompletion, NeverHappensWhenEitherTickWaits) {
    RecorderCar waiting = otherCarAfter(CarStatus::FlyingLap);
    waiting.current.lap = 5;
    ASSERT_TRUE(waiting.isLapCompleted());
    waiting.current.status = CarStatus::WaitingForStart;
    EXPECT_FALSE(waiting.isLapCompleted());

    RecorderCar waited = otherCarAfter(CarStatus::WaitingForStart);
    waited.current.lap = 5;
    driveOnTrack(waited);
    EXPECT_EQ(waited.current.status, CarStatus::OutLap);
    EXPECT_FALSE(waited.current.lapCompleted);
}

TEST(RecorderCarCompletion, NeverHappensAfterAnAbort) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.current.lap = 5;
    car.previous.lapAborted = true;
    EXPECT_FALSE(car.isLapCompleted());
    car.previous.lapAborted = false;
    car.current.lapAborted = true;
    EXPECT_TRUE(car.isLapCompleted()) << "the tick before decides";
}

TEST(RecorderCarCompletion, IsQueriedWithoutChangingTheCar) {
    RecorderCar car = otherCarAfter(CarStatus::OutLap);
    car.current.lap = 5;
    EXPECT_TRUE(car.isLapCompleted());
    EXPECT_FALSE(car.current.lapCompleted);
    EXPECT_EQ(car.current.status, CarStatus::OutLap);
}

TEST(RecorderCarCompletion, OfTheOwnCarHappensBetweenOutLapAndFlyingLap) {
    RecorderCar car = ownCarAfter(CarStatus::OutLap);
    EXPECT_FALSE(car.isLapCompleted());
    car.current.status = CarStatus::FlyingLap;
    EXPECT_TRUE(car.isLapCompleted());
    car.previous.status = CarStatus::FlyingLap;
    EXPECT_FALSE(car.isLapCompleted());
}

TEST(RecorderCarCompletion, OfTheOwnCarIgnoresTheLapNumberWhileALapTimeRuns) {
    RecorderCar car = ownCarAfter(CarStatus::FlyingLap);
    car.current.lap = 5;
    EXPECT_FALSE(car.isLapCompleted());
}

TEST(RecorderCarCompletion, OfTheOwnCarDependsOnTheLapNumberWhileNoLapTimeRuns) {
    for (const float still : {0.0F, -0.0F, 0.00001F, -0.00001F}) {
        RecorderCar car = ownCarWithLapTimes(0.0F, still);
        EXPECT_FALSE(car.isLapCompleted()) << still;
        car.current.lap = 5;
        EXPECT_TRUE(car.isLapCompleted()) << still;
        car.current.lap = 3;
        EXPECT_FALSE(car.isLapCompleted()) << "a number that falls does not end the own lap";
    }
    RecorderCar running = ownCarWithLapTimes(0.0F, std::nextafter(0.00001F, 1.0F));
    running.current.lap = 5;
    EXPECT_FALSE(running.isLapCompleted());
}

TEST(RecorderCarCompletion, OfTheOwnCarHappensWhenTheLapTimeFalls) {
    EXPECT_TRUE(ownCarWithLapTimes(89.0F, 0.4F).isLapCompleted());
    EXPECT_FALSE(ownCarWithLapTimes(89.0F, 88.0F).isLapCompleted());
    EXPECT_FALSE(ownCarWithLapTimes(10.0F, 5.0F).isLapCompleted()) << "5 s are not enough";
    EXPECT_TRUE(ownCarWithLapTimes(10.0F, std::nextafter(5.0F, 0.0F)).isLapCompleted());
    EXPECT_FALSE(ownCarWithLapTimes(0.4F, 89.0F).isLapCompleted());
}

TEST(RecorderCarCompletion, ComparesLapTimesInSinglePrecision) {
    // 5.00000009 s in double precision, exactly 5 s in single precision.
    const float before = 5.0F + 22.0F / 2097152.0F;
    const float now = 1.04e-5F;
    ASSERT_GT(static_cast<double>(before) - static_cast<double>(now), 5.0);
    EXPECT_FALSE(ownCarWithLapTimes(before, now).isLapCompleted());
    RecorderCar fromDisk = ownCarWithLapTimes(before, now);
    fromDisk.diskLoading = true;
    EXPECT_FALSE(fromDisk.isLapCompleted());
}

TEST(RecorderCarCompletion, OfTheOwnCarNeedsTwoRunningLapTimesWhenLive) {
    EXPECT_FALSE(ownCarWithLapTimes(4.5F, -1.0F).isLapCompleted());
    EXPECT_FALSE(ownCarWithLapTimes(-1.0F, -10.0F).isLapCompleted());
}

TEST(RecorderCarCompletion, OfALoadedRecordingNeedsOnlyTheFall) {
    RecorderCar negative = ownCarWithLapTimes(4.5F, -1.0F);
    negative.diskLoading = true;
    EXPECT_TRUE(negative.isLapCompleted());
    RecorderCar bothNegative = ownCarWithLapTimes(-1.0F, -10.0F);
    bothNegative.diskLoading = true;
    EXPECT_TRUE(bothNegative.isLapCompleted());
    RecorderCar tooLittle = ownCarWithLapTimes(10.0F, 5.0F);
    tooLittle.diskLoading = true;
    EXPECT_FALSE(tooLittle.isLapCompleted());
    RecorderCar still = ownCarWithLapTimes(89.0F, 0.0F);
    still.diskLoading = true;
    EXPECT_FALSE(still.isLapCompleted()) << "without a running time the lap number decides";
    still.current.lap = 5;
    EXPECT_TRUE(still.isLapCompleted());
}

TEST(RecorderCarCompletion, NeverHappensWithAMissingLapTime) {
    for (const bool fromDisk : {false, true}) {
        RecorderCar car = ownCarWithLapTimes(kMissing, 0.4F);
        car.diskLoading = fromDisk;
        EXPECT_FALSE(car.isLapCompleted());
        car.previous.lapCurrentLapTime = std::numeric_limits<float>::infinity();
        EXPECT_FALSE(car.isLapCompleted());
        car.previous.lapCurrentLapTime = std::numeric_limits<float>::quiet_NaN();
        EXPECT_FALSE(car.isLapCompleted());
        car.previous.lapCurrentLapTime = 89.0F;
        car.current.lapCurrentLapTime = std::numeric_limits<float>::quiet_NaN();
        EXPECT_FALSE(car.isLapCompleted());
        car.current.lapCurrentLapTime = kMissing;
        EXPECT_FALSE(car.isLapCompleted());
    }
}

TEST(RecorderCarCompletion, NeedsALapNumberWhileNoLapTimeRuns) {
    RecorderCar car = ownCarWithLapTimes(0.0F, 0.0F);
    car.previous.lap = 0;
    car.current.lap = 0;
    EXPECT_FALSE(car.isLapCompleted());
    car.current.lap = -1;
    EXPECT_FALSE(car.isLapCompleted());
    car.current.lap = 1;
    EXPECT_TRUE(car.isLapCompleted());
}

TEST(RecorderCarAbort, HappensBetweenTheTrackAndThePitsOrOutOfTheWorld) {
    const std::vector<CarStatus> offTrack = {CarStatus::Undefined, CarStatus::NotInWorld,
                                             CarStatus::InPitStall, CarStatus::InPitlane};
    for (const CarStatus previous : kAllStatuses) {
        for (const CarStatus status : kAllStatuses) {
            RecorderCar car = otherCarAfter(previous);
            car.current.status = status;
            EXPECT_EQ(car.isLapAborted(), !isOneOf(previous, offTrack) && isOneOf(status, offTrack))
                << static_cast<int>(previous) << " to " << static_cast<int>(status);
        }
    }
}

TEST(RecorderCarAbort, NeedsALapNumberInTheTickBefore) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.current.status = CarStatus::InPitlane;
    EXPECT_TRUE(car.isLapAborted());
    car.previous.lap = 0;
    EXPECT_TRUE(car.isLapAborted());
    car.previous.lap = -1;
    EXPECT_FALSE(car.isLapAborted());
}

TEST(RecorderCarAbort, OfALoadedRecordingHappensWhenTheLapNumberFallsToZero) {
    RecorderCar car = otherCarAfter(CarStatus::FlyingLap);
    car.diskLoading = true;
    car.current.status = CarStatus::InPitStall;
    EXPECT_FALSE(car.isLapAborted()) << "the pits abort no lap of a recording";
    car.current.lap = 0;
    EXPECT_TRUE(car.isLapAborted());
    car.previous.lap = 0;
    EXPECT_FALSE(car.isLapAborted());
    car.previous.lap = -1;
    EXPECT_FALSE(car.isLapAborted());
    car.previous.lap = 4;
    car.current.status = CarStatus::WaitingForStart;
    EXPECT_FALSE(car.isLapAborted()) << "a car that waits has no lap to abort";
}
