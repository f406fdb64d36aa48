#include "tests/plugin/plugintest.h"

#include <QMetaObject>
#include <QTest>

#include <string>

using namespace Qt::StringLiterals;
using TLM::SDK::CarStatus;
using TLM::SDK::LapType;
using TLM::SDK::Sample;
using TLM::SDK::Session;

namespace {

using Tick = ConnectedPluginTest;
using Silence = ConnectedPluginTest;

constexpr int kToleratedMisses = 100;

const QString kSimIsDown = u"Message [iRacing plugin] Sim is down (0)"_s;

}  // namespace

// --- A tick with data --------------------------------------------------------------------------

TEST_F(Tick, SendsOneListOfSixtyFourSamplesInCarOrder) {
    host.forget();
    tick();
    ASSERT_EQ(host.samples.size(), 1);
    const QList<Sample> samples = host.lastSamples();
    ASSERT_EQ(samples.size(), 64);
    for (int i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i].carId(), QString::number(i));
        EXPECT_EQ(samples[i].detailedTelemetry(), i == kOwnCar) << i;
    }
}

TEST_F(Tick, SendsTheValuesOfItsSnapshot) {
    constexpr double kSpeed = 61.5;
    constexpr double kDistance = 0.625;
    simulator.block.set("Speed", kSpeed);
    simulator.block.set("CarIdxLapDistPct", kDistance, kSlowCar);
    tick();
    EXPECT_EQ(value(kOwnCar, u"speed"_s).toDouble(), kSpeed);
    EXPECT_EQ(host.lastSamples()[kOwnCar].value(u"speed"_s).unit(), u"m/s"_s);
    EXPECT_EQ(value(kSlowCar, u"lapdistpct"_s).toDouble(), kDistance);
    EXPECT_FALSE(host.lastSamples()[kSlowCar].containsValue(u"speed"_s));
    EXPECT_EQ(value(kSlowCar, u"sessiontick"_s), value(kOwnCar, u"sessiontick"_s));
}

TEST_F(Tick, TakesNoValueFromPastTheEndOfAShorterSnapshot) {
    constexpr int kFullLength = 4096;
    constexpr double kBefore = 61.5;
    plugin->disconnectFromSource();
    simulator.layOut(kFullLength);
    simulator.publish();
    simulator.block.set("Speed", kBefore);
    connectAndTick();
    tick();
    ASSERT_EQ(value(kOwnCar, u"speed"_s).toDouble(), kBefore);

    // The snapshots become half as long, and the table puts the speed past their end, into zeros.
    constexpr int kPastTheEnd = kFullLength - 64;
    const auto speedEntry =
        static_cast<std::size_t>(simulator.block.header().varHeaderOffset) +
        static_cast<std::size_t>(simulator.block.indexOf("Speed")) * sizeof(irsdk_varHeader);
    simulator.publisher.poke(offsetof(irsdk_header, bufferLength), kFullLength / 2);
    simulator.publisher.poke(speedEntry + offsetof(irsdk_varHeader, offset), kPastTheEnd);
    tick();
    EXPECT_EQ(value(kOwnCar, u"speed"_s).toDouble(), kBefore) << "it has no new value";
}

TEST_F(Tick, IsASlotThatTheMetaObjectCanCall) {
    simulator.nextTick();
    EXPECT_TRUE(QMetaObject::invokeMethod(plugin.data(), "tick", Qt::DirectConnection));
    EXPECT_EQ(host.samples.size(), 1);
}

TEST_F(Tick, TakesASnapshotOnce) {
    tick();
    plugin->tick();
    EXPECT_EQ(host.samples.size(), 1);
}

TEST_F(Tick, TakesTheNewestOfSeveralSnapshots) {
    constexpr double kFirst = 10.5;
    constexpr double kSecond = 20.5;
    simulator.block.set("Speed", kFirst);
    simulator.nextTick();
    simulator.block.set("Speed", kSecond);
    simulator.nextTick();
    plugin->tick();
    plugin->tick();
    EXPECT_EQ(host.samples.size(), 1);
    EXPECT_EQ(value(kOwnCar, u"speed"_s).toDouble(), kSecond);
}

