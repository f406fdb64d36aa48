#include "tests/reader/readerfixture.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

using namespace readertest;
using TLM::SDK::CarStatus;
using TLM::SDK::LapType;
using TLM::SDK::Session;

namespace {

/** Longer drives, tested from outside by the laps that are handed over. */
class ReaderLife : public ReaderTest {
protected:
    iRTelemetryReader& reader = drive.reader;

    static void expectWholeLap(const LapPointer& lap) {
        const int entries = lap->size();
        EXPECT_GT(entries, 0);
        for (const QString& name : lap->getAvailableRecordedChannels()) {
            EXPECT_EQ(samplesOf(lap, name).size(), entries) << name.toStdString();
        }
        EXPECT_FALSE(lap->lapId().isNull());
        EXPECT_FALSE(lap->stintId().isNull());
        EXPECT_TRUE(lap->lapTime().isValid());
        EXPECT_TRUE(lap->dateTime().isValid());
        EXPECT_FALSE(lap->containsValue("maxLapDistPct"));
    }

    static void expectRising(const QList<double>& samples) {
        EXPECT_TRUE(std::is_sorted(samples.begin(), samples.end()));
    }

    /** A tick with the other car on track at this distance. */
    void driveOther(double distance) { drive.putOther(kLaterCar, distance).tick(); }
};

/** The expected length of another car's laps, seen in the capacity of their channels. */
class ExpectedLength : public ReaderTest {
protected:
    void SetUp() override {
        drive.publishSession();
        drive.putOther(kLaterCar, 0.5).tick();
    }

    /** A lap of so many samples, closed as the car crosses the line. */
    LapPointer driveLap(int samples) {
        for (int i = 0; i < samples; ++i) {
            drive.putOther(kLaterCar, 0.01 + 0.98 * i / samples).tick();
        }
        ++m_finished;
        drive.setFinishedLaps(kLaterCar, m_finished, 90.0);
        drive.putOther(kLaterCar, 0.005).tick();
        return drive.lastDrivenLap(kLaterCar);
    }

    static void expectRoom(const LapPointer& lap, qsizetype room) {
        constexpr qsizetype kSpread = 64;  // the channels' rooms differ
        const qsizetype recorded = lap->channel("lapdistpct")->samples.capacity();
        EXPECT_GE(recorded, room);
        EXPECT_LT(recorded, room + kSpread);
        EXPECT_EQ(lap->channel("dt")->samples.capacity(), room) << "derived";
    }

private:
    int m_finished = 0;
};

}  // namespace

TEST_F(ReaderLife, RecordsAStintFromThePitsToThePits) {
    drive.publishSession().tick();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::InPitStall);
    drive.putOwnOnPitRoad(0.02).tick();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::InPitlane);
    drive.leavePits();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::OutLap);
    drive.driveOwnLap(99.0);
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::FlyingLap);
    drive.driveOwnLap(88.0);
    drive.driveOwnLap(87.0);
    drive.driveOwnToLine();
    drive.putOwnOnPitRoad(0.99).tick();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::InPitlane);
    drive.putOwnInStall().tick(3);
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::InPitStall);

    const std::vector<LapPointer> laps = drive.drivenLaps(kOwnCar);
    ASSERT_EQ(laps.size(), 4U);
    EXPECT_EQ(drive.laps[kOwnCar].size(), 4U) << "each once, and no empty one";
    const std::vector<LapType> types = {LapType::OutLap, LapType::FlyingLap, LapType::FlyingLap,
                                        LapType::FlyingLap};
    const std::vector<int> times = {3599000, 88000, 87000, 3599000};
    const std::vector<bool> completed = {true, true, true, false};
    std::set<QUuid> ids;
    for (std::size_t i = 0; i < laps.size(); ++i) {
        expectWholeLap(laps[i]);
        EXPECT_EQ(laps[i]->lapType(), types[i]);
        EXPECT_EQ(lapTimeOf(laps[i]), times[i]);
        EXPECT_EQ(laps[i]->completed(), completed[i]);
        EXPECT_EQ(laps[i]->stintId(), laps[0]->stintId());
        EXPECT_EQ(laps[i]->lapInStint(), static_cast<int>(i));
        expectRising(samplesOf(laps[i], "lapdistpct"));
        expectRising(samplesOf(laps[i], "sessiontick"));
        ids.insert(laps[i]->lapId());
    }
    EXPECT_EQ(ids.size(), 4U);
}

