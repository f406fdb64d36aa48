#include "tests/reader/readerfixture.h"

#include <QDateTime>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

using namespace readertest;
using TLM::SDK::CarStatus;
using TLM::SDK::LapType;
using TLM::SDK::Session;

namespace {

class Completion : public ReaderTest {
protected:
    iRTelemetryReader& reader = drive.reader;

    /** The own car's first flying lap, driven in `time`. */
    LapPointer flyingLap(double time) {
        drive.publishSession().leavePits().driveOwnLap(99.0);
        drive.driveOwnLap(time);
        EXPECT_EQ(drive.drivenLaps(kOwnCar).size(), 2U);
        return drive.lastDrivenLap(kOwnCar);
    }

    /** The out lap of the own car in a session of this kind, driven in `time`. */
    LapPointer outLap(const QByteArray& sessionType, double time) {
        drive.session.sessionTypes = {sessionType};
        drive.publishSession().leavePits().driveOwnLap(time);
        EXPECT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
        return drive.lastDrivenLap(kOwnCar);
    }
};

/** Calls normalizeChannelBeginning() for a channel of a hand-made lap. */
class Normalizing : public ReaderTest {
protected:
    QList<double> normalized(const QList<double>& samples, const QList<double>& distances) {
        const LapPointer lap = drive.reader.lap(kLaterCar);
        record(lap, "lapdistpct", distances);
        record(lap, "energy", samples);
        drive.reader.normalizeChannelBeginning(kLaterCar, "energy");
        EXPECT_EQ(samplesOf(lap, "lapdistpct"), distances);
        return samplesOf(lap, "energy");
    }
};

}  // namespace

TEST_F(Completion, OnlyMarksALapWithoutSamplesReady) {
    drive.publishSession().tick();
    const LapPointer lap = reader.lap(kOwnCar);
    const RecorderSample before = drive.own().current;
    reader.processLap(kOwnCar, false);
    EXPECT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_EQ(reader.lap(kOwnCar), lap);
    EXPECT_TRUE(lap->isEmpty());
    EXPECT_TRUE(lap->valueNameList().isEmpty());
    EXPECT_TRUE(lap->carId().isEmpty());
    EXPECT_FALSE(lap->lapTime().isValid());
    EXPECT_FALSE(lap->dateTime().isValid());
    EXPECT_EQ(lap->lapType(), LapType::Unknown);
    EXPECT_TRUE(lap->lapId().isNull());
    EXPECT_EQ(drive.own().current.lastLapTime, before.lastLapTime);
    reader.processLap(kLaterCar, true);
    EXPECT_TRUE(reader.isLapReady(kLaterCar));
    EXPECT_FALSE(reader.lap(kLaterCar)->completed());
}

TEST_F(Completion, TreatsALapWithOnlyValuesAsEmpty) {
    drive.publishSession().leavePits();
    const LapPointer lap = reader.lap(kOwnCar);
    ASSERT_TRUE(lap->containsValue("maxLapDistPct"));
    reader.processLap(kOwnCar, false);
    EXPECT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_TRUE(lap->carId().isEmpty());
    EXPECT_TRUE(lap->containsValue("maxLapDistPct"));
}

TEST_F(Completion, DerivesTheLapTypeFromTheStatusBeforeTheLine) {
    EXPECT_EQ(outLap("Practice", 99.0)->lapType(), LapType::OutLap);
    drive.driveOwnLap(88.0);
    EXPECT_EQ(drive.lastDrivenLap(kOwnCar)->lapType(), LapType::FlyingLap);
}

TEST_F(Completion, KeepsTheTypeOfALapForAnyOtherStatus) {
    drive.publishSession().leavePits().driveOwnToLine();
    const LapPointer lap = reader.lap(kOwnCar);
    drive.putOwnOnTrack(-1.0, 0.0).tick(2);
    ASSERT_EQ(drive.own().previous.status, CarStatus::NotInWorld);
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(lap->lapType(), LapType::Unknown);
    lap->setLapType(LapType::FlyingLap);
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(lap->lapType(), LapType::FlyingLap);
}

TEST_F(Completion, TimesAFlyingLap) {
    EXPECT_EQ(lapTimeOf(flyingLap(88.5)), 88500);
    EXPECT_EQ(drive.own().current.lastLapTime, 88.5F);
}

