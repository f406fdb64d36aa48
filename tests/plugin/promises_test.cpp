// Promises of this plugin in the comments of sdk/ that no other test checks.
#include "tests/plugin/plugintest.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using TLM::SDK::CarInfo;
using TLM::SDK::CarStatus;
using TLM::SDK::Lap;
using TLM::SDK::LapType;
using TLM::SDK::Sample;

namespace {

using PromisesBefore = PluginTest;

class Promises : public ConnectedPluginTest {
protected:
    /** The next snapshot sees the car there. */
    void driveTo(int car, double lapDistance) {
        simulator.block.set("CarIdxLapDistPct", lapDistance, car);
        tick();
    }

    /** Ends the lap of a car; the lap that the host got. */
    QSharedPointer<Lap> endLap(int car) {
        simulator.crossLine(car);
        tick();
        return host.laps().isEmpty() ? QSharedPointer<Lap>::create() : host.laps().constLast();
    }

    /** The same after one recorded tick. */
    QSharedPointer<Lap> driveLap(int car) {
        tick();
        return endLap(car);
    }
};

class PromisesOfARace : public Promises {
protected:
    void SetUp() override {
        StagedSession race;
        race.type = "Race";
        simulator.block.setSessionText(race.text());
        simulator.block.set("SessionState", kFormation);
        simulator.block.set("CarIdxLapDistPct", kBeginOfFormation, kFastCar);
        Promises::SetUp();
    }

    static constexpr int kFormation = 3;
    static constexpr int kRacing = 4;
    static constexpr double kBeginOfFormation = 0.25;
};

}  // namespace

TEST_F(PromisesBefore, FourSignalsAreNeverSentAndEveryMessageHasLevelZero) {
    plugin->initialize();
    plugin->connectToSource();
    plugin->checkConnectionAvailability();
    simulator.publish();
    connectWhileRunning();
    tick();
    simulator.crossLine(kFastCar);
    tick();
    ticksWithoutData(101);
    ASSERT_FALSE(plugin->isConnected());

    for (const QSignalSpy* spy :
         {&host.connected, &host.disconnected, &host.notConnected, &host.connectivityAvailable,
          &host.telemetryLaps, &host.carLists, &host.samples, &host.messages}) {
        EXPECT_FALSE(spy->isEmpty()) << spy->signal().constData();
    }
    for (const QSignalSpy* spy :
         {&host.telemetryLapHeaders, &host.sample, &host.sessionInfo, &host.progress}) {
        EXPECT_TRUE(spy->isEmpty()) << spy->signal().constData();
    }
    for (const QList<QVariant>& message : host.messages) {
        EXPECT_EQ(message.at(1).toInt(), 0) << message.at(0).toString().toStdString();
    }
}

TEST_F(PromisesBefore, TheOwnCarIsNotKnownBeforeASessionNamesTheDrivers) {
    simulator.block.setSessionText("---\nWeekendInfo:\n SimMode: full\n...\n");
    plugin->initialize();
    simulator.publish();
    connectWhileRunning();
    tick();
    ASSERT_EQ(host.lastCarList().cars.size(), 64);
    ASSERT_EQ(host.lastSamples().size(), 64);
    for (int car = 0; car < 64; ++car) {
        EXPECT_TRUE(host.lastCarList().cars[car].detailedTelemetry()) << car;
        EXPECT_TRUE(host.lastSamples()[car].detailedTelemetry()) << car;
        EXPECT_TRUE(host.lastSamples()[car].carId().isEmpty()) << car;
    }
}

TEST_F(Promises, ASampleOnlyNamesItsSlotAndWhetherItIsTheOwnCars) {
    StagedSession session;
    session.drivers = {{kOwnCar, "Own"}, {kFastCar, "Fast"}, {63, "Last"}};
    simulator.rewriteSession(session);
    tick();
    const QList<CarInfo> cars = host.lastCarList().cars;
    const QList<Sample> samples = host.lastSamples();
    ASSERT_EQ(cars.size(), samples.size());
    for (int slot = 0; slot < samples.size(); ++slot) {
        const Sample& sample = samples[slot];
        EXPECT_EQ(sample.carId(), QString::number(slot));
        EXPECT_EQ(cars[slot].carId(), sample.carId());
        EXPECT_EQ(sample.detailedTelemetry(), slot == kOwnCar) << slot;
        EXPECT_EQ(cars[slot].detailedTelemetry(), sample.detailedTelemetry()) << slot;
        EXPECT_EQ(sample.status(), CarStatus::Undefined) << slot;
        for (const QString& text :
             {sample.trackName(), sample.trackConfig(), sample.source(), sample.carName(),
              sample.className(), sample.driverName(), sample.teamName()}) {
            EXPECT_TRUE(text.isEmpty()) << slot;
        }
    }
    EXPECT_EQ(cars[63].driverName(), u"Last"_s);
}

