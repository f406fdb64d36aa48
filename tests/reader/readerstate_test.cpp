#include "tests/reader/readerfixture.h"

#include <cstring>
#include <optional>
#include <utility>
#include <vector>

using namespace readertest;
using TLM::SDK::CarStatus;

namespace {

constexpr int kSlots = 64;

class ReaderState : public ReaderTest {};

}  // namespace

TEST_F(ReaderState, StartsWith64CarsWithoutAnOwnCar) {
    const iRTelemetryReader reader;
    EXPECT_EQ(reader.myCarIdx(), -1);
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_TRUE(reader.driverName(slot).isEmpty());
        EXPECT_TRUE(reader.teamName(slot).isEmpty());
        EXPECT_TRUE(reader.carName(slot).isEmpty());
        EXPECT_TRUE(reader.className(slot).isEmpty());
        EXPECT_EQ(reader.status(slot), -1);
        EXPECT_FALSE(reader.detailedTelemetry(slot));
        EXPECT_FALSE(reader.isLapReady(slot));
        EXPECT_FALSE(reader.recorderCar(slot).diskLoading);
        EXPECT_TRUE(reader.sample(slot).isEmpty());
        EXPECT_TRUE(reader.sample(slot).detailedTelemetry());
        ASSERT_FALSE(reader.lap(slot).isNull());
        EXPECT_TRUE(reader.lap(slot)->isEmpty());
    }
    EXPECT_FALSE(reader.isSessionRestarted());
}

TEST_F(ReaderState, IsTheSessionTree) {
    drive.publishSession();
    EXPECT_EQ(drive.reader.pathValue("WeekendInfo/SimMode"), "full");
    EXPECT_NE(drive.reader.pathSub("DriverInfo/Drivers/7"), nullptr);
    EXPECT_FALSE(drive.reader.hasParent());
}

TEST_F(ReaderState, HandsOutNamesStatusAndSampleOfASlot) {
    drive.reader.setYaml(
        yaml({"DriverInfo:", " DriverCarIdx: 3", " Drivers:", " - CarIdx: 7", "   UserName: Driver",
              "   TeamName: Team", "   CarScreenName: Car", "   CarClassShortName: Class"})
            .constData());
    drive.reader.updateCarList();
    EXPECT_EQ(drive.reader.driverName(kLaterCar), "Driver");
    EXPECT_EQ(drive.reader.teamName(kLaterCar), "Team");
    EXPECT_EQ(drive.reader.carName(kLaterCar), "Car");
    EXPECT_EQ(drive.reader.className(kLaterCar), "Class");
    EXPECT_EQ(&drive.reader.sample(kLaterCar), &drive.car(kLaterCar).sample);
    drive.reader.sample(kLaterCar).setValue("key", 1, QString());
    EXPECT_TRUE(drive.car(kLaterCar).sample.containsValue("key"));
}

TEST_F(ReaderState, GivesTheStatusAsANumber) {
    drive.publishSession().tick();
    EXPECT_EQ(drive.reader.status(kOwnCar), static_cast<int>(CarStatus::InPitStall));
    EXPECT_EQ(drive.reader.status(kLaterCar), static_cast<int>(CarStatus::NotInWorld));
}

TEST_F(ReaderState, PassesDiskLoadingToEveryCar) {
    drive.reader.setDiskLoading(true);
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_TRUE(drive.car(slot).diskLoading);
    }
    drive.reader.setDiskLoading(false);
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_FALSE(drive.car(slot).diskLoading);
    }
}

TEST_F(ReaderState, ResetsDiskLoadingWithInitializeForItselfButNotForTheCars) {
    drive.publishSession();
    drive.reader.setDiskLoading(true);
    drive.reader.initialize();
    drive.publishSession().tick();
    EXPECT_TRUE(drive.car(0).diskLoading);
    EXPECT_TRUE(drive.car(kSlots - 1).diskLoading);
    EXPECT_TRUE(drive.reader.sample(kLaterCar).containsValue("lapdistpct"))
        << "per-car arrays reach every car only while nothing is loaded from disk";
}

TEST_F(ReaderState, ResetsTheOwnCarWithInitialize) {
    drive.publishSession();
    drive.reader.updateCarList();
    ASSERT_EQ(drive.reader.myCarIdx(), kOwnCar);
    drive.reader.initialize();
    EXPECT_EQ(drive.reader.myCarIdx(), -1);
}

