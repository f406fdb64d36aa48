#include "tests/reader/readerfixture.h"

#include <QVariant>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

using namespace readertest;
using TLM::SDK::CarStatus;

namespace {

constexpr double kMissing = 9.999999562023526e+24;

class Processing : public ReaderTest {
protected:
    iRTelemetryReader& reader = drive.reader;

    const RecorderSample& own() { return drive.own().current; }
    const RecorderSample& other() { return drive.car(kLaterCar).current; }

    void becomeReplay() { drive.session.simMode = "replay"; }

    /** A tick without this variable, after the samples have been cleared. */
    void tickWithout(std::string_view name) {
        drive.block.variable(name).count = 0;
        drive.advanceClock();
        drive.beginTick();
        reader.sample(kOwnCar).clear();
        reader.sample(kLaterCar).clear();
        drive.takeSnapshot();
        drive.endTick();
    }

    QVariant maximumDistance(int car) { return reader.lap(car)->value("maxLapDistPct").value; }

    /** Two ticks on track, which begin the other car's out lap. */
    void runOtherCar(double distance) {
        drive.putOther(kLaterCar, distance).tick(2);
        ASSERT_EQ(drive.status(kLaterCar), CarStatus::OutLap);
    }
};

}  // namespace

TEST_F(Processing, SkipsASlotWithoutADriver) {
    drive.session.drivers = {{kOwnCar, "Own"}, {kLaterCar, ""}};
    drive.publishSession();
    drive.putOther(kLaterCar, 0.5);
    drive.putOther(20, 0.5).tick(3);
    for (const int slot : {kLaterCar, 20}) {
        EXPECT_EQ(drive.status(slot), CarStatus::Undefined);
        EXPECT_EQ(drive.car(slot).current.lapDistPct, -1.0F);
        EXPECT_EQ(drive.car(slot).current.sessionTick, 0U);
    }
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::InPitStall);
}

TEST_F(Processing, ReadsDistanceStateAndTick) {
    drive.block.addVariable("CarIdxSessionState", irsdk_int, 64);
    drive.publishSession();
    drive.block.set("SessionState", 4);
    drive.block.set("CarIdxSessionState", 2, kLaterCar);
    drive.putOwnOnPitRoad(0.25);
    drive.putOther(kLaterCar, 0.5).tick(3);
    EXPECT_EQ(own().lapDistPct, 0.25F);
    EXPECT_EQ(own().sessionState, 4);
    EXPECT_EQ(own().sessionTick, 3U);
    EXPECT_EQ(other().lapDistPct, 0.5F);
    EXPECT_EQ(other().sessionState, 2);
    EXPECT_EQ(other().sessionTick, 3U);
}

TEST_F(Processing, TreatsAMissingDistanceAsOutOfTheWorld) {
    drive.publishSession().leavePits();
    tickWithout("LapDistPct");
    EXPECT_EQ(own().lapDistPct, -1.0F);
    EXPECT_EQ(own().status, CarStatus::NotInWorld);
}

TEST_F(Processing, TreatsAMissingSessionStateAsZero) {
    drive.publishSession();
    drive.block.set("SessionState", 4);
    drive.leavePits();
    ASSERT_EQ(own().sessionState, 4);
    tickWithout("SessionState");
    EXPECT_EQ(own().sessionState, 0);
}

TEST_F(Processing, TreatsAMissingTickAsZero) {
    drive.publishSession().leavePits();
    ASSERT_GT(own().sessionTick, 0U);
    tickWithout("SessionTick");
    EXPECT_EQ(own().sessionTick, 0U);
}

TEST_F(Processing, UpdatesOnlyThreeValuesInARepeatedTick) {
    drive.publishSession().leavePits().driveOwnToLine();
    const RecorderSample before = own();
    const int entries = reader.lap(kOwnCar)->size();
    drive.block.set("Lap", 9);
    drive.block.set("LapDistPct", 0.25);
    drive.block.set("SessionState", 3);
    drive.block.set("LapLastLapTime", 77.0);
    drive.block.set("LapCurrentLapTime", 0.5);
    drive.block.set("OnPitRoad", 1);
    drive.repeatTick();
    EXPECT_EQ(own().lapDistPct, 0.25F);
    EXPECT_EQ(own().sessionState, 3);
    EXPECT_EQ(own().sessionTick, before.sessionTick);
    EXPECT_EQ(own().lap, before.lap);
    EXPECT_EQ(own().lastLapTime, before.lastLapTime);
    EXPECT_EQ(own().lapCurrentLapTime, before.lapCurrentLapTime);
    EXPECT_EQ(own().status, before.status);
    EXPECT_EQ(reader.lap(kOwnCar)->size(), entries);
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
}

TEST_F(Processing, ProcessesATickThatGoesBackwards) {
    drive.publishSession().leavePits();
    drive.block.set("SessionTick", 1);
    drive.putOwnOnPitRoad(0.3).repeatTick();
    EXPECT_EQ(own().sessionTick, 1U);
    EXPECT_EQ(own().status, CarStatus::InPitlane);
}

TEST_F(Processing, TreatsACarFarBehindTheLineAsOutOfTheWorld) {
    drive.publishSession();
    const std::vector<std::pair<double, bool>> distances = {
        {-1.0, true}, {-0.5, true}, {-0.4999, false}, {0.0, false}, {1.0, false}};
    for (const auto& [distance, outOfWorld] : distances) {
        drive.putOther(kLaterCar, distance);
        drive.putOtherOnPitRoad(kLaterCar, distance).tick();
        EXPECT_EQ(other().status == CarStatus::NotInWorld, outOfWorld) << distance;
    }
}