TEST_F(Promises, ALapKnowsItsCarDriverAndTrackButHasTeamAndClassAmongItsValues) {
    const auto lap = driveLap(kFastCar);
    EXPECT_EQ(lap->carId(), u"5"_s);
    EXPECT_EQ(lap->driverName(), u"Fast Driver"_s);
    EXPECT_EQ(lap->carName(), u"Roadster"_s);
    EXPECT_EQ(lap->trackName(), u"Hill Ring"_s);
    EXPECT_FALSE(lap->detailedTelemetry());
    EXPECT_TRUE(lap->teamName().isEmpty());
    EXPECT_TRUE(lap->className().isEmpty());
    EXPECT_EQ(lap->status(), CarStatus::Undefined);
    EXPECT_EQ(lap->value(u"Team"_s).value.toString(), u"Fast Driver Team"_s);
    EXPECT_EQ(lap->value(u"Class"_s).value.toString(), u"RDS"_s);
}

TEST_F(Promises, ALapWithoutSamplesComesWithoutATimeAndWithoutNames) {
    driveLap(kFastCar);
    const auto lap = endLap(kFastCar);
    ASSERT_EQ(host.laps().size(), 2);
    EXPECT_TRUE(lap->isEmpty());
    EXPECT_TRUE(lap->lapTime().isNull());
    EXPECT_TRUE(lap->carId().isEmpty());
    EXPECT_EQ(lap->pluginName(), u"iR Plugin"_s);
}

TEST_F(Promises, ALapThatThePluginJoinedLateHasTheTimeOfTheWholeLap) {
    constexpr double kLate = 0.75;
    driveLap(kFastCar);
    driveTo(kFastCar, 0.25);
    plugin->disconnectFromSource();
    simulator.block.set("CarIdxLapDistPct", kLate, kFastCar);
    connectAndTick();
    const auto lap = driveLap(kFastCar);
    EXPECT_EQ(lap->lapType(), LapType::FlyingLap);
    EXPECT_EQ(lap->lapTime(), QTime(0, 1, 35, 500));
    EXPECT_EQ(lap->channel(u"lapdistpct"_s)->samples.constFirst(), kLate);
}

TEST_F(Promises, AFractionHasTheUnitPercentInSamplesAndPerUnitInLaps) {
    driveTo(kFastCar, 0.625);
    EXPECT_EQ(host.lastSamples()[kFastCar].value(u"lapdistpct"_s).unit(), u"%"_s);
    const auto lap = endLap(kFastCar);
    EXPECT_EQ(lap->channel(u"lapdistpct"_s)->unit(), u"pu"_s);
    EXPECT_EQ(lap->channel(u"lapdistpct"_s)->samples.constLast(), 0.625);
}

TEST_F(Promises, ACompletedLapOfAnotherCarIsNumberedOneLowerThanOneThatWasCutShort) {
    EXPECT_EQ(driveLap(kFastCar)->lapInSession(), 0) << "an out lap";
    EXPECT_EQ(driveLap(kFastCar)->lapInSession(), 1);
    tick();
    simulator.block.set("CarIdxOnPitRoad", 1, kFastCar);
    tick();
    const auto cutShort = host.laps().constLast();
    ASSERT_FALSE(cutShort->completed());
    EXPECT_EQ(cutShort->lapInSession(), 3);
}

TEST_F(PromisesOfARace, AFormationLapThatIsNotCountedIsSplitBetweenTheFirstTwoLaps) {
    for (const double distance : {0.7, 0.95}) {
        driveTo(kFastCar, distance);
    }
    simulator.block.set("SessionState", kRacing);
    for (const double distance : {0.02, 0.4, 0.6, 0.95}) {
        driveTo(kFastCar, distance);
    }
    const auto first = endLap(kFastCar);
    driveTo(kFastCar, 0.1);
    const auto second = endLap(kFastCar);

    const auto distancesOf = [](const QSharedPointer<Lap>& lap) {
        QList<int> hundredths;
        for (const double distance : lap->channel(u"lapdistpct"_s)->samples) {
            hundredths.append(qRound(distance * 100));
        }
        return hundredths;
    };
    EXPECT_EQ(distancesOf(first), (QList<int>{70, 95, 60, 95}));
    EXPECT_EQ(distancesOf(second), (QList<int>{2, 40, 10}));
}