TEST_F(ReaderState, ResetsTheSessionWithInitialize) {
    drive.publishSession();
    TLM::SDK::Lap lap;
    drive.reader.getSessionInfo(kOwnCar, &lap);
    ASSERT_TRUE(drive.reader.isSessionRestarted());
    drive.reader.initialize();
    EXPECT_FALSE(drive.reader.isSessionRestarted());

    drive.reader.getSessionInfo(kOwnCar, &lap);
    drive.reader.prepareTick();
    ASSERT_FALSE(drive.reader.isSessionRestarted());
    drive.reader.initialize();
    EXPECT_FALSE(drive.reader.isSessionRestarted());
}

TEST_F(ReaderState, KeepsCarsTreeAndVariableNamesWithInitialize) {
    drive.publishSession().leavePits();
    const auto lap = drive.reader.lap(kOwnCar);
    const auto lapInStint = drive.own().current.lapInStint;
    drive.reader.initialize();
    EXPECT_EQ(drive.reader.driverName(kOwnCar), "Own Driver");
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::OutLap);
    EXPECT_EQ(drive.own().current.lapInStint, lapInStint);
    EXPECT_EQ(drive.reader.lap(kOwnCar), lap);
    EXPECT_TRUE(drive.reader.detailedTelemetry(kOwnCar));
    EXPECT_EQ(drive.reader.pathValue("WeekendInfo/SimMode"), "full");

    std::memcpy(drive.block.variable("FuelLevel").name, "Renamed", sizeof "Renamed");
    drive.tick();
    EXPECT_TRUE(drive.reader.sample(kOwnCar).containsValue("fuellevel"));
    EXPECT_FALSE(drive.reader.sample(kOwnCar).containsValue("renamed"));
}

TEST_F(ReaderState, DeterminesAgainWhetherItIsAReplayAfterInitialize) {
    drive.publishSession();
    drive.reader.initialize();
    drive.session.simMode = "replay";
    drive.publishSession();
    const auto lap = drive.reader.lap(kOwnCar);
    record(lap, "lapcurrentlaptime", {1.0});
    drive.reader.cleanupLap(kOwnCar);
    EXPECT_FALSE(lap->containsRecordedChannel("lapcurrentlaptime"));
}

TEST_F(ReaderState, KeepsTheRemainingSlotsAfterAResize) {
    drive.session.drivers = {{kOwnCar, "Own Driver"}, {20, "Driver 20"}};
    drive.publishSession();
    drive.reader.updateCarList();
    drive.reader.resize(10);
    EXPECT_EQ(drive.reader.driverName(kOwnCar), "Own Driver");
    drive.reader.resize(kSlots);
    EXPECT_EQ(drive.reader.driverName(kOwnCar), "Own Driver");
    EXPECT_TRUE(drive.reader.driverName(20).isEmpty());
    ASSERT_FALSE(drive.reader.lap(20).isNull());
    EXPECT_TRUE(drive.reader.lap(20)->isEmpty());
}

TEST_F(ReaderState, DoesNotChangeWhenResizedToItsSize) {
    drive.publishSession().leavePits().driveOwnToLine();
    const auto lap = drive.reader.lap(kOwnCar);
    const int entries = lap->size();
    drive.reader.resize(kSlots);
    EXPECT_EQ(drive.reader.lap(kOwnCar), lap);
    EXPECT_EQ(lap->size(), entries);
    EXPECT_EQ(drive.reader.driverName(kOwnCar), "Own Driver");
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::OutLap);
}

TEST_F(ReaderState, NamesTheDriversOfSlotsThatCameBackAfterAResize) {
    drive.session.drivers = {{kOwnCar, "Own Driver"}, {20, "Driver 20"}};
    drive.publishSession();
    drive.reader.updateCarList();
    drive.reader.resize(10);
    drive.reader.resize(kSlots);
    EXPECT_TRUE(drive.reader.updateCarList());
    EXPECT_EQ(drive.reader.driverName(20), "Driver 20");
    EXPECT_EQ(drive.reader.sample(20).carId(), "20");
}

TEST_F(ReaderState, TicksWithFewerSlots) {
    drive.publishResults({{"20", "4", "80.0"}});
    drive.reader.resize(10);
    drive.advanceClock();
    drive.beginTick();
    drive.takeSnapshot();
    drive.reader.processData();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::InPitStall);
    drive.reader.initialize();
    EXPECT_EQ(drive.status(kSlots - 1), CarStatus::Undefined) << "64 slots again";
}