TEST_F(Processing, DoesNotUpdateACarOutOfTheWorld) {
    drive.publishSession().leavePits().driveOwnToLine();
    const RecorderSample before = own();
    const LapPointer lap = reader.lap(kOwnCar);
    const int entries = lap->size();
    drive.putOwnOnTrack(-1.0, 0.5);
    drive.block.set("Lap", 9);
    drive.tick(2);
    EXPECT_EQ(own().status, CarStatus::NotInWorld);
    EXPECT_EQ(own().lap, before.lap);
    EXPECT_EQ(own().lapCurrentLapTime, before.lapCurrentLapTime);
    EXPECT_EQ(reader.lap(kOwnCar), lap);
    EXPECT_EQ(lap->size(), entries);
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
}

TEST_F(Processing, ReadsTheOwnLapNumber) {
    drive.publishSession();
    drive.block.set("Lap", 12);
    drive.tick();
    EXPECT_EQ(own().lap, 12) << "in the stall too";
    drive.putOwnOnPitRoad(0.1);
    tickWithout("Lap");
    EXPECT_EQ(own().lap, -1);
}

TEST_F(Processing, TreatsTheLiveOwnCarAsInItsStallUnlessItIsOnTrack) {
    drive.publishSession();
    drive.putOwnOnTrack(0.5, 10.0);
    drive.block.set("PlayerCarInPitStall", 1);
    drive.tick();
    EXPECT_EQ(own().status, CarStatus::OutLap) << "the stall's flag only counts in a replay";
    drive.block.set("PlayerCarInPitStall", 0);
    drive.block.set("IsOnTrack", 0);
    drive.tick();
    EXPECT_EQ(own().status, CarStatus::InPitStall);
    drive.putOwnOnPitRoad(0.5).tick();
    ASSERT_EQ(own().status, CarStatus::InPitlane);
    tickWithout("IsOnTrack");
    EXPECT_EQ(own().status, CarStatus::InPitStall);
}

TEST_F(Processing, TreatsTheReplayedOwnCarAsInItsStallByTheStallsFlag) {
    becomeReplay();
    drive.publishSession();
    drive.putOwnOnTrack(0.5, 10.0);
    drive.block.set("IsOnTrack", 0);
    drive.tick();
    EXPECT_EQ(own().status, CarStatus::OutLap);
    drive.block.set("PlayerCarInPitStall", 1);
    drive.tick();
    EXPECT_EQ(own().status, CarStatus::InPitStall);
    drive.putOwnOnPitRoad(0.5).tick();
    ASSERT_EQ(own().status, CarStatus::InPitlane);
    tickWithout("PlayerCarInPitStall");
    EXPECT_EQ(own().status, CarStatus::InPitStall);
}

TEST_F(Processing, UsesTheStallsFlagUntilItIsKnownWhetherItIsAReplay) {
    drive.session.simMode.clear();
    drive.publishSession();
    drive.putOwnOnTrack(0.5, 10.0);
    drive.block.set("IsOnTrack", 0);
    drive.tick();
    EXPECT_EQ(own().status, CarStatus::OutLap);
    drive.block.set("PlayerCarInPitStall", 1);
    drive.tick();
    EXPECT_EQ(own().status, CarStatus::InPitStall);
}

TEST_F(Processing, DoesNotUpdateTheOwnLapTimesInTheStall) {
    drive.publishSession();
    drive.block.set("LapLastLapTime", 80.0);
    drive.putOwnOnTrack(0.5, 30.0).tick();
    drive.putOwnInStall();
    drive.block.set("LapLastLapTime", 81.0);
    drive.block.set("LapCurrentLapTime", 31.0);
    drive.tick();
    EXPECT_EQ(own().lastLapTime, 80.0F);
    EXPECT_EQ(own().lapCurrentLapTime, 30.0F);
    drive.putOwnOnPitRoad(0.5);
    drive.block.set("LapCurrentLapTime", 32.0);
    drive.tick();
    EXPECT_EQ(own().lastLapTime, 81.0F);
    EXPECT_EQ(own().lapCurrentLapTime, 32.0F);
}

TEST_F(Processing, TreatsTheOwnCarAsOnTrackUnlessItIsOnPitRoad) {
    drive.publishSession();
    drive.putOwnOnPitRoad(0.5).tick();
    EXPECT_EQ(own().status, CarStatus::InPitlane);
    tickWithout("OnPitRoad");
    EXPECT_EQ(own().status, CarStatus::OutLap);
}

TEST_F(Processing, NeverTreatsTheOwnCarAsInItsStallBecauseItStandsStill) {
    drive.publishSession();
    drive.putOwnOnPitRoad(0.5).tick(3);
    EXPECT_EQ(own().status, CarStatus::InPitlane);
}

TEST_F(Processing, ReadsTheOwnLapTimes) {
    drive.publishSession();
    drive.putOwnOnTrack(0.5, 30.0);
    drive.block.set("LapLastLapTime", 80.5);
    drive.block.set("CarIdxLastLapTime", 99.0, kOwnCar);
    drive.tick();
    EXPECT_EQ(own().lastLapTime, 80.5F);
    EXPECT_EQ(own().lapCurrentLapTime, 30.0F);
    tickWithout("LapLastLapTime");
    EXPECT_EQ(own().lastLapTime, -1.0F);
    tickWithout("LapCurrentLapTime");
    EXPECT_EQ(own().lapCurrentLapTime, 1e25F);
}

TEST_F(Processing, ReadsTheReplayedOwnLapTimeFromThePerCarArray) {
    becomeReplay();
    drive.publishSession();
    drive.putOwnOnTrack(0.5, 30.0);
    drive.block.set("LapLastLapTime", 80.5);
    drive.block.set("CarIdxLastLapTime", 99.0, kOwnCar);
    drive.tick();
    EXPECT_EQ(own().lastLapTime, 99.0F);
    tickWithout("CarIdxLastLapTime");
    EXPECT_EQ(own().lastLapTime, -1.0F);
}