TEST_F(ReaderLife, HandsOverLapsThatNoLaterTickChanges) {
    drive.publishSession().leavePits().driveOwnLap(99.0);
    const LapPointer lap = drive.lastDrivenLap(kOwnCar);
    const int entries = lap->size();
    const QList<double> fuel = samplesOf(lap, "fuellevel");
    drive.block.set("FuelLevel", 1.0);
    drive.driveOwnLap(88.0);
    EXPECT_EQ(lap->size(), entries);
    EXPECT_EQ(samplesOf(lap, "fuellevel"), fuel);
    EXPECT_EQ(lapTimeOf(lap), 3599000);
}

TEST_F(ReaderLife, ClosesAnotherCarsLapWhenItsResultComes) {
    drive.publishResults({{"7", "0", "-1"}}).tick();
    drive.putOtherOnPitRoad(kLaterCar, 0.02).tick().driveOtherToLine(kLaterCar);
    for (int tick = 0; tick < 10; ++tick) {
        driveOther(0.01 + 0.001 * tick);
    }
    EXPECT_TRUE(drive.drivenLaps(kLaterCar).empty()) << "the results are late";
    drive.publishResults({{"7", "1", "91.234"}});
    driveOther(0.025);
    ASSERT_EQ(drive.drivenLaps(kLaterCar).size(), 1U);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::FlyingLap);

    drive.driveOtherToLine(kLaterCar);
    drive.publishResults({{"7", "2", "89.5"}});
    driveOther(0.01);

    const std::vector<LapPointer> laps = drive.drivenLaps(kLaterCar);
    ASSERT_EQ(laps.size(), 2U);
    EXPECT_EQ(laps[0]->lapType(), LapType::OutLap);
    EXPECT_EQ(lapTimeOf(laps[0]), 3599000);
    EXPECT_EQ(laps[1]->lapType(), LapType::FlyingLap);
    EXPECT_EQ(lapTimeOf(laps[1]), 89500);
    // The number before the result came, which counts the laps begun, less one.
    EXPECT_EQ(laps[0]->lapInSession(), 0);
    EXPECT_EQ(laps[1]->lapInSession(), 1);
    for (const LapPointer& lap : laps) {
        expectWholeLap(lap);
        EXPECT_TRUE(lap->completed());
        EXPECT_FALSE(lap->detailedTelemetry());
        expectRising(samplesOf(lap, "lapdistpct"));
        EXPECT_TRUE(lap->containsRecordedChannel("speed"));
        EXPECT_TRUE(lap->containsRecordedChannel("lapdist"));
    }
    // The eleven ticks between line and result opened the flying lap.
    EXPECT_LT(samplesOf(laps[1], "lapdistpct")[0], 0.01);
    EXPECT_EQ(samplesOf(laps[1], "lapdistpct").size(), 11 + 10);
    EXPECT_TRUE(laps[1]->containsRecordedChannel("lapcurrentlaptime"));
}

TEST_F(ReaderLife, ClosesALapWithTheFirstResultOfACarThatTheArraysCountedBefore) {
    drive.publishSession();
    drive.setFinishedLaps(kLaterCar, 3, 90.0);
    driveOther(0.4);
    driveOther(0.5);
    ASSERT_EQ(drive.car(kLaterCar).current.lap, 4);
    drive.publishResults({{"7", "3", "90.0"}});
    driveOther(0.6);
    EXPECT_TRUE(drive.drivenLaps(kLaterCar).empty()) << "both have the same number";
    drive.publishResults({{"7", "4", "88.0"}});
    driveOther(0.7);
    EXPECT_EQ(drive.drivenLaps(kLaterCar).size(), 1U);
}

TEST_F(ReaderLife, HandsOverAnotherCarsLapWhenItComesIntoThePits) {
    drive.publishSession();
    driveOther(0.4);
    driveOther(0.5);
    drive.putOtherOnPitRoad(kLaterCar, 0.98).tick();
    const std::vector<LapPointer> laps = drive.drivenLaps(kLaterCar);
    ASSERT_EQ(laps.size(), 1U);
    EXPECT_FALSE(laps[0]->completed());
    EXPECT_EQ(laps[0]->lapType(), LapType::OutLap);
    drive.tick();
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::InPitStall);
    EXPECT_EQ(drive.laps[kLaterCar].size(), 1U);
}