TEST_F(Tick, DoesNotChangeTheListsThatTheHostKeeps) {
    constexpr int keptLists = 10;
    constexpr double kFirstSpeed = 40.0;
    for (int i = 0; i < keptLists; ++i) {
        simulator.block.set("Speed", kFirstSpeed + i);
        tick();
    }
    ASSERT_EQ(host.samples.size(), keptLists);
    for (int i = 0; i < keptLists; ++i) {
        const auto kept = host.samples[i][0].value<QList<Sample>>();
        ASSERT_EQ(kept.size(), 64);
        EXPECT_EQ(kept[kOwnCar].value(u"speed"_s).value.toDouble(), kFirstSpeed + i);
        EXPECT_EQ(kept[kFastCar].value(u"sessiontick"_s).value,
                  kept[kOwnCar].value(u"sessiontick"_s).value);
    }
}

// --- Session text and car list -----------------------------------------------------------------

TEST_F(Tick, SendsTheCarListBeforeTheSamplesWhenADriverJoined) {
    tick();
    host.forget();
    StagedSession joined;
    joined.drivers.push_back({11, "Late Driver"});
    simulator.rewriteSession(joined);
    tick();
    EXPECT_EQ(host.heard(), (QStringList{u"CarListChanged 64"_s, u"Samples 64"_s}));
    EXPECT_EQ(driverName(11), u"Late Driver"_s);
}

TEST_F(Tick, SendsNoCarListWhenTheSessionWasRewrittenWithTheSameDrivers) {
    tick();
    host.forget();
    simulator.rewriteSession(StagedSession());
    tick();
    EXPECT_EQ(host.heard(), QStringList{u"Samples 64"_s});
}

TEST_F(Tick, ReadsTheSessionOnlyWhenItsCounterDiffers) {
    StagedSession renamed;
    renamed.drivers = {{kFastCar, "Renamed Driver"}};
    tick();
    host.forget();
    simulator.overwriteSession(renamed);
    tick();
    EXPECT_EQ(host.heard(), QStringList{u"Samples 64"_s});
    simulator.setSessionUpdate(-7);
    tick();
    EXPECT_EQ(host.count(u"CarListChanged 64"_s), 1);
    EXPECT_EQ(driverName(kFastCar), u"Renamed Driver"_s);
}

TEST_F(Tick, ReadsASessionTextOutsideTheBlockAsAnEmptyOne) {
    StagedSession renamed;
    renamed.drivers = {{kFastCar, "Renamed Driver"}};
    tick();
    host.forget();
    simulator.rewriteSession(renamed);
    simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset), -1);
    tick();
    simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset),
                             simulator.block.header().sessionInfoOffset);
    tick();
    EXPECT_EQ(host.heard(), (QStringList{u"Samples 64"_s, u"Samples 64"_s})) << "it has been read";
    simulator.setSessionUpdate(-7);
    tick();
    EXPECT_EQ(host.count(u"CarListChanged 64"_s), 1);
    EXPECT_EQ(driverName(kFastCar), u"Renamed Driver"_s);
}

TEST_F(Tick, SendsTheCarListAgainInTheTickAfterAStatusChanged) {
    // The first tick of the fixture put three cars on their out laps.
    tick();
    EXPECT_EQ(host.heard(), (QStringList{u"CarListChanged 64"_s, u"Samples 64"_s}));
    const auto cars = host.lastCarList().cars;
    for (const int car : {kOwnCar, kFastCar, kSlowCar}) {
        EXPECT_EQ(cars[car].status(), CarStatus::OutLap) << car;
    }
    EXPECT_EQ(cars[0].status(), CarStatus::Undefined);
    tick();
    EXPECT_EQ(host.count(u"CarListChanged 64"_s), 1);

    simulator.block.set("CarIdxLapDistPct", -1.0, kSlowCar);
    tick();
    EXPECT_EQ(host.count(u"CarListChanged 64"_s), 1);
    tick();
    EXPECT_EQ(host.count(u"CarListChanged 64"_s), 2);
    EXPECT_EQ(host.lastCarList().cars[kSlowCar].status(), CarStatus::NotInWorld);
}

TEST_F(Tick, IsNotNeededForACarListThatTheHostAsksFor) {
    QMetaObject::invokeMethod(plugin.data(), "updateCarList", Qt::DirectConnection);
    EXPECT_EQ(host.heard(), QStringList{u"CarListChanged 64"_s});
    tick();
    host.forget();
    QMetaObject::invokeMethod(plugin.data(), "updateCarList", Qt::DirectConnection);
    EXPECT_EQ(host.heard(), QStringList());
}