TEST_F(Completion, TruncatesTheLapTimeInSinglePrecision) {
    // As single-precision products, these are below, at and above a whole millisecond.
    const std::vector<std::pair<float, int>> times = {{83.457F, 83457}, {64.004F, 64003},
                                                      {60.001F, 60001}, {83.4579F, 83457},
                                                      {0.5F, 500},      {0.0005F, 0}};
    for (const auto& [time, milliseconds] : times) {
        Drive timed;
        timed.publishSession().leavePits().driveOwnLap(99.0);
        timed.driveOwnLap(static_cast<double>(time));
        EXPECT_EQ(lapTimeOf(timed.lastDrivenLap(kOwnCar)), milliseconds) << time;
    }
}

TEST_F(Completion, WrapsALapTimeBeyondADay) {
    EXPECT_EQ(lapTimeOf(flyingLap(100000.0)), 100000000 - 86400000);
}

TEST_F(Completion, ReplacesAnInvalidLapTimeByAnHourLessASecond) {
    const float infinite = std::numeric_limits<float>::infinity();
    for (const float time : {0.0F, -0.0F, 0.00001F, -0.00001F, -1.0F, -88.0F, infinite, -infinite,
                             std::numeric_limits<float>::quiet_NaN(), 1e25F, 2147484.0F,
                             2147483.75F, std::numeric_limits<float>::max()}) {
        Drive timed;
        timed.publishSession().leavePits().driveOwnLap(99.0);
        timed.driveOwnLap(static_cast<double>(time));
        const LapPointer lap = timed.lastDrivenLap(kOwnCar);
        EXPECT_EQ(lapTimeOf(lap), 3599000) << time;
        EXPECT_TRUE(lap->completed());
        EXPECT_EQ(timed.own().current.lastLapTime, kNoLapTime) << time;
    }
}

TEST_F(Completion, AcceptsTheGreatestLapTimeThatFits) {
    // 2147483520 ms, which is 24 days and a part of one.
    EXPECT_EQ(lapTimeOf(flyingLap(2147483.5)), 2147483520 % 86400000);
    EXPECT_EQ(drive.own().current.lastLapTime, 2147483.5F);
}

TEST_F(Completion, AcceptsATimeJustAboveZero) {
    EXPECT_EQ(lapTimeOf(flyingLap(static_cast<double>(std::nextafter(0.00001F, 1.0F)))), 0);
}

TEST_F(Completion, GivesAnOutLapATimeOnlyInARace) {
    for (const QByteArray& kind :
         {QByteArray("Practice"), QByteArray("Qualify"), QByteArray("Offline testing"),
          QByteArray("Warmup"), QByteArray("Lone Qualify")}) {
        Drive session;
        session.session.sessionTypes = {kind};
        session.publishSession().leavePits().driveOwnLap(88.0);
        const LapPointer lap = session.lastDrivenLap(kOwnCar);
        EXPECT_EQ(lapTimeOf(lap), 3599000) << kind.toStdString();
        EXPECT_TRUE(lap->completed());
    }
    EXPECT_EQ(lapTimeOf(outLap("Race", 88.0)), 88000);
}

TEST_F(Completion, GivesAnIncompleteLapNoTime) {
    drive.publishSession().leavePits().driveOwnLap(99.0);
    drive.driveOwnToLine();
    const LapPointer lap = reader.lap(kOwnCar);
    drive.block.set("LapLastLapTime", 88.0);
    drive.putOwnOnPitRoad(0.99).tick();
    EXPECT_EQ(lapTimeOf(lap), 3599000);
    EXPECT_EQ(lap->lapType(), LapType::FlyingLap);
    EXPECT_FALSE(lap->completed());
    EXPECT_EQ(drive.own().current.lastLapTime, kNoLapTime);
}