TEST_F(Processing, ReadsTheOwnVariableUntilItIsKnownWhetherItIsAReplay) {
    drive.session.simMode.clear();
    drive.publishSession();
    drive.putOwnOnTrack(0.5, 30.0);
    drive.block.set("LapLastLapTime", 80.5);
    drive.block.set("CarIdxLastLapTime", 99.0, kOwnCar);
    drive.tick();
    EXPECT_EQ(own().lastLapTime, 80.5F);
}

TEST_F(Processing, MarksTheOwnCarsSampleAsFullTelemetry) {
    drive.publishSession();
    drive.putOther(kLaterCar, 0.5).tick();
    const TLM::SDK::Value mark = reader.sample(kOwnCar).value("fulltelemetry");
    EXPECT_EQ(mark.value, QVariant(1));
    EXPECT_EQ(mark.value.typeId(), QMetaType::Int);
    EXPECT_TRUE(mark.unit().isEmpty());
    EXPECT_FALSE(reader.sample(kLaterCar).containsValue("fulltelemetry"));
    drive.putOwnOnPitRoad(0.1);
    tickWithout("FuelLevel");
    EXPECT_TRUE(reader.sample(kOwnCar).containsValue("fulltelemetry")) << "on pit road too";
}

TEST_F(Processing, ReplacesAVariableNamedFullTelemetry) {
    drive.block.addVariable("FullTelemetry", irsdk_float, 1, "%");
    drive.publishSession();
    for (const double reading : {1.0, 0.0}) {
        drive.block.set("FullTelemetry", reading);
        drive.tick();
        const TLM::SDK::Value mark = drive.own().sample.value("fulltelemetry");
        EXPECT_EQ(mark.value.typeId(), QMetaType::Int);
        EXPECT_EQ(mark.value.toInt(), 1);
        EXPECT_TRUE(mark.unit().isEmpty());
    }
    reader.sample(kOwnCar).setValue("fulltelemetry", QVariant(2), QString());
    drive.block.variable("FullTelemetry").count = 0;
    drive.tick();
    EXPECT_EQ(drive.own().sample.value("fulltelemetry").value, QVariant(1));
}

TEST_F(Processing, SkipsOtherCarsWithoutAnOwnCar) {
    for (const QByteArray& none : {QByteArray("none"), QByteArray("64"), QByteArray("-1")}) {
        Drive alone;
        alone.block.addVariable("CarIdxSessionTick", irsdk_int, 64);
        alone.session.ownCar = none;
        alone.publishSession();
        alone.putOther(kLaterCar, 0.5);
        for (int tick = 1; tick <= 3; ++tick) {
            alone.block.setAll("CarIdxSessionTick", tick);
            alone.tick();
        }
        EXPECT_EQ(alone.car(kLaterCar).current.lapDistPct, 0.5F);
        EXPECT_EQ(alone.car(kLaterCar).current.sessionTick, 3U);
        EXPECT_EQ(alone.status(kLaterCar), CarStatus::Undefined);
        EXPECT_EQ(alone.car(kLaterCar).current.sessionType, -1);
        alone.putOtherOutOfWorld(kLaterCar);
        alone.block.setAll("CarIdxSessionTick", 4);
        alone.tick();
        EXPECT_EQ(alone.status(kLaterCar), CarStatus::NotInWorld)
            << "being in the world is checked first";
    }
}

TEST_F(Processing, SkipsOtherCarsWhileTheSessionNumberIsNegative) {
    drive.publishSession();
    drive.block.set("SessionNum", -1);
    drive.putOther(kLaterCar, 0.5);
    drive.putOwnOnPitRoad(0.5).tick(2);
    EXPECT_EQ(other().status, CarStatus::Undefined);
    EXPECT_EQ(own().status, CarStatus::InPitlane);
    drive.block.set("SessionNum", 0);
    drive.tick();
    EXPECT_EQ(other().status, CarStatus::OutLap);
}

TEST_F(Processing, TreatsAMissingSessionNumberAsTheFirstSession) {
    drive.publishResults({{"7", "4", "80.0"}});
    drive.block.variable("SessionNum").count = 0;
    drive.putOther(kLaterCar, 0.5).tick();
    EXPECT_EQ(other().lap, 5);
}

TEST_F(Processing, ReadsAnotherCarsLapFromTheResults) {
    drive.session.sessionTypes = {"Practice", "Race"};
    drive.session.results = {{0, {{"7", "1", "70.5"}}},
                             {1, {{"1", "9", "90.0"}, {"7", "4", "80.25"}, {"7", "6", "66.0"}}}};
    drive.publishSession();
    drive.setFinishedLaps(kLaterCar, 30, 30.0);
    drive.block.set("SessionNum", 1);
    drive.putOther(kLaterCar, 0.5);
    drive.putOther(kEarlierCar, 0.5).tick();
    EXPECT_EQ(other().lap, 5) << "only the car's first place counts";
    EXPECT_EQ(other().lastLapTime, 80.25F);
    EXPECT_EQ(drive.car(kEarlierCar).current.lap, 10);
    drive.block.set("SessionNum", 0);
    drive.tick();
    EXPECT_EQ(other().lap, 2);
    EXPECT_EQ(other().lastLapTime, 70.5F);
}

TEST_F(Processing, FollowsResultsThatChange) {
    drive.publishResults({{"7", "4", "80.0"}});
    drive.putOther(kLaterCar, 0.5).tick();
    ASSERT_EQ(other().lap, 5);
    drive.publishResults({{"1", "5", "79.0"}, {"7", "5", "81.0"}}).tick();
    EXPECT_EQ(other().lap, 6);
    EXPECT_EQ(other().lastLapTime, 81.0F);
}