// --- Laps --------------------------------------------------------------------------------------

TEST_F(Tick, HandsLapsOverInCarOrderBeforeTheSamples) {
    tick();
    tick();
    host.forget();
    for (const int car : {kSlowCar, kOwnCar, kFastCar}) {
        simulator.crossLine(car);
    }
    tick();
    EXPECT_EQ(host.heard(), (QStringList{u"TelemetryLap 2"_s, u"TelemetryLap 5"_s,
                                         u"TelemetryLap 9"_s, u"Samples 64"_s}));
}

TEST_F(Tick, NamesPluginAndSourceInEveryLap) {
    for (int i = 0; i < 3; ++i) {
        tick();
        tick();
        simulator.crossLine(kOwnCar);
        simulator.crossLine(kFastCar);
        tick();
    }
    ASSERT_EQ(host.laps().size(), 6);
    for (const auto& lap : host.laps()) {
        EXPECT_EQ(lap->pluginName(), u"iR Plugin"_s);
        EXPECT_EQ(lap->source(), u"iRacing"_s);
        EXPECT_TRUE(lap->completed());
    }
}

TEST_F(Tick, HandsALapOverOnce) {
    tick();
    simulator.crossLine(kFastCar);
    tick();
    tick();
    tick();
    EXPECT_EQ(host.telemetryLaps.size(), 1);
}

TEST_F(Tick, HandsOverLapsWithTheirFacts) {
    tick();
    tick();
    simulator.crossLine(kFastCar);
    tick();
    tick();
    tick();
    tick();
    simulator.crossLine(kFastCar);
    tick();
    const auto laps = host.laps();
    ASSERT_EQ(laps.size(), 2);
    EXPECT_EQ(laps[0]->lapType(), LapType::OutLap);
    EXPECT_EQ(laps[0]->lapTime(), QTime(0, 59, 59));
    EXPECT_EQ(laps[1]->lapType(), LapType::FlyingLap);
    EXPECT_EQ(laps[1]->lapTime(), QTime(0, 1, 35, 500));
    EXPECT_EQ(laps[1]->session(), Session::Practice);
    EXPECT_EQ(laps[1]->driverName(), u"Fast Driver"_s);
    EXPECT_EQ(laps[1]->trackName(), u"Hill Ring"_s);
    EXPECT_EQ(laps[1]->size(), 3);
    EXPECT_EQ(laps[1]->stintId(), laps[0]->stintId());
    EXPECT_NE(laps[1]->lapId(), laps[0]->lapId());
}

TEST_F(Tick, HandsOverALapThatWasCutShort) {
    tick();
    tick();
    simulator.block.set("CarIdxOnPitRoad", 1, kFastCar);
    tick();
    ASSERT_EQ(host.laps().size(), 1);
    EXPECT_FALSE(host.laps().first()->completed());
    EXPECT_EQ(host.laps().first()->pluginName(), u"iR Plugin"_s);
    EXPECT_EQ(host.laps().first()->source(), u"iRacing"_s);
}

TEST_F(Tick, SendsSamplesAndLapsOfTheLastCarToo) {
    constexpr int kLastCar = 63;
    StagedSession session;
    session.drivers.push_back({kLastCar, "Last Driver"});
    simulator.rewriteSession(session);
    simulator.block.set("CarIdxLapDistPct", 0.5, kLastCar);
    tick();
    tick();
    simulator.crossLine(kLastCar);
    tick();
    EXPECT_EQ(host.count(u"TelemetryLap 63"_s), 1);
}

// --- Ticks without data ------------------------------------------------------------------------

TEST_F(Silence, IsEndedByTheHundredAndFirstMiss) {
    for (int i = 0; i < kToleratedMisses; ++i) {
        plugin->tick();
    }
    EXPECT_EQ(host.heard(), QStringList());
    EXPECT_TRUE(plugin->isConnected());
    plugin->tick();
    EXPECT_EQ(host.heard(), QStringList{kSimIsDown} + disconnecting);
    EXPECT_FALSE(plugin->isConnected());
    EXPECT_FALSE(timer()->isActive());
    EXPECT_EQ(OpenObjects::now().simulatorMaps, 0);
}