TEST_F(ReaderLife, DropsTheLapOfACarThatLeavesTheWorld) {
    drive.publishSession();
    driveOther(0.4);
    driveOther(0.5);
    const LapPointer lap = reader.lap(kLaterCar);
    ASSERT_FALSE(lap->isEmpty());
    drive.putOtherOutOfWorld(kLaterCar).tick(3);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::NotInWorld);
    EXPECT_EQ(reader.lap(kLaterCar), lap) << "the lap stays open";
    drive.putOtherOnPitRoad(kLaterCar, 0.02).tick(2);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::InPitStall);
    driveOther(0.05);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::OutLap);
    EXPECT_NE(reader.lap(kLaterCar), lap);
    EXPECT_TRUE(drive.laps[kLaterCar].empty()) << "the out lap begins without closing it";
}

TEST_F(ReaderLife, RecordsACarBackOnTrackOnlyAfterThePits) {
    drive.publishSession().tick();
    driveOther(0.4);
    drive.setFinishedLaps(kLaterCar, 1, 90.0);
    driveOther(0.5);
    driveOther(0.6);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::NotInWorld);
    drive.putOtherOnPitRoad(kLaterCar, 0.98).tick();
    drive.putOther(kLaterCar, 0.05).tick();
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::OutLap);
}

TEST_F(ReaderLife, HandsOverAnEmptyLapInEachTickInThePitsWhenTheLapEndedAtTheirEntry) {
    // The completed flag stays set while the car is in the pits.
    drive.publishSession().leavePits().driveOwnLap(99.0);
    drive.putOwnOnPitRoad(0.01).tick(5);
    EXPECT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
    EXPECT_EQ(drive.laps[kOwnCar].size(), 6U);
    EXPECT_TRUE(drive.own().current.lapCompleted);
    drive.putOwnInStall().tick(2);
    EXPECT_EQ(drive.laps[kOwnCar].size(), 8U);
    drive.leavePits().tick();
    EXPECT_FALSE(drive.own().current.lapCompleted);
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
}

TEST_F(ReaderLife, StartsARaceFromTheGrid) {
    drive.session.sessionTypes = {"Race"};
    drive.publishSession().tick();
    ASSERT_EQ(drive.status(kOwnCar), CarStatus::InPitStall);
    drive.block.set("SessionState", 2);
    drive.putOwnOnTrack(0.97, 0.0).tick(3);
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::WaitingForStart);
    EXPECT_TRUE(reader.lap(kOwnCar)->isEmpty());

    drive.block.set("SessionState", 3);
    drive.putOwnOnTrack(0.01, 2.0).tick();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::OutLap) << "the formation lap";
    drive.driveOwnToLine();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::OutLap);

    drive.block.set("SessionState", 4);
    drive.putOwnOnTrack(0.995, 89.5).tick();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::OutLap) << "green, but before the line";
    drive.block.set("Lap", 1);
    drive.block.set("LapLastLapTime", 95.0);
    drive.putOwnOnTrack(0.005, 90.0).tick();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::FlyingLap) << "the race has begun";
    ASSERT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
    const LapPointer formation = drive.drivenLaps(kOwnCar)[0];
    expectWholeLap(formation);
    EXPECT_TRUE(formation->completed());
    EXPECT_EQ(formation->lapType(), LapType::OutLap);
    EXPECT_EQ(formation->session(), Session::Race);
    EXPECT_EQ(lapTimeOf(formation), 95000) << "a race's out lap keeps its time";

    drive.putOwnOnTrack(0.02, 1.0).tick().driveOwnLap(88.0);
    EXPECT_EQ(drive.lastDrivenLap(kOwnCar)->lapType(), LapType::FlyingLap);
    EXPECT_EQ(lapTimeOf(drive.lastDrivenLap(kOwnCar)), 88000);
}