TEST_F(Completion, GivesLapsAndStintsIds) {
    drive.publishSession().leavePits().tick();
    const QUuid firstLap = drive.own().current.lapId;
    const QUuid firstStint = drive.own().current.stintId;
    drive.driveOwnLap(99.0);
    drive.putOwnOnTrack(0.02, 2.0).tick();
    const QUuid secondLap = drive.own().current.lapId;
    drive.driveOwnLap(88.0);
    drive.putOwnOnPitRoad(0.99).tick(2).leavePits();
    drive.tick();
    const QUuid secondStint = drive.own().current.stintId;
    drive.driveOwnLap(99.0);

    const std::vector<LapPointer> laps = drive.drivenLaps(kOwnCar);
    ASSERT_EQ(laps.size(), 3U);
    EXPECT_EQ(laps[0]->lapId(), firstLap);
    EXPECT_EQ(laps[0]->stintId(), firstStint);
    EXPECT_EQ(laps[1]->lapId(), secondLap);
    EXPECT_EQ(laps[1]->stintId(), firstStint);
    EXPECT_EQ(laps[2]->stintId(), secondStint);
    EXPECT_FALSE(firstLap.isNull());
    EXPECT_FALSE(firstStint.isNull());
    EXPECT_NE(firstLap, secondLap);
    EXPECT_NE(firstStint, secondStint);
    EXPECT_NE(laps[2]->lapId(), laps[1]->lapId());
}

TEST_F(Completion, TakesIdsAndNumbersFromTheTickBefore) {
    // In the tick in which a lap and a stint begin, the tick before has neither.
    drive.publishSession().leavePits();
    const LapPointer lap = reader.lap(kOwnCar);
    record(lap, "lapdistpct", {0.05});
    ASSERT_NE(drive.own().previous.lapId, drive.own().current.lapId);
    ASSERT_NE(drive.own().previous.stintId, drive.own().current.stintId);
    for (const bool completed : {false, true}) {
        reader.processLap(kOwnCar, completed);
        EXPECT_EQ(lap->lapId(), drive.own().previous.lapId);
        EXPECT_EQ(lap->stintId(), drive.own().previous.stintId);
        EXPECT_EQ(lap->lapInStint(), -1);
        EXPECT_EQ(lap->stintInSession(), 0);
    }
}

TEST_F(Completion, GivesALapThatEndsInItsFirstTickTheIdOfTheLapBefore) {
    drive.publishSession();
    drive.putOtherOnPitRoad(kLaterCar, 0.02).tick().driveOtherToLine(kLaterCar);
    drive.setFinishedLaps(kLaterCar, 1, 80.0).tick();
    drive.putOtherOnPitRoad(kLaterCar, 0.02).tick();
    const std::vector<LapPointer> laps = drive.drivenLaps(kLaterCar);
    ASSERT_EQ(laps.size(), 2U);
    EXPECT_FALSE(laps[1]->completed());
    EXPECT_EQ(laps[1]->lapId(), laps[0]->lapId());
    EXPECT_EQ(laps[1]->lapInStint(), laps[0]->lapInStint());
}

TEST_F(Completion, NumbersCompletedLaps) {
    drive.publishSession().leavePits();
    for (int lap = 0; lap < 4; ++lap) {
        drive.driveOwnLap(88.0);
    }
    const std::vector<LapPointer> laps = drive.drivenLaps(kOwnCar);
    ASSERT_EQ(laps.size(), 4U);
    // The number before the line minus one, so that laps 0 and 1 are both the first.
    EXPECT_EQ(laps[0]->lapInSession(), 0);
    EXPECT_EQ(laps[1]->lapInSession(), 0);
    EXPECT_EQ(laps[2]->lapInSession(), 1);
    EXPECT_EQ(laps[3]->lapInSession(), 2);
    for (int lap = 0; lap < 4; ++lap) {
        EXPECT_EQ(laps[static_cast<std::size_t>(lap)]->lapInStint(), lap);
        EXPECT_EQ(laps[static_cast<std::size_t>(lap)]->stintInSession(), 1);
    }
}

TEST_F(Completion, NumbersAnIncompleteLapByTheTickBefore) {
    drive.publishSession().leavePits().driveOwnLap(88.0);
    drive.driveOwnLap(88.0);
    drive.driveOwnToLine();
    drive.block.set("Lap", 9);
    drive.putOwnOnPitRoad(0.99).tick();
    const LapPointer lap = drive.lastDrivenLap(kOwnCar);
    EXPECT_EQ(lap->lapInSession(), 2);
    EXPECT_EQ(lap->lapInStint(), 2);
    EXPECT_EQ(lap->stintInSession(), 1);
    EXPECT_EQ(drive.own().current.lap, 9);
}