TEST_F(Processing, FollowsResultsThatAreChangedWithoutAText) {
    drive.publishResults({{"7", "4", "80.0"}});
    drive.putOther(kLaterCar, 0.5).tick();
    reader.pathSet("SessionInfo/Sessions/0/ResultsPositions/1/LapsComplete", "8");
    drive.tick();
    EXPECT_EQ(other().lap, 9);
    reader.clear();
    drive.session.results.clear();
    drive.publishSession();
    drive.setFinishedLaps(kLaterCar, 20, 30.0).tick();
    EXPECT_EQ(other().lap, 21);
}

TEST_F(Processing, ReadsAsManyPlacesOfTheResultsAsThereAreSlots) {
    std::vector<Result> results(64, Result{"20", "2", "50.0"});
    results[63] = {"7", "4", "80.0"};
    results.push_back({"1", "9", "90.0"});
    drive.session.results = {{0, results}};
    drive.publishSession();
    drive.setFinishedLaps(kEarlierCar, 30, 30.0);
    drive.putOther(kLaterCar, 0.5);
    drive.putOther(kEarlierCar, 0.5).tick();
    EXPECT_EQ(other().lap, 5) << "place 64";
    EXPECT_EQ(drive.car(kEarlierCar).current.lap, 31) << "place 65 is never read";
}

TEST_F(Processing, IgnoresResultsOfCarsWithoutASlot) {
    drive.publishResults({{"-1", "9", "90.0"}, {"64", "9", "90.0"}, {"7", "4", "80.0"}});
    drive.putOther(kLaterCar, 0.5).tick();
    EXPECT_EQ(other().lap, 5);
}

TEST_F(Processing, ReadsResultsAfterAMissingPlace) {
    drive.publishSession();
    reader.pathSet("SessionInfo/Sessions/0/ResultsPositions/3/CarIdx", "7");
    reader.pathSet("SessionInfo/Sessions/0/ResultsPositions/3/LapsComplete", "4");
    reader.pathSet("SessionInfo/Sessions/0/ResultsPositions/0/CarIdx", "1");
    reader.pathSet("SessionInfo/Sessions/0/ResultsPositions/0/LapsComplete", "9");
    drive.setFinishedLaps(kEarlierCar, 30, 30.0);
    drive.putOther(kLaterCar, 0.5);
    drive.putOther(kEarlierCar, 0.5).tick();
    EXPECT_EQ(other().lap, 5);
    EXPECT_EQ(other().lastLapTime, 0.0F) << "a time that is missing";
    EXPECT_EQ(drive.car(kEarlierCar).current.lap, 31) << "places count from 1";
}

TEST_F(Processing, TreatsAResultWithoutACarsNumberAsSlotZero) {
    drive.session.drivers[0] = "First";
    for (const QByteArray& text : {QByteArray("none"), QByteArray("99999999999"), QByteArray("")}) {
        drive.publishResults({{text, "4", "80.0"}});
        drive.putOther(0, 0.5).tick();
        EXPECT_EQ(drive.car(0).current.lap, 5) << text.toStdString();
    }
}

TEST_F(Processing, TreatsFinishedLapsThatDoNotConvertAsZero) {
    drive.publishSession();
    drive.setFinishedLaps(kLaterCar, 30, 30.0);
    drive.putOther(kLaterCar, 0.5);
    const std::vector<std::pair<QByteArray, int>> rows = {{"none", 1},
                                                          {"99999999999", 1},
                                                          {"", 1},
                                                          {"2147483647", 2147483647},
                                                          {"2147483646", 2147483647},
                                                          {"0", 1}};
    for (const auto& [text, lap] : rows) {
        drive.publishResults({{"7", text, "later"}}).tick();
        EXPECT_EQ(other().lap, lap) << text.toStdString();
    }
}

TEST_F(Processing, TreatsAResultsTimeThatIsNotANumberAsZero) {
    drive.publishResults({{"7", "4", "later"}});
    drive.setFinishedLaps(kLaterCar, 30, 30.0);
    drive.putOther(kLaterCar, 0.5).tick();
    EXPECT_EQ(other().lastLapTime, 0.0F);
}

TEST_F(Processing, FallsBackToTheArraysWhenTheResultsGiveLapMinusOne) {
    drive.publishResults({{"7", "-2", "80.0"}});
    drive.setFinishedLaps(kLaterCar, 30, 31.5);
    drive.putOther(kLaterCar, 0.5).tick();
    EXPECT_EQ(other().lap, 31);
    EXPECT_EQ(other().lastLapTime, 31.5F);
}

TEST_F(Processing, ReadsAnotherCarsLapFromTheArraysWithoutResults) {
    drive.publishResults({{"1", "4", "80.0"}});
    drive.setFinishedLaps(kLaterCar, 30, 31.5);
    drive.putOther(kLaterCar, 0.5).tick();
    EXPECT_EQ(other().lap, 31);
    EXPECT_EQ(other().lastLapTime, 31.5F);
    drive.block.set("SessionNum", 6);
    drive.setFinishedLaps(kLaterCar, 31, 32.5).tick();
    EXPECT_EQ(other().lap, 32) << "a session that is not in the text";
    tickWithout("CarIdxLapCompleted");
    EXPECT_EQ(other().lap, 1);
    tickWithout("CarIdxLastLapTime");
    EXPECT_EQ(other().lastLapTime, 0.0F);
}

TEST_F(Processing, SaturatesTheFinishedLapsOfTheArrays) {
    drive.publishSession();
    drive.setFinishedLaps(kLaterCar, std::numeric_limits<int>::max(), 30.0);
    drive.putOther(kLaterCar, 0.5).tick();
    EXPECT_EQ(other().lap, std::numeric_limits<int>::max());
}