TEST_F(Silence, IsCountedFromZeroAfterOneTickWithData) {
    ticksWithoutData(kToleratedMisses);
    tick();
    host.forget();
    ticksWithoutData(kToleratedMisses);
    EXPECT_EQ(host.heard(), QStringList());
    EXPECT_TRUE(plugin->isConnected());
}

TEST_F(Silence, IsStillCountedInTheFirstTickOfTheNextConnection) {
    ticksWithoutData(kToleratedMisses + 1);
    for (int i = 0; i < 2; ++i) {
        connectWithoutUnreadData();
        host.forget();
        plugin->tick();
        EXPECT_EQ(host.heard(), QStringList{kSimIsDown} + disconnecting);
    }
    connectAndTick();
    ticksWithoutData(2);
    EXPECT_EQ(host.heard(), QStringList());
}

TEST_F(Silence, OfACrashedSimulatorEndsTheConnectionByTheTimer) {
    simulator.crash();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !plugin->isConnected(); }, 20000));
    EXPECT_EQ(host.events(), QStringList{kSimIsDown} + disconnecting);

    host.forget();
    StagedSimulator successor;
    successor.publish();
    successor.run();
    plugin->connectToSource();
    successor.stop();
    EXPECT_EQ(host.events(), connecting);
    plugin->disconnectFromSource();
}

TEST_F(Silence, BeginsWhenTheStatusBitIsCleared) {
    simulator.publisher.setStatus(0);
    for (int i = 0; i < 3; ++i) {
        tick();
    }
    EXPECT_TRUE(host.samples.isEmpty());
    EXPECT_TRUE(plugin->isConnected());

    // The first snapshot afterwards is only a new starting point.
    simulator.publisher.setStatus(irsdk_stConnected);
    tick();
    EXPECT_TRUE(host.samples.isEmpty());
    tick();
    EXPECT_EQ(host.samples.size(), 1);
}

TEST_F(Silence, OfTooLongSnapshotsEndsTheConnectionAndTheNextOneUsesTheirLength) {
    constexpr int kLongLength = 4096;
    constexpr double kSpeed = 61.5;
    plugin->disconnectFromSource();
    simulator.layOut(kLongLength);
    const int shortLength = kLongLength / 2;
    simulator.block.header().bufferLength = shortLength;
    simulator.publish();
    connectAndTick();
    ASSERT_EQ(host.heard(), QStringList());

    simulator.publisher.poke(offsetof(irsdk_header, bufferLength), kLongLength);
    simulator.block.header().bufferLength = kLongLength;
    simulator.run();
    for (int i = 0; i < kToleratedMisses; ++i) {
        plugin->tick();
    }
    EXPECT_EQ(host.heard(), QStringList());
    plugin->tick();
    simulator.stop();
    EXPECT_EQ(host.heard(), QStringList{kSimIsDown} + disconnecting);

    simulator.block.set("Speed", kSpeed);
    connectAndTick();
    tick();
    EXPECT_EQ(value(kOwnCar, u"speed"_s).toDouble(), kSpeed);
}

TEST_F(Silence, IsNotCausedByATableOutsideTheBlock) {
    simulator.publisher.poke(offsetof(irsdk_header, varHeaderOffset), -1);
    tick();
    EXPECT_EQ(host.samples.size(), 1);
    EXPECT_EQ(host.lastSamples().size(), 64);
}

/** Without variables, the other cars get an empty session clock. */
using BlockWithoutVariables = InitializedPluginTest;

TEST_F(BlockWithoutVariables, GivesTheSameSamplesFromTheFirstTickOnAsLater) {
    const QString tickKey = u"sessiontick"_s;
    simulator.publisher.poke(offsetof(irsdk_header, numVars), 0);
    connectWhileRunning();
    for (int i = 0; i < 2; ++i) {
        tick();
        ASSERT_EQ(host.samples.size(), i + 1);
        EXPECT_EQ(value(kFastCar, tickKey), QVariant(0ULL));
        EXPECT_EQ(host.lastSamples()[kFastCar].data().size(), 3);
        EXPECT_TRUE(host.lastSamples()[kOwnCar].data().isEmpty());
    }
}