TEST_F(Completion, NumbersTheStints) {
    drive.publishSession();
    for (int stint = 0; stint < 3; ++stint) {
        drive.leavePits().driveOwnLap(88.0);
        drive.putOwnOnTrack(0.5, 45.0).tick();
        drive.putOwnOnPitRoad(0.99).tick();
    }
    const std::vector<LapPointer> laps = drive.drivenLaps(kOwnCar);
    ASSERT_EQ(laps.size(), 6U);
    for (std::size_t i = 0; i < laps.size(); ++i) {
        EXPECT_EQ(laps[i]->stintInSession(), static_cast<int>(i / 2) + 1);
        EXPECT_EQ(laps[i]->lapInStint(), static_cast<int>(i % 2));
        EXPECT_EQ(laps[i]->completed(), i % 2 == 0);
    }
}

TEST_F(Completion, UsesTheLapsRecordedNumberWhenTheSimulatorsFellToZero) {
    drive.publishSession().leavePits();
    drive.block.set("Lap", 4);
    drive.tick();
    drive.driveOwnLap(88.0);
    drive.block.set("Lap", 5);
    drive.driveOwnToLine();
    drive.block.set("Lap", 0);
    drive.putOwnOnPitRoad(0.99).tick();
    EXPECT_EQ(drive.own().current.lap, 5) << "the first sample of the lap that ends";
    EXPECT_EQ(drive.lastDrivenLap(kOwnCar)->lapInSession(), 5) << "the tick before has 5 too";
}

TEST_F(Completion, KeepsTheNumberZeroInTheFirstLapOfAStint) {
    drive.publishSession().leavePits();
    drive.block.set("Lap", 4);
    drive.tick(2);
    ASSERT_EQ(drive.own().current.lapInStint, 0);
    drive.block.set("Lap", 0);
    drive.putOwnOnPitRoad(0.99).tick();
    EXPECT_EQ(drive.own().current.lap, 0);
}