TEST_F(Processing, TreatsAnotherCarAsInItsStallWhenItStandsStillOnPitRoad) {
    drive.publishSession();
    drive.putOtherOnPitRoad(kLaterCar, 0.5).tick();
    EXPECT_EQ(other().status, CarStatus::InPitlane);
    drive.tick();
    EXPECT_EQ(other().status, CarStatus::InPitStall);
    drive.putOtherOnPitRoad(kLaterCar, 0.5009).tick();
    EXPECT_EQ(other().status, CarStatus::InPitStall);
    drive.putOtherOnPitRoad(kLaterCar, 0.5020).tick();
    EXPECT_EQ(other().status, CarStatus::InPitlane);
    drive.putOtherOnPitRoad(kLaterCar, 0.5011).tick();
    EXPECT_EQ(other().status, CarStatus::InPitStall) << "backwards too";
    drive.putOtherOnPitRoad(kLaterCar, 0.99).tick();
    drive.putOtherOnPitRoad(kLaterCar, 0.01).tick();
    EXPECT_EQ(other().status, CarStatus::InPitlane) << "over the line";
}

TEST_F(Processing, ComputesTheStandstillDifferenceInSinglePrecision) {
    drive.publishSession();
    // The single-precision 0.001 is above the double one, so this is not a standstill.
    drive.putOtherOnPitRoad(kLaterCar, 0.0).tick(2);
    ASSERT_EQ(other().status, CarStatus::InPitStall);
    drive.putOtherOnPitRoad(kLaterCar, static_cast<double>(0.001F)).tick();
    EXPECT_EQ(other().status, CarStatus::InPitlane);
    drive.putOtherOnPitRoad(kLaterCar, 0.0).tick(2);
    drive.putOtherOnPitRoad(kLaterCar, static_cast<double>(std::nextafter(0.001F, 0.0F)));
    drive.tick();
    EXPECT_EQ(other().status, CarStatus::InPitStall);
}

TEST_F(Processing, TreatsAnotherCarAsOnPitRoadWithoutThatVariable) {
    drive.publishSession();
    drive.putOther(kLaterCar, 0.5);
    tickWithout("CarIdxOnPitRoad");
    EXPECT_EQ(other().status, CarStatus::InPitlane);
}

TEST_F(Processing, ReadsTheKindOfSession) {
    const std::vector<std::pair<QByteArray, int>> kinds = {
        {"Race", 5},   {"Offline testing", 0}, {"Qualify", 2}, {"Practice", 1},
        {"Warmup", 3}, {"Lone Qualify", -1},   {"race", -1},   {"", -1}};
    for (const auto& [text, kind] : kinds) {
        Drive session;
        session.session.sessionTypes = {"Filler", text};
        session.block.set("SessionNum", 1);
        session.putOther(kLaterCar, 0.5);
        session.publishSession().tick();
        EXPECT_EQ(session.own().current.sessionType, kind) << text.toStdString();
        EXPECT_EQ(session.car(kLaterCar).current.sessionType, kind) << text.toStdString();
    }
}

TEST_F(Processing, ReadsTheKindOfSessionUntilItIsKnown) {
    drive.session.sessionTypes = {"Lone Qualify"};
    drive.publishSession().tick(2);
    EXPECT_EQ(own().sessionType, -1);
    drive.session.sessionTypes = {"Qualify"};
    drive.publishSession().tick();
    EXPECT_EQ(own().sessionType, 2);
    drive.session.sessionTypes = {"Race"};
    drive.publishSession().tick();
    EXPECT_EQ(own().sessionType, 2) << "a kind that is known stays";
}

TEST_F(Processing, ReadsTheKindOfSessionFromATreeThatIsChangedWithoutAText) {
    drive.session.sessionTypes = {"Lone Qualify"};
    drive.publishSession().tick(2);
    reader.pathSet("SessionInfo/Sessions/0/SessionType", "Race");
    drive.tick();
    EXPECT_EQ(own().sessionType, 5);
}

TEST_F(Processing, ReadsTheKindOfTheNextSession) {
    drive.session.sessionTypes = {"Lone Qualify", "Race"};
    drive.publishSession().tick(2);
    EXPECT_EQ(own().sessionType, -1);
    drive.block.set("SessionNum", 1);
    drive.tick();
    EXPECT_EQ(own().sessionType, 5);
}

TEST_F(Processing, ClosesALapAbortedInThePits) {
    drive.publishSession().leavePits().driveOwnToLine();
    const LapPointer lap = reader.lap(kOwnCar);
    const int entries = lap->size();
    drive.putOwnOnPitRoad(0.99).tick();
    EXPECT_TRUE(own().lapAborted);
    ASSERT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_EQ(reader.lap(kOwnCar), lap);
    EXPECT_FALSE(lap->completed());
    EXPECT_EQ(lap->size(), entries) << "the tick in the pits is not part of the lap";
    drive.tick();
    EXPECT_FALSE(own().lapAborted);
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
}

TEST_F(Processing, ClosesACompletedLapWithoutTheTickThatCompletedIt) {
    drive.publishSession().leavePits().driveOwnToLine();
    const LapPointer lap = reader.lap(kOwnCar);
    const int entries = lap->size();
    drive.crossOwnLine(88.0);
    ASSERT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_TRUE(own().lapCompleted);
    EXPECT_TRUE(lap->completed());
    EXPECT_EQ(lap->size(), entries);
    EXPECT_TRUE(drive.own().nextLap->isEmpty());
    drive.putOwnOnTrack(0.02, 2.0).tick();
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
    EXPECT_NE(reader.lap(kOwnCar), lap);
    EXPECT_EQ(reader.lap(kOwnCar)->size(), 1);
    EXPECT_EQ(own().status, CarStatus::FlyingLap);
}