TEST_F(ReaderState, TicksWithoutAnySlot) {
    drive.publishSession();
    drive.reader.resize(0);
    EXPECT_FALSE(drive.reader.updateCarList());
    drive.reader.prepareTick();
    drive.takeSnapshot();
    drive.reader.processData();
    EXPECT_FALSE(drive.reader.isSessionRestarted());
    EXPECT_FALSE(drive.reader.isMyLapReady());
    EXPECT_TRUE(drive.reader.myLap().isNull());
}

TEST_F(ReaderState, HasNoOwnLapWithoutAnOwnCar) {
    EXPECT_FALSE(drive.reader.isMyLapReady());
    EXPECT_TRUE(drive.reader.myLap().isNull());
    drive.reader.processMyLap(true);
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_FALSE(drive.reader.isLapReady(slot));
    }
}

TEST_F(ReaderState, HasNoOwnLapWithAnOwnCarBeyondTheSlots) {
    for (const QByteArray& own : {QByteArray("64"), QByteArray("70"), QByteArray("-2")}) {
        drive.session.ownCar = own;
        drive.publishSession();
        drive.reader.updateCarList();
        EXPECT_EQ(drive.reader.myCarIdx(), own.toInt());
        EXPECT_FALSE(drive.reader.isMyLapReady());
        EXPECT_TRUE(drive.reader.myLap().isNull());
        drive.reader.processMyLap(true);
        drive.tick();
        for (int slot = 0; slot < kSlots; ++slot) {
            EXPECT_FALSE(drive.reader.isLapReady(slot));
            EXPECT_FALSE(drive.reader.detailedTelemetry(slot));
        }
    }
}

TEST_F(ReaderState, HandsOutTheOwnCarsLap) {
    for (const int own : {0, kOwnCar, kSlots - 1}) {
        drive.session.ownCar = QByteArray::number(own);
        drive.publishSession();
        drive.reader.updateCarList();
        EXPECT_EQ(drive.reader.myLap(), drive.reader.lap(own));
        EXPECT_FALSE(drive.reader.isMyLapReady());
        drive.reader.processMyLap(false);
        EXPECT_TRUE(drive.reader.isMyLapReady());
        EXPECT_TRUE(drive.reader.isLapReady(own));
    }
}

TEST_F(ReaderState, TreatsACarAsInTheWorldFromJustBeforeTheLineOn) {
    drive.publishSession();
    EXPECT_FALSE(drive.reader.isCarInWorld(kLaterCar));
    // The single-precision -0.2 is below the double one.
    const std::vector<std::pair<double, bool>> distances = {
        {0.5, true}, {0.0, true}, {-0.19, true}, {-0.2, false}, {-0.3, false}, {-1.0, false}};
    for (const auto& [distance, inWorld] : distances) {
        drive.putOther(kLaterCar, distance).tick();
        EXPECT_EQ(drive.reader.isCarInWorld(kLaterCar), inWorld) << distance;
    }
}

TEST_F(ReaderState, KeepsTheRevisionOfTheRecordsWhileNoneChanges) {
    drive.publishSession().tick();
    const auto before = drive.reader.recordsRevision();
    ASSERT_TRUE(before.has_value());
    drive.putOther(kLaterCar, 0.5).tick(3);
    drive.publishSession().tick();
    EXPECT_EQ(drive.reader.recordsRevision(), before) << "values are not part of the records";
}

TEST_F(ReaderState, ChangesTheRevisionOfTheRecordsWhenTheyMayHaveChanged) {
    drive.publishSession().tick();
    auto before = drive.reader.recordsRevision();
    drive.session.ownCar = QByteArray::number(kLaterCar);
    drive.publishSession().tick();
    EXPECT_NE(drive.reader.recordsRevision(), before) << "another car is the detailed one";
    before = drive.reader.recordsRevision();
    drive.reader.resize(kSlots / 2);
    EXPECT_NE(drive.reader.recordsRevision(), before) << "records were removed";
    EXPECT_TRUE(drive.reader.recordsRevision().has_value());
}

TEST_F(ReaderState, HasNoRevisionOfTheRecordsOnceAReferenceWasHandedOut) {
    drive.publishSession().tick();
    EXPECT_EQ(std::as_const(drive.reader).sample(kLaterCar).carId(), "7");
    EXPECT_TRUE(drive.reader.recordsRevision().has_value()) << "reading changes nothing";
    drive.reader.sample(kLaterCar).setCarId("own name");
    EXPECT_EQ(drive.reader.recordsRevision(), std::nullopt);
    drive.tick();
    EXPECT_EQ(drive.reader.recordsRevision(), std::nullopt) << "the reference may be kept";
}