TEST_F(ReaderLife, TreatsTheLapAfterAPitExitInARaceAsAFlyingLap) {
    // In a running race, an out lap in the first part of the lap counts as the formation lap's end.
    drive.session.sessionTypes = {"Race"};
    drive.publishSession();
    drive.block.set("SessionState", 4);
    drive.leavePits();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::OutLap);
    drive.putOwnOnTrack(0.1, 9.0).tick();
    EXPECT_EQ(drive.status(kOwnCar), CarStatus::FlyingLap);
    EXPECT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_TRUE(reader.lap(kOwnCar)->isEmpty());
    drive.driveOwnLap(88.0);
    EXPECT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
}

TEST_F(ReaderLife, RacesOtherCarsWithoutASessionStateOfTheirOwn) {
    drive.session.sessionTypes = {"Race"};
    drive.publishSession();
    drive.block.set("SessionState", 3);
    driveOther(0.9);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::OutLap) << "no per-car array has it";
    driveOther(0.95);
    driveOther(0.01);
    drive.setFinishedLaps(kLaterCar, 1, 95.0);
    driveOther(0.02);
    ASSERT_EQ(drive.drivenLaps(kLaterCar).size(), 1U);
    EXPECT_EQ(lapTimeOf(drive.drivenLaps(kLaterCar)[0]), 95000);
}

TEST_F(ReaderLife, ReplaysAStintWithASpeedChange) {
    drive.session.simMode = "replay";
    drive.publishSession().leavePits().driveOwnLap(99.0);
    drive.driveOwnLap(88.0);
    drive.driveOwnToLine();
    drive.block.set("ReplayPlaySpeed", 8);
    {
        const DebugLines debug;
        drive.crossOwnLine(87.0);
        EXPECT_TRUE(DebugLines::lines().isEmpty()) << "the line comes before the speed";
        drive.driveOwnToLine();
        EXPECT_TRUE(DebugLines::lines().isEmpty()) << "an empty lap stays empty";
        drive.block.set("ReplayPlaySpeed", 1);
        drive.putOwnOnTrack(0.991, 89.1).tick();
        drive.block.set("ReplayPlaySpeed", 8);
        drive.putOwnOnTrack(0.992, 89.2).tick(3);
        EXPECT_EQ(DebugLines::lines(), QStringList({"Replay lap aborted"}));
    }
    drive.block.set("ReplayPlaySpeed", 1);
    drive.crossOwnLine(86.0);
    drive.putOwnOnTrack(0.006, 0.5).tick().driveOwnLap(85.0);

    const std::vector<LapPointer> laps = drive.drivenLaps(kOwnCar);
    ASSERT_EQ(laps.size(), 4U);
    EXPECT_EQ(lapTimeOf(laps[1]), 88000);
    EXPECT_EQ(lapTimeOf(laps[2]), 87000);
    EXPECT_EQ(lapTimeOf(laps[3]), 85000);
    EXPECT_EQ(drive.laps[kOwnCar].size(), 5U) << "the discarded one was handed over empty";
    expectRising(samplesOf(laps[3], "lapcurrentlaptime"));
    for (const LapPointer& lap : laps) {
        expectWholeLap(lap);
    }
}

TEST_F(ReaderLife, DrivesThroughAChangeOfSession) {
    drive.session.sessionTypes = {"Practice", "Qualify"};
    drive.publishSession().leavePits().driveOwnLap(99.0);
    drive.driveOwnLap(88.0);
    drive.putOwnInStall().tick();
    drive.block.set("SessionNum", 1);
    drive.session.subSessionId = "679";
    drive.publishSession().tick().leavePits();
    drive.driveOwnLap(99.0);
    drive.driveOwnLap(87.0);
    const std::vector<LapPointer> laps = drive.drivenLaps(kOwnCar);
    ASSERT_EQ(laps.size(), 4U);
    EXPECT_EQ(laps[1]->session(), Session::Practice);
    EXPECT_EQ(laps[3]->session(), Session::Qualify);
    EXPECT_NE(laps[1]->sessionId(), laps[3]->sessionId());
    EXPECT_EQ(laps[3]->stintInSession(), 2);
    for (const LapPointer& lap : laps) {
        EXPECT_TRUE(lap->completed());
    }
    EXPECT_EQ(drive.own().current.sessionType, 1) << "the first kind that was known";
}