TEST_F(Processing, ClosesEveryRecordedLapWhenTheSessionChangesDuringATick) {
    drive.session.drivers[20] = "Out Of World";
    drive.publishSession();
    runOtherCar(0.4);
    drive.leavePits().driveOwnToLine();
    const LapPointer ownLap = reader.lap(kOwnCar);
    const LapPointer otherLap = reader.lap(kLaterCar);

    drive.advanceClock();
    drive.beginTick();
    TLM::SDK::Lap lap;
    reader.getSessionInfo(kOwnCar, &lap);
    ASSERT_TRUE(reader.isSessionRestarted());
    drive.takeSnapshot();
    drive.endTick();

    EXPECT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_TRUE(reader.isLapReady(kLaterCar));
    EXPECT_FALSE(reader.isLapReady(20)) << "a car out of the world closes no lap";
    EXPECT_FALSE(ownLap->completed());
    EXPECT_FALSE(otherLap->completed());
    EXPECT_EQ(lapTimeOf(ownLap), 3599000);
    drive.tick();
    EXPECT_FALSE(reader.isLapReady(kOwnCar)) << "only in that tick";
    EXPECT_FALSE(reader.isLapReady(kLaterCar));
}

TEST_F(Processing, ClosesALapAsNotCompletedWhenTheSessionChangesAtTheLine) {
    drive.publishSession().leavePits().driveOwnToLine();
    drive.advanceClock();
    drive.beginTick();
    TLM::SDK::Lap lap;
    reader.getSessionInfo(kOwnCar, &lap);
    drive.putOwnOnTrack(0.005, 0.4);
    drive.block.set("Lap", 1);
    drive.takeSnapshot();
    drive.endTick();
    ASSERT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
    EXPECT_FALSE(drive.drivenLaps(kOwnCar).front()->completed());
}

TEST_F(Processing, NeverSeesASessionChangeThroughTicks) {
    // The session's identity is read when a lap is closed, and copied before the next tick compares
    // it. So a plugin that only ticks continues its open laps.
    drive.publishSession().leavePits().driveOwnLap(88.0);
    EXPECT_TRUE(reader.isSessionRestarted());
    drive.driveOwnToLine();
    drive.session.sessionId = "777";
    drive.publishSession();
    const LapPointer lap = reader.lap(kOwnCar);
    drive.putOwnOnTrack(0.995, 89.5).tick();
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
    EXPECT_EQ(reader.lap(kOwnCar), lap);
    drive.crossOwnLine(89.6);
    ASSERT_EQ(drive.drivenLaps(kOwnCar).size(), 2U);
    EXPECT_TRUE(drive.drivenLaps(kOwnCar)[1]->completed());
    drive.putOwnOnTrack(0.02, 1.0).tick();
    EXPECT_EQ(drive.drivenLaps(kOwnCar).size(), 2U);
}

TEST_F(Processing, ReadsSessionZeroForALaterCarWhenTheOwnOutLapBeginsInTheSameTick) {
    // When the own car's out lap begins, its values are dropped, including the session number.
    drive.session.sessionTypes = {"Practice", "Race"};
    drive.publishSession();
    drive.block.set("SessionNum", 1);
    drive.putOwnOnPitRoad(0.02);
    drive.putOther(kEarlierCar, 0.5);
    drive.putOther(kLaterCar, 0.5).tick(4);
    ASSERT_EQ(own().status, CarStatus::InPitlane);
    drive.setFinishedLaps(kEarlierCar, 1, 80.0);
    drive.setFinishedLaps(kLaterCar, 1, 80.0);
    drive.putOwnOnTrack(0.05, 4.0).tick();
    ASSERT_EQ(own().status, CarStatus::OutLap);
    ASSERT_EQ(drive.drivenLaps(kEarlierCar).size(), 1U);
    ASSERT_EQ(drive.drivenLaps(kLaterCar).size(), 1U);
    EXPECT_EQ(drive.drivenLaps(kEarlierCar)[0]->value("Session name").value.toString(), "Race");
    EXPECT_EQ(drive.drivenLaps(kEarlierCar)[0]->session(), TLM::SDK::Session::Race);
    EXPECT_EQ(drive.drivenLaps(kLaterCar)[0]->value("Session name").value.toString(), "Practice");
    EXPECT_EQ(drive.drivenLaps(kLaterCar)[0]->session(), TLM::SDK::Session::Practice);
}

TEST_F(Processing, RecordsNothingWhileACarWaits) {
    drive.publishSession();
    drive.putOtherOnPitRoad(kLaterCar, 0.84).tick();
    drive.putOther(kLaterCar, 0.85).tick();
    ASSERT_EQ(other().status, CarStatus::WaitingForStart);
    EXPECT_TRUE(reader.lap(kLaterCar)->isEmpty());
    EXPECT_FALSE(reader.lap(kLaterCar)->containsValue("maxLapDistPct"));
    drive.tick();
    EXPECT_EQ(other().status, CarStatus::OutLap);
}

TEST_F(Processing, StartsNoLapInThePits) {
    drive.publishSession();
    drive.putOtherOnPitRoad(kLaterCar, 0.5).tick(3);
    ASSERT_EQ(other().status, CarStatus::InPitStall);
    EXPECT_TRUE(reader.lap(kLaterCar)->isEmpty());
    drive.putOtherOnPitRoad(kLaterCar, 0.6).tick();
    ASSERT_EQ(other().status, CarStatus::InPitlane);
    EXPECT_TRUE(reader.lap(kLaterCar)->isEmpty());
    EXPECT_FALSE(reader.lap(kLaterCar)->containsValue("maxLapDistPct"));
}

TEST_F(Processing, ContinuesALapWithSamplesInThePits) {
    // A loaded recording does not abort laps in the pits.
    drive.publishSession().tick();
    reader.setDiskLoading(true);
    drive.leavePits().driveOwnToLine();
    const int entries = reader.lap(kOwnCar)->size();
    ASSERT_GT(entries, 0);
    drive.putOwnOnPitRoad(0.995).tick();
    ASSERT_EQ(own().status, CarStatus::InPitlane);
    EXPECT_EQ(reader.lap(kOwnCar)->size(), entries + 1);
    drive.putOwnInStall();
    drive.block.set("LapDistPct", 0.996);
    drive.tick();
    ASSERT_EQ(own().status, CarStatus::InPitStall);
    EXPECT_EQ(reader.lap(kOwnCar)->size(), entries + 2);
}