TEST_F(Completion, KeepsTheNumberZeroWhenTheRecordedNumberIsInvalid) {
    for (const double number :
         {1e25, -1e25, 9.999999562023526e+24, 2147483648.0,
          std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        Drive odd;
        odd.publishSession().leavePits().driveOwnLap(88.0);
        odd.block.set("Lap", 0);
        odd.driveOwnToLine();
        odd.reader.lap(kOwnCar)->channel("lap")->setSample(0, number);
        odd.reader.processLap(kOwnCar, false);
        EXPECT_EQ(odd.own().current.lap, 0) << number;
        EXPECT_TRUE(odd.reader.isLapReady(kOwnCar));
    }
    Drive whole;
    whole.publishSession().leavePits().driveOwnLap(88.0);
    whole.block.set("Lap", 0);
    whole.driveOwnToLine();
    whole.reader.lap(kOwnCar)->channel("lap")->setSample(0, 6.9);
    whole.reader.processLap(kOwnCar, false);
    EXPECT_EQ(whole.own().current.lap, 6) << "the fraction is dropped";
}

TEST_F(Completion, KeepsTheNumberZeroWithoutARecordedNumber) {
    drive.publishSession().leavePits().driveOwnLap(88.0);
    drive.block.set("Lap", 0);
    drive.driveOwnToLine();
    const LapPointer lap = reader.lap(kOwnCar);
    lap->channel("lap")->samples.clear();
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(drive.own().current.lap, 0);
    lap->removeChannel("lap");
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(drive.own().current.lap, 0);
}

TEST_F(Completion, NumbersALapOfALoadedRecordingByTheCurrentTick) {
    drive.publishSession().tick();
    reader.setDiskLoading(true);
    drive.leavePits().driveOwnLap(99.0).driveOwnLap(88.0);
    drive.driveOwnToLine();
    const LapPointer lap = reader.lap(kOwnCar);
    drive.block.set("Lap", 0);
    drive.putOwnOnTrack(0.5, 0.0).tick();
    EXPECT_TRUE(drive.own().current.lapAborted);
    EXPECT_FALSE(lap->completed());
    EXPECT_EQ(drive.own().current.lap, 2) << "the recorded number instead of zero";
    EXPECT_EQ(lap->lapInSession(), 2);
    EXPECT_EQ(lap->lapInStint(), 2);
    EXPECT_EQ(lap->stintInSession(), 1);
    EXPECT_TRUE(lap->dateTime().isValid());
}

TEST_F(Completion, UsesTheCurrentTicksNumbersForALoadedRecording) {
    drive.publishSession().tick();
    reader.setDiskLoading(true);
    drive.leavePits().driveOwnLap(99.0).driveOwnToLine();
    drive.block.set("Lap", 7);
    drive.putOwnOnTrack(0.995, 89.5).tick();
    ASSERT_EQ(drive.own().previous.lap, 1);
    ASSERT_EQ(drive.own().current.lap, 7);
    const LapPointer lap = reader.lap(kOwnCar);
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(lap->lapInSession(), 7);
    reader.setDiskLoading(false);
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(lap->lapInSession(), 1);
    reader.processLap(kOwnCar, true);
    EXPECT_EQ(lap->lapInSession(), 0);
}

TEST_F(Completion, NeverNumbersALapBelowZero) {
    drive.publishSession().leavePits().driveOwnToLine();
    drive.block.set("Lap", -7);
    drive.tick(2);
    ASSERT_EQ(drive.own().previous.lap, -7);
    const LapPointer lap = reader.lap(kOwnCar);
    reader.processLap(kOwnCar, true);
    EXPECT_EQ(lap->lapInSession(), 0);
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(lap->lapInSession(), 0);
}

TEST_F(Completion, SetsCarDriverAndDate) {
    const QDateTime before = QDateTime::currentDateTime();
    const LapPointer own = flyingLap(88.0);
    EXPECT_TRUE(own->completed());
    EXPECT_TRUE(own->detailedTelemetry());
    EXPECT_GE(own->dateTime(), before);
    EXPECT_LE(own->dateTime(), QDateTime::currentDateTime());
    EXPECT_EQ(own->dateTime().timeSpec(), Qt::LocalTime);
    EXPECT_EQ(own->carId(), "3");
    EXPECT_EQ(own->driverName(), "Own Driver");

    drive.putOther(kLaterCar, 0.5).tick(2);
    drive.setFinishedLaps(kLaterCar, 1, 80.0).tick();
    ASSERT_EQ(drive.drivenLaps(kLaterCar).size(), 1U);
    EXPECT_FALSE(drive.drivenLaps(kLaterCar)[0]->detailedTelemetry());
    EXPECT_EQ(drive.drivenLaps(kLaterCar)[0]->carId(), "7");
}

TEST_F(Completion, RemovesTheInternalDistance) {
    const LapPointer lap = flyingLap(88.0);
    EXPECT_FALSE(lap->containsValue("maxLapDistPct"));
    EXPECT_TRUE(lap->containsValue("Track length"));
}

TEST_F(Completion, AddsTheSessionsFacts) {
    const LapPointer lap = flyingLap(88.0);
    EXPECT_EQ(lap->trackName(), "Testring");
    EXPECT_EQ(lap->session(), Session::Practice);
    EXPECT_EQ(lap->sessionId(), QUuid("00000000-0000-0000-0000-000012345678"));
    EXPECT_EQ(lap->value("Session name").value.toString(), "Practice");
    EXPECT_EQ(lap->value("Lap time").value.toTime(), lap->lapTime());
}

TEST_F(Completion, AddsTheSessionsFactsBeforeItDerivesChannels) {
    // The fuel's weight and the distance need values of the session text.
    drive.publishSession();
    reader.pathSet("DriverInfo/DriverCarFuelKgPerLtr", "0.75");
    drive.leavePits().driveOwnLap(99.0);
    const LapPointer own = drive.lastDrivenLap(kOwnCar);
    EXPECT_EQ(samplesOf(own, "fuelweight").size(), own->size());
    EXPECT_EQ(samplesOf(own, "fuelweight").value(0), 30.0);
    EXPECT_FALSE(own->containsRecordedChannel("dt"));

    drive.putOtherOnPitRoad(kLaterCar, 0.5).tick();
    drive.putOther(kLaterCar, 0.5).tick(3);
    drive.setFinishedLaps(kLaterCar, 1, 80.0).tick();
    const LapPointer other = drive.lastDrivenLap(kLaterCar);
    EXPECT_EQ(samplesOf(other, "lapdist"), QList<double>({500.0, 500.0}));
    EXPECT_EQ(samplesOf(other, "dt"), QList<double>({0.0625, 0.0625}));
    EXPECT_EQ(samplesOf(other, "speed"), QList<double>({0.0, 0.0}));
    EXPECT_EQ(unitOf(other, "speed"), "m/s");
    EXPECT_EQ(unitOf(other, "lapdistpct"), "pu");
}

TEST_F(Completion, ReplacesTheRunningLapTimeOfAReplay) {
    drive.session.simMode = "replay";
    drive.publishSession().leavePits().driveOwnLap(99.0);
    const LapPointer out = drive.lastDrivenLap(kOwnCar);
    EXPECT_FALSE(out->containsRecordedChannel("lapcurrentlaptime"))
        << "the out lap did not start at the line";
    EXPECT_TRUE(out->containsRecordedChannel("dt"));

    drive.putOwnOnTrack(0.006, 0.5).tick().driveOwnLap(88.0);
    const LapPointer flying = drive.lastDrivenLap(kOwnCar);
    const QList<double> time = samplesOf(flying, "lapcurrentlaptime");
    ASSERT_EQ(time.size(), 11);
    // The sum starts at 0, which the repair of the beginning replaces.
    EXPECT_DOUBLE_EQ(time[0], static_cast<double>(0.006F) * 0.0625 / static_cast<double>(0.1F));
    EXPECT_EQ(time[1], 0.0625);
    EXPECT_EQ(time[10], 0.625);
    EXPECT_EQ(unitOf(flying, "lapcurrentlaptime"), "");
    EXPECT_FALSE(flying->containsRecordedChannel("speed"));
}

TEST_F(Completion, KeepsTheRunningLapTimeOfALiveLap) {
    const LapPointer lap = flyingLap(88.0);
    EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime").value(lap->size() - 1), 89.0);
    EXPECT_EQ(unitOf(lap, "lapcurrentlaptime"), "s");
}

TEST_F(Completion, RepairsTheBeginningOfThreeChannels) {
    drive.block.addVariable("EnergyBatteryToMGU_KLap", irsdk_float, 1, "J");
    drive.block.addVariable("EnergyMGU_KLapDeployPct", irsdk_float, 1, "%");
    drive.block.addVariable("EnergyOther", irsdk_float, 1, "J");
    drive.publishSession().leavePits();
    // A reading of the lap before, then readings proportional to the distance, 8 per lap.
    const auto driveTo = [&](double distance, double energy, double lapTime) {
        drive.putOwnOnTrack(distance, lapTime);
        drive.block.set("EnergyBatteryToMGU_KLap", energy);
        drive.block.set("EnergyMGU_KLapDeployPct", energy);
        drive.block.set("EnergyOther", energy);
        drive.tick();
    };
    driveTo(0.125, 7.0, 24.0);
    driveTo(0.25, 2.0, 20.0);
    driveTo(0.5, 4.0, 40.0);
    const LapPointer lap = reader.lap(kOwnCar);
    reader.processLap(kOwnCar, false);
    EXPECT_EQ(samplesOf(lap, "energybatterytomgu_klap"), QList<double>({1.0, 2.0, 4.0}));
    EXPECT_EQ(samplesOf(lap, "energymgu_klapdeploypct"), QList<double>({1.0, 2.0, 4.0}));
    EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime"), QList<double>({10.0, 20.0, 40.0}));
    EXPECT_EQ(samplesOf(lap, "energyother"), QList<double>({7.0, 2.0, 4.0}));
}

TEST_F(Completion, DropsTheRunningLapTimeOnRequestOnlyInAReplay) {
    drive.publishSession();
    const LapPointer lap = reader.lap(kLaterCar);
    record(lap, "lapcurrentlaptime", {1.0});
    record(lap, "speed", {1.0});
    reader.cleanupLap(kLaterCar);
    EXPECT_TRUE(lap->containsRecordedChannel("lapcurrentlaptime"));
    reader.initialize();
    reader.cleanupLap(kLaterCar);
    EXPECT_TRUE(lap->containsRecordedChannel("lapcurrentlaptime")) << "not yet known";
    drive.session.simMode = "replay";
    drive.publishSession();
    reader.cleanupLap(kLaterCar);
    EXPECT_FALSE(lap->containsRecordedChannel("lapcurrentlaptime"));
    EXPECT_TRUE(lap->containsRecordedChannel("speed"));
    reader.cleanupLap(kLaterCar);
}

TEST_F(Completion, ClosesTheOwnLapOnRequest) {
    drive.publishSession().leavePits().driveOwnToLine();
    const LapPointer lap = reader.myLap();
    reader.processMyLap(false);
    EXPECT_TRUE(reader.isMyLapReady());
    EXPECT_EQ(reader.myLap(), lap);
    EXPECT_EQ(lap->carId(), "3");
    EXPECT_FALSE(lap->completed());
    reader.processMyLap(true);
    EXPECT_TRUE(lap->completed());
    EXPECT_FALSE(reader.isLapReady(kLaterCar));
}

TEST_F(Completion, ClosesEveryOpenLapAsADisconnectionDoes) {
    drive.publishSession().leavePits();
    drive.putOther(kLaterCar, 0.5).driveOwnToLine();
    const LapPointer own = reader.lap(kOwnCar);
    const LapPointer other = reader.lap(kLaterCar);
    static_cast<void>(reader.closeOpenLaps());
    for (int slot = 0; slot < 64; ++slot) {
        EXPECT_TRUE(reader.isLapReady(slot));
    }
    EXPECT_FALSE(own->completed());
    EXPECT_EQ(lapTimeOf(own), 3599000);
    EXPECT_EQ(lapTimeOf(other), 3599000);
    EXPECT_EQ(own->lapType(), LapType::OutLap);
}

TEST_F(Completion, DoesNotChangeALapThatWasHandedOver) {
    drive.publishSession().leavePits().driveOwnLap(88.0);
    drive.driveOwnLap(88.0);
    const LapPointer handedOver = reader.lap(kOwnCar);
    ASSERT_TRUE(reader.isLapReady(kOwnCar));

    static_cast<void>(reader.closeOpenLaps());

    EXPECT_NE(reader.lap(kOwnCar), handedOver);
    EXPECT_TRUE(reader.lap(kOwnCar)->isEmpty());
    EXPECT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_TRUE(handedOver->completed());
    EXPECT_EQ(lapTimeOf(handedOver), 88000);
}

TEST_F(Completion, MarksALapReadyUntilTheNextTickBegins) {
    drive.publishSession().leavePits().driveOwnLap(88.0);
    EXPECT_TRUE(reader.isLapReady(kOwnCar));
    EXPECT_TRUE(reader.isLapReady(kOwnCar)) << "asking changes nothing";
    const LapPointer lap = reader.lap(kOwnCar);
    reader.prepareTick();
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
    EXPECT_NE(reader.lap(kOwnCar), lap);
    EXPECT_TRUE(lap->completed()) << "a holder keeps the lap";
}

TEST_F(Normalizing, DoesNotChangeARisingChannel) {
    EXPECT_EQ(normalized({1.0, 2.0, 3.0}, {0.1, 0.2, 0.3}), QList<double>({1.0, 2.0, 3.0}));
    EXPECT_EQ(normalized({2.0, 2.0, 2.0}, {0.1, 0.2, 0.3}), QList<double>({2.0, 2.0, 2.0}));
    EXPECT_EQ(normalized({-3.0, -2.0, -1.0}, {0.1, 0.2, 0.3}), QList<double>({-3.0, -2.0, -1.0}));
}

TEST_F(Normalizing, ReplacesReadingsOfTheLapBefore) {
    EXPECT_EQ(normalized({9.0, 8.0, 3.0, 4.0}, {0.125, 0.25, 0.375, 0.5}),
              QList<double>({1.0, 2.0, 3.0, 4.0}));
}

TEST_F(Normalizing, ReplacesZeros) {
    EXPECT_EQ(normalized({0.0, 1e-12, -1e-12, 4.0, 5.0}, {0.125, 0.25, 0.375, 0.5, 0.625}),
              QList<double>({1.0, 2.0, 3.0, 4.0, 5.0}));
    EXPECT_EQ(normalized({1.1e-12, 4.0}, {0.25, 0.5}), QList<double>({1.1e-12, 4.0}));
}

TEST_F(Normalizing, KeepsTheFirstGoodReadingAsTheReference) {
    // The second entry is below the repaired third; the first is repaired from the fourth.
    EXPECT_EQ(normalized({9.0, 1.5, 8.0, 4.0}, {0.125, 0.25, 0.375, 0.5}),
              QList<double>({1.0, 1.5, 3.0, 4.0}));
}

TEST_F(Normalizing, ComparesWithTheRepairedNeighbour) {
    // 2.5 is below 8 but above the 2 that replaces it.
    EXPECT_EQ(normalized({2.5, 8.0, 3.0}, {0.125, 0.25, 0.375}), QList<double>({1.0, 2.0, 3.0}));
}

TEST_F(Normalizing, RepairsAFallInMidLapBackToItsBeginning) {
    EXPECT_EQ(normalized({1.0, 2.0, 9.0, 4.0}, {0.125, 0.25, 0.375, 0.5}),
              QList<double>({1.0, 2.0, 3.0, 4.0}));
}

TEST_F(Normalizing, StopsWhenTheFirstGoodReadingIsZero) {
    EXPECT_EQ(normalized({9.0, 8.0, 0.0}, {0.1, 0.2, 0.3}), QList<double>({9.0, 8.0, 0.0}));
    EXPECT_EQ(normalized({9.0, 0.0, 1e-12}, {0.1, 0.2, 0.3}), QList<double>({9.0, 0.0, 1e-12}));
    EXPECT_EQ(normalized({0.0, 0.0, 0.0}, {0.1, 0.2, 0.3}), QList<double>({0.0, 0.0, 0.0}));
    EXPECT_EQ(normalized({9.0, 8.0, -1e-13}, {0.1, 0.2, 0.3}), QList<double>({9.0, 8.0, -1e-13}))
        << "stops even at a negative reference, which would be replaced";
    EXPECT_EQ(normalized({4.0, 1.1e-12}, {0.25, 0.5}), QList<double>({0.55e-12, 1.1e-12}));
}

TEST_F(Normalizing, TakesAnotherReferenceAfterANegativeOne) {
    // The last entry is the reference for the third. Because it is negative, the second replaces it
    // when the first is repaired.
    EXPECT_EQ(normalized({9.0, -16.0, 5.0, -4.0}, {0.125, 0.25, 0.375, 0.5}),
              QList<double>({-8.0, -16.0, -3.0, -4.0}));
}

TEST_F(Normalizing, DoesNotChangeChannelsTooShortToCompare) {
    EXPECT_EQ(normalized({0.0}, {0.1}), QList<double>({0.0}));
    EXPECT_EQ(normalized({}, {}), QList<double>());
    EXPECT_EQ(normalized({}, {0.1}), QList<double>());
    EXPECT_EQ(normalized({9.0, 1.0}, {}), QList<double>({9.0, 1.0}));
    EXPECT_EQ(normalized({0.0}, {}), QList<double>({0.0}));
}

TEST_F(Normalizing, WorksOnAChannelShorterThanTheDistance) {
    EXPECT_EQ(normalized({9.0, 2.0}, {0.125, 0.25, 0.375}), QList<double>({1.0, 2.0}));
}

TEST_F(Normalizing, DoesNotChangeEntriesBeyondTheDistance) {
    EXPECT_EQ(normalized({9.0, 2.0, 8.0, 7.0, 0.0}, {0.125, 0.25}).mid(2),
              QList<double>({8.0, 7.0, 0.0}));
    EXPECT_EQ(normalized({9.0, 2.0, 3.0, 4.0}, {0.125, 0.25}), QList<double>({1.0, 2.0, 3.0, 4.0}));
}

TEST_F(Normalizing, NeedsBothChannels) {
    const LapPointer lap = drive.reader.lap(kLaterCar);
    record(lap, "energy", {9.0, 2.0});
    drive.reader.normalizeChannelBeginning(kLaterCar, "energy");
    EXPECT_EQ(samplesOf(lap, "energy"), QList<double>({9.0, 2.0}));
    lap->removeChannel("energy");
    record(lap, "lapdistpct", {0.1, 0.2});
    drive.reader.normalizeChannelBeginning(kLaterCar, "energy");
    EXPECT_EQ(lap->getAvailableRecordedChannels(), QStringList({"lapdistpct"}));
}

TEST_F(Normalizing, DividesByADistanceOfZero) {
    const QList<double> samples = normalized({9.0, 2.0}, {0.5, 0.0});
    EXPECT_EQ(samples[0], std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(normalized({9.0, 2.0}, {0.0, 0.0})[0]));
}

TEST_F(Normalizing, SurvivesNaNAndInfinities) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(normalized({nan, infinite, -infinite, 1e25, 1.0}, {0.1, nan, 0.3, 0.4, 0.5}).size(),
              5);
    EXPECT_EQ(normalized({infinite, nan, nan}, {nan, nan, infinite}).size(), 3);
}