TEST_F(ReaderLife, HandlesADriverWhoJoinsAndOneWhoLeaves) {
    drive.session.drivers = {{kOwnCar, "Own Driver"}};
    drive.publishSession();
    driveOther(0.4);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::Undefined);
    drive.session.drivers[kLaterCar] = "Joiner";
    drive.publishSession();
    driveOther(0.5);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::OutLap);
    driveOther(0.6);
    EXPECT_EQ(reader.lap(kLaterCar)->size(), 1);
    drive.session.drivers = {{kOwnCar, "Own Driver"}};
    drive.publishSession();
    driveOther(0.7);
    EXPECT_EQ(reader.lap(kLaterCar)->size(), 2) << "the tree keeps drivers who left";
    drive.putOtherOutOfWorld(kLaterCar).tick();
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::NotInWorld);
}

TEST_F(ReaderLife, MovesTheOwnCarToAnotherSlot) {
    drive.publishSession();
    drive.putOtherOnPitRoad(kLaterCar, 0.2).leavePits().driveOwnToLine();
    drive.session.ownCar = QByteArray::number(kLaterCar);
    drive.publishSession();
    drive.putOther(kOwnCar, 0.5);
    drive.putOwnOnTrack(0.3, 30.0).tick(3);
    EXPECT_TRUE(reader.detailedTelemetry(kLaterCar));
    EXPECT_FALSE(reader.detailedTelemetry(kOwnCar));
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::OutLap);
    EXPECT_TRUE(reader.sample(kLaterCar).containsValue("fulltelemetry"));
}

TEST_F(ReaderLife, ContinuesAfterEveryLapWasClosedAsByAReconnection) {
    drive.publishSession().leavePits().driveOwnLap(99.0);
    drive.driveOwnToLine();
    static_cast<void>(reader.closeOpenLaps());
    drive.publishSession();
    drive.laps.clear();
    drive.tick();
    EXPECT_TRUE(drive.laps.empty())
        << "a lap closed at the end of a connection is never handed over";
    drive.crossOwnLine(88.0);
    ASSERT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
    EXPECT_EQ(drive.drivenLaps(kOwnCar)[0]->size(), 1) << "only what was driven since";
    EXPECT_EQ(lapTimeOf(drive.drivenLaps(kOwnCar)[0]), 88000);
}

TEST_F(ReaderLife, RecordsAFullField) {
    for (int slot = 0; slot < 64; ++slot) {
        drive.session.drivers[slot] = "Driver " + QByteArray::number(slot);
    }
    drive.publishSession();
    const auto putField = [&](double distance) {
        for (int slot = 0; slot < 64; ++slot) {
            if (slot != kOwnCar) {
                drive.putOther(slot, distance);
            }
        }
    };
    putField(0.3);
    drive.tick();
    putField(0.4);
    drive.tick();
    for (int slot = 0; slot < 64; ++slot) {
        if (slot != kOwnCar) {
            drive.setFinishedLaps(slot, 1, 80.0 + slot);
        }
    }
    putField(0.5);
    drive.tick();
    for (int slot = 0; slot < 64; ++slot) {
        if (slot == kOwnCar) {
            EXPECT_TRUE(drive.laps[slot].empty());
            continue;
        }
        ASSERT_EQ(drive.laps[slot].size(), 1U) << slot;
        EXPECT_EQ(drive.laps[slot][0]->carId(), QString::number(slot));
        EXPECT_EQ(drive.car(slot).current.lastLapTime, kNoLapTime) << "an out lap in a practice";
    }
}

TEST_F(ExpectedLength, IsThatOfTheLapBeforePlusAnEighth) {
    driveLap(100);
    driveLap(400);
    expectRoom(driveLap(400), 450);
}

TEST_F(ExpectedLength, IsHalvedByALapThatEndsEarly) {
    driveLap(100);
    driveLap(400);
    driveLap(20);
    expectRoom(driveLap(100), 225);
}

TEST_F(ExpectedLength, StaysAfterALapWithoutSamples) {
    driveLap(100);
    driveLap(400);
    drive.advanceClock();
    drive.beginTick();
    drive.reader.processLap(kLaterCar, false);
    ASSERT_TRUE(drive.reader.lap(kLaterCar)->isEmpty());
    expectRoom(driveLap(100), 450);
}