TEST_F(Processing, RecordsASampleOnTrack) {
    drive.publishSession().leavePits();
    EXPECT_TRUE(reader.lap(kOwnCar)->isEmpty())
        << "the values of the tick in which the out lap begins are dropped";
    EXPECT_TRUE(reader.sample(kOwnCar).isEmpty());
    drive.putOwnOnTrack(0.1, 9.0);
    drive.block.set("FuelLevel", 33.5);
    drive.tick();
    const LapPointer lap = reader.lap(kOwnCar);
    EXPECT_EQ(samplesOf(lap, "lapdistpct"), QList<double>({static_cast<double>(0.1F)}));
    EXPECT_EQ(samplesOf(lap, "fuellevel"), QList<double>({33.5}));
    EXPECT_EQ(samplesOf(lap, "fulltelemetry"), QList<double>({1.0}));
    EXPECT_EQ(unitOf(lap, "fuellevel"), "l");
    drive.tick();
    EXPECT_EQ(lap->size(), 2);
}

TEST_F(Processing, IgnoresASlowCarOnlyByTheCapitalKey) {
    drive.publishSession();
    runOtherCar(0.3);
    const LapPointer lap = reader.lap(kLaterCar);
    const auto entriesAfter = [&](const QVariant& speed) {
        reader.sample(kLaterCar).setValue("Speed", speed, "m/s");
        const auto before = samplesOf(lap, "lapdistpct").size();
        drive.tick();
        return samplesOf(lap, "lapdistpct").size() - before;
    };
    EXPECT_EQ(entriesAfter(0.99F), 0);
    EXPECT_EQ(entriesAfter(-5.0), 0);
    EXPECT_EQ(entriesAfter(QString("fast")), 0) << "a text that is not a number counts as 0";
    EXPECT_EQ(entriesAfter(QVariant()), 0) << "an invalid value counts as 0";
    EXPECT_EQ(entriesAfter(1.0F), 1);
    EXPECT_EQ(entriesAfter(std::numeric_limits<float>::quiet_NaN()), 1);
}

TEST_F(Processing, RecordsASlowCarWhoseSpeedComesFromTheSimulator) {
    drive.block.addVariable("Speed", irsdk_float, 1, "m/s");
    drive.publishSession().leavePits();
    drive.block.set("Speed", 0.2);
    drive.putOwnOnTrack(0.1, 9.0).tick();
    EXPECT_EQ(samplesOf(reader.lap(kOwnCar), "speed").size(), 1);
}

TEST_F(Processing, DoesNotUpdateTheDistanceGuardForASlowCar) {
    drive.publishSession();
    runOtherCar(0.3);
    reader.sample(kLaterCar).setValue("Speed", 0.5, "m/s");
    drive.putOther(kLaterCar, 0.4).tick();
    EXPECT_EQ(maximumDistance(kLaterCar).toFloat(), 0.3F);
}

TEST_F(Processing, KeepsTheGreatestDistanceOfTheLap) {
    drive.publishSession();
    drive.putOther(kLaterCar, 0.3).tick();
    EXPECT_EQ(maximumDistance(kLaterCar).typeId(), QMetaType::Float);
    EXPECT_EQ(maximumDistance(kLaterCar).toFloat(), 0.3F);
    EXPECT_TRUE(reader.lap(kLaterCar)->value("maxLapDistPct").unit().isEmpty());
    drive.putOther(kLaterCar, 0.4).tick();
    EXPECT_EQ(maximumDistance(kLaterCar).typeId(), QMetaType::Double);
    EXPECT_EQ(maximumDistance(kLaterCar).toDouble(), static_cast<double>(0.4F));
    drive.putOther(kLaterCar, 0.35).tick();
    EXPECT_EQ(maximumDistance(kLaterCar).toDouble(), static_cast<double>(0.4F));
    EXPECT_EQ(reader.lap(kLaterCar)->size(), 2);
    EXPECT_TRUE(drive.car(kLaterCar).nextLap->isEmpty());
}

TEST_F(Processing, RecordsSamplesBeyondTheLineInTheNextLap) {
    drive.publishSession();
    runOtherCar(0.95);
    const int entries = reader.lap(kLaterCar)->size();
    drive.putOther(kLaterCar, 0.01).tick(3);
    EXPECT_EQ(reader.lap(kLaterCar)->size(), entries);
    EXPECT_EQ(samplesOf(drive.car(kLaterCar).nextLap, "lapdistpct").size(), 3);
    EXPECT_EQ(maximumDistance(kLaterCar).toFloat(), 0.95F);
    EXPECT_FALSE(drive.car(kLaterCar).nextLap->containsValue("maxLapDistPct"));
}

TEST_F(Processing, DetectsTheLineOnlyByALargeFallFromNearIt) {
    struct Fall {
        double from;
        double to;
        bool isLine;
    };
    const std::vector<Fall> falls = {{0.95, 0.44, true},
                                     {0.95, 0.46, false},
                                     {0.91, 0.1, true},
                                     {0.89, 0.1, false},
                                     {0.6, 0.05, false},
                                     {1.0, 0.5, false},
                                     {1.0, 0.4999, true},
                                     {0.95, -0.3, true},
                                     {0.875, 0.25, false},
                                     // The single-precision 0.9 is below the double one.
                                     {0.9F, 0.1, false},
                                     {std::nextafter(0.9F, 1.0F), 0.1, true}};
    for (const Fall& fall : falls) {
        Drive falling;
        falling.publishSession();
        falling.putOther(kLaterCar, fall.from).tick(2);
        falling.putOther(kLaterCar, fall.to).tick();
        EXPECT_EQ(falling.car(kLaterCar).nextLap->isEmpty(), !fall.isLine)
            << fall.from << " to " << fall.to;
        EXPECT_EQ(falling.car(kLaterCar).lap->size(), fall.isLine ? 1 : 2);
    }
}

TEST_F(Processing, PromotesTheSamplesBeyondTheLineWhenTheLapCloses) {
    drive.publishSession();
    runOtherCar(0.5);
    drive.driveOtherToLine(kLaterCar);
    const LapPointer lap = reader.lap(kLaterCar);
    const LapPointer next = drive.car(kLaterCar).nextLap;
    drive.tick(4);
    EXPECT_EQ(next->size(), 5);
    drive.setFinishedLaps(kLaterCar, 1, 80.0).tick();
    ASSERT_TRUE(reader.isLapReady(kLaterCar));
    EXPECT_EQ(reader.lap(kLaterCar), lap);
    EXPECT_EQ(next->size(), 5) << "the tick that closes the lap is in neither";
    drive.putOther(kLaterCar, 0.02).tick();
    EXPECT_EQ(reader.lap(kLaterCar), next);
    EXPECT_EQ(next->size(), 6);
    EXPECT_EQ(maximumDistance(kLaterCar).toFloat(), 0.02F);
}

TEST_F(Processing, DiscardsAStartedLapInAReplayAtAnotherSpeed) {
    becomeReplay();
    drive.publishSession().leavePits().driveOwnLap(88.0);
    drive.driveOwnToLine();
    ASSERT_EQ(own().status, CarStatus::FlyingLap);
    const LapPointer lap = reader.lap(kOwnCar);
    ASSERT_FALSE(lap->isEmpty());
    drive.block.set("ReplayPlaySpeed", 4);
    const DebugLines debug;
    drive.tick();
    EXPECT_EQ(DebugLines::lines(), QStringList({"Replay lap aborted"}));
    EXPECT_TRUE(lap->isEmpty());
    EXPECT_TRUE(lap->valueNameList().isEmpty());
    EXPECT_EQ(reader.lap(kOwnCar), lap);
    EXPECT_EQ(own().status, CarStatus::OutLap);
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
    drive.tick(3);
    EXPECT_EQ(DebugLines::lines().size(), 1) << "once";
    EXPECT_TRUE(lap->isEmpty());
    drive.block.set("ReplayPlaySpeed", 1);
    drive.tick();
    EXPECT_EQ(lap->size(), 1);
}

TEST_F(Processing, DiscardsTheNextLapTooInAReplayAtAnotherSpeed) {
    becomeReplay();
    drive.publishSession();
    drive.putOwnOnTrack(0.95, 0.0).tick(2);
    drive.putOwnOnTrack(0.01, 0.0).tick(2);
    // Beyond the line the distance guard acts before the speed guard, so the car goes back first.
    ASSERT_FALSE(drive.own().nextLap->isEmpty());
    drive.putOwnOnTrack(0.96, 0.0);
    drive.block.set("ReplayPlaySpeed", 0);
    const DebugLines debug;
    drive.tick();
    EXPECT_TRUE(drive.own().lap->isEmpty());
    EXPECT_TRUE(drive.own().nextLap->isEmpty());
}

TEST_F(Processing, TreatsTheReplaySpeedWithinAThousandthAsOne) {
    const std::vector<std::pair<double, bool>> speeds = {
        {1.0, true},     {1.0009, true}, {0.9991, true}, {1.0011, false},
        {0.9989, false}, {0.0, false},   {-1.0, false},  {16.0, false}};
    for (const auto& [speed, records] : speeds) {
        Drive replay({{"ReplayPlaySpeed", irsdk_float}});
        replay.session.simMode = "replay";
        replay.block.set("ReplayPlaySpeed", speed);
        replay.publishSession();
        replay.putOwnOnTrack(0.3, 20.0).tick(3);
        EXPECT_EQ(replay.reader.lap(kOwnCar)->isEmpty(), !records) << speed;
    }
}

TEST_F(Processing, TreatsAMissingReplaySpeedAsAnotherSpeed) {
    becomeReplay();
    drive.publishSession();
    drive.putOwnOnTrack(0.3, 20.0);
    drive.block.variable("ReplayPlaySpeed").count = 0;
    drive.tick(3);
    EXPECT_TRUE(reader.lap(kOwnCar)->isEmpty());
    EXPECT_EQ(own().status, CarStatus::OutLap);
}

TEST_F(Processing, ChecksTheReplaySpeedOnlyForTheOwnCar) {
    becomeReplay();
    drive.publishSession();
    drive.block.set("ReplayPlaySpeed", 4);
    drive.putOther(kLaterCar, 0.5).tick(3);
    EXPECT_EQ(reader.lap(kLaterCar)->size(), 2);
}

TEST_F(Processing, ChecksTheReplaySpeedOnlyInAReplay) {
    for (const QByteArray& mode : {QByteArray("full"), QByteArray()}) {
        Drive live;
        live.session.simMode = mode;
        live.block.set("ReplayPlaySpeed", 4);
        live.publishSession();
        live.putOwnOnTrack(0.3, 20.0).tick(3);
        EXPECT_EQ(live.reader.lap(kOwnCar)->size(), 2);
    }
}

TEST_F(Processing, MarksAMissingReadingInTheLap) {
    drive.publishSession().leavePits();
    drive.putOwnOnTrack(0.1, 9.0).tick();
    drive.putOwnOnTrack(0.2, 18.0);
    tickWithout("FuelLevel");
    const QList<double> fuel = samplesOf(reader.lap(kOwnCar), "fuellevel");
    ASSERT_EQ(fuel.size(), 2);
    EXPECT_EQ(fuel[0], 40.0);
    EXPECT_EQ(fuel[1], kMissing);
}
