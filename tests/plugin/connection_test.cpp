#include "tests/plugin/plugintest.h"
#include "tests/support/scarcememory.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstring>
#include <limits>
#include <ostream>
#include <string>

using namespace Qt::StringLiterals;
using TLM::SDK::CarInfo;
using TLM::SDK::CarStatus;
using TLM::SDK::Lap;
using TLM::SDK::LivePluginInfo;

namespace {

using Uninitialized = PluginTest;
using Connection = InitializedPluginTest;
using EndOfConnection = ConnectedPluginTest;
using Reconnection = ConnectedPluginTest;

const QStringList kRefused{u"NotConnected"_s};
const QStringList kUnavailable{u"ConnectivityAvailable false"_s};
const QStringList kAvailable{u"ConnectivityAvailable true"_s};

const StagedSession kRenamed{.drivers = {{StagedSimulator::kFastCar, "Renamed Driver"}}};

// Distances by which a test sees whether a replay or a live session was sampled.
constexpr double kOfTheOwnCar = 0.25;
constexpr double kOfTheCarArray = 0.75;

}  // namespace

// --- Before initialize() -----------------------------------------------------------------------

TEST_F(Uninitialized, HasNoTimerAndIsNotConnected) {
    EXPECT_TRUE(plugin->findChildren<QTimer*>().isEmpty());
    EXPECT_FALSE(plugin->isConnected());
}

TEST_F(Uninitialized, RefusesToConnectEvenIfTheSimulatorRuns) {
    simulator.publish();
    connectWhileRunning();
    EXPECT_EQ(host.heard(), kRefused);
    EXPECT_FALSE(plugin->isConnected());
}

TEST_F(Uninitialized, FindsNothingAvailableEvenIfTheSimulatorRuns) {
    simulator.publish();
    simulator.run();
    plugin->checkConnectionAvailability();
    simulator.stop();
    EXPECT_EQ(host.heard(), kUnavailable);
}

TEST_F(Uninitialized, IgnoresADisconnection) {
    plugin->disconnectFromSource();
    EXPECT_EQ(host.heard(), QStringList());
}

TEST_F(Uninitialized, IgnoresItsSlots) {
    simulator.publish();
    plugin->tick();
    plugin->updateCarList();
    EXPECT_EQ(host.heard(), QStringList());
}

TEST_F(Uninitialized, OpensNothing) {
    simulator.publish();
    const OpenObjects before = OpenObjects::now();
    connectAndProbe();
    plugin->tick();
    EXPECT_EQ(OpenObjects::now(), before);
}

// --- initialize() ------------------------------------------------------------------------------

TEST_F(Connection, StartsWithATimerOfTenMillisecondsThatDoesNotRun) {
    ASSERT_NE(timer(), nullptr);
    EXPECT_EQ(timer()->interval(), 10);
    EXPECT_FALSE(timer()->isSingleShot());
    EXPECT_FALSE(timer()->isActive());
    EXPECT_EQ(timer()->parent(), plugin.data());
}

// --- No simulator, or one without data ---------------------------------------------------------

struct NoSource {
    const char* name;
    void (*publish)(StagedSimulator& simulator);
};

void PrintTo(const NoSource& source, std::ostream* out) {
    *out << source.name;
}

const NoSource kNoSources[] = {
    {"Nothing", [](StagedSimulator&) {}},
    {"ABlockWithoutAnEvent",
     [](StagedSimulator& simulator) { simulator.publisher.publishBlock(simulator.block); }},
    {"AnEventWithoutABlock", [](StagedSimulator& simulator) { simulator.publisher.createEvent(); }},
    {"ABlockTooSmallForItsHeader",
     [](StagedSimulator& simulator) {
         simulator.publisher.command("empty 60");
         simulator.publisher.createEvent();
     }},
    {"ABlockOfZeros",
     [](StagedSimulator& simulator) {
         simulator.publisher.command("empty 65536");
         simulator.publisher.createEvent();
     }},
};

class WithoutASource : public PluginTest, public ::testing::WithParamInterface<NoSource> {};

TEST_P(WithoutASource, RefusesAndLeavesNothingOpen) {
    initialize();
    GetParam().publish(simulator);
    const OpenObjects before = OpenObjects::now();
    connectAndProbe();
    EXPECT_EQ(host.heard(), kRefused + kUnavailable);
    EXPECT_FALSE(plugin->isConnected());
    EXPECT_FALSE(timer()->isActive());
    EXPECT_EQ(OpenObjects::now(), before);
}

INSTANTIATE_TEST_SUITE_P(Plugin, WithoutASource, ::testing::ValuesIn(kNoSources),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Connection, RefusesABlockWithoutFreshDataAfterAWait) {
    constexpr qint64 kAlmostTheWait = 190;  // of 200 ms; clocks differ a little
    simulator.nextTick();
    QElapsedTimer time;
    time.start();
    plugin->connectToSource();
    EXPECT_GE(time.elapsed(), kAlmostTheWait);
    EXPECT_EQ(host.heard(), kRefused);
    EXPECT_FALSE(plugin->isConnected());
}

TEST_F(Connection, FindsABlockWithoutFreshDataUnavailable) {
    simulator.nextTick();
    plugin->checkConnectionAvailability();
    EXPECT_EQ(host.heard(), kUnavailable);
}

TEST_F(Connection, RefusesASimulatorThatSaysItIsStopped) {
    simulator.publisher.setStatus(2);  // other bits mean nothing
    simulator.run();
    connectAndProbe();
    simulator.stop();
    EXPECT_EQ(host.heard(), kRefused + kUnavailable);
}

TEST_F(Connection, RefusesWhatACrashedSimulatorLeftBehind) {
    simulator.nextTick();
    simulator.crash();
    connectAndProbe();
    EXPECT_EQ(host.heard(), kRefused + kUnavailable);
}

TEST_F(Connection, LeavesNothingOpenAfterARefusal) {
    const OpenObjects before = OpenObjects::now();
    connectAndProbe();
    EXPECT_EQ(host.heard(), kRefused + kUnavailable);
    EXPECT_EQ(OpenObjects::now(), before);
}

TEST_F(Connection, SucceedsWhenTheSimulatorCameAfterARefusal) {
    plugin->connectToSource();
    ASSERT_EQ(host.heard(), kRefused);
    connectWhileRunning();
    EXPECT_EQ(host.events(), kRefused + connecting);
}

TEST_F(Connection, RefusesASimulatorWhoseSnapshotsNeedTooMuchMemory) {
    constexpr int kBufferLength = 200'000;
    constexpr std::size_t kScarce = 100'000;
    simulator.layOut(kBufferLength);
    simulator.publisher.command("unlink");
    simulator.publish();
    simulator.run();
    {
        const testsupport::ScarceMemory memory(kScarce);
        connectAndProbe();
    }
    simulator.stop();
    EXPECT_EQ(host.heard(), kRefused + kUnavailable);
    EXPECT_FALSE(plugin->isConnected());

    host.forget();
    connectWhileRunning();
    EXPECT_EQ(host.events(), connecting);
}

class WrongBufferLength : public InitializedPluginTest,
                          public ::testing::WithParamInterface<int> {};

TEST_P(WrongBufferLength, IsABlockWithoutData) {
    simulator.run();
    simulator.publisher.poke(offsetof(irsdk_header, bufferLength), GetParam());
    connectAndProbe();
    simulator.stop();
    EXPECT_EQ(host.heard(), kRefused + kUnavailable);
    EXPECT_FALSE(plugin->isConnected());
}

TEST_P(WrongBufferLength, DoesNotMatterOnceItIsCorrected) {
    const int length = simulator.block.header().bufferLength;
    simulator.publisher.poke(offsetof(irsdk_header, bufferLength), GetParam());
    plugin->connectToSource();
    simulator.publisher.poke(offsetof(irsdk_header, bufferLength), length);
    connectWhileRunning();
    EXPECT_EQ(host.events(), kRefused + connecting);
}

INSTANTIATE_TEST_SUITE_P(Connection, WrongBufferLength,
                         ::testing::Values(0, -1, std::numeric_limits<int>::min(), 1'000'000,
                                           std::numeric_limits<int>::max()));

// --- Connecting --------------------------------------------------------------------------------

TEST_F(Connection, SendsConnectedThenTheCarListThenAMessage) {
    connectWhileRunning();
    EXPECT_EQ(host.heard(), (QStringList{u"Connected"_s, u"CarListChanged 64"_s,
                                         u"Message [iRacing plugin] Connected (0)"_s}));
    EXPECT_TRUE(plugin->isConnected());
    EXPECT_TRUE(timer()->isActive());
}

TEST_F(Connection, NamesTheCarsOfTheSession) {
    connectWhileRunning();
    const LivePluginInfo info = host.lastCarList();
    EXPECT_EQ(info.pluginName(), u"iR Plugin"_s);
    EXPECT_EQ(info.sourceName(), u"iRacing"_s);
    ASSERT_EQ(info.cars.size(), 64);
    const CarInfo& fast = info.cars[kFastCar];
    EXPECT_EQ(fast.carId(), u"5"_s);
    EXPECT_EQ(fast.driverName(), u"Fast Driver"_s);
    EXPECT_EQ(fast.teamName(), u"Fast Driver Team"_s);
    EXPECT_EQ(fast.carName(), u"Roadster"_s);
    EXPECT_EQ(fast.className(), u"RDS"_s);
    EXPECT_EQ(fast.status(), CarStatus::Undefined);
    EXPECT_TRUE(fast.source().isEmpty());
    EXPECT_TRUE(fast.trackName().isEmpty());
    for (int i = 0; i < info.cars.size(); ++i) {
        EXPECT_EQ(info.cars[i].carId(), QString::number(i));
        EXPECT_EQ(info.cars[i].detailedTelemetry(), i == kOwnCar) << i;
    }
    EXPECT_TRUE(info.cars[0].driverName().isEmpty());
}

TEST_F(Connection, NeedsNoSessionText) {
    simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset), -1);
    connectWhileRunning();
    EXPECT_EQ(host.heard(), connecting);
    tick();
    EXPECT_EQ(host.samples.size(), 1);
}

TEST_F(Connection, ReadsASessionThatWasOutsideTheBlockOnceItsCounterChanges) {
    simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset), -1);
    connectWhileRunning();
    tick();
    host.forget();
    simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset),
                             simulator.block.header().sessionInfoOffset);
    tick();
    EXPECT_EQ(host.heard(), QStringList{u"Samples 64"_s});
    host.forget();
    simulator.setSessionUpdate(1000);
    tick();
    EXPECT_EQ(host.heard(), (QStringList{u"CarListChanged 64"_s, u"Samples 64"_s}));
    EXPECT_EQ(driverName(kFastCar), u"Fast Driver"_s);
}

TEST_F(Connection, SendsNoCarListWhenTheSessionHasNoDrivers) {
    StagedSession empty;
    empty.drivers.clear();
    simulator.rewriteSession(empty);
    connectWhileRunning();
    EXPECT_EQ(host.heard(), connecting);
}

TEST_F(Connection, IgnoresASecondCall) {
    connectWhileRunning();
    host.forget();
    connectWhileRunning();
    EXPECT_EQ(host.heard(), QStringList());
    EXPECT_TRUE(plugin->isConnected());
    EXPECT_TRUE(timer()->isActive());
}

TEST_F(Connection, TicksByItsTimer) {
    simulator.run();
    plugin->connectToSource();
    EXPECT_TRUE(QTest::qWaitFor([this] { return host.samples.size() >= 5; }, 20000));
    simulator.stop();
}

// --- Probing -----------------------------------------------------------------------------------

TEST_F(Connection, IsFoundAvailableWithoutBeingOpened) {
    const OpenObjects before = OpenObjects::now();
    simulator.run();
    plugin->checkConnectionAvailability();
    simulator.stop();
    EXPECT_EQ(host.heard(), kAvailable);
    EXPECT_FALSE(plugin->isConnected());
    EXPECT_FALSE(timer()->isActive());
    EXPECT_EQ(OpenObjects::now(), before);
}

TEST_F(Connection, CanBeMadeAfterItWasFoundAvailable) {
    simulator.run();
    plugin->checkConnectionAvailability();
    plugin->checkConnectionAvailability();
    plugin->connectToSource();
    simulator.stop();
    EXPECT_EQ(host.events(), kAvailable + kAvailable + connecting);
}

TEST_F(EndOfConnection, IsNotCausedByAProbeWhichSendsNothing) {
    plugin->checkConnectionAvailability();
    EXPECT_EQ(host.heard(), QStringList());
    EXPECT_TRUE(plugin->isConnected());
    tick();
    EXPECT_EQ(host.samples.size(), 1);
}

// --- Disconnecting -----------------------------------------------------------------------------

TEST_F(Connection, CannotBeEndedBeforeItIsMade) {
    plugin->disconnectFromSource();
    EXPECT_EQ(host.heard(), QStringList());
}

TEST_F(EndOfConnection, SendsASignalAndThenAMessage) {
    plugin->disconnectFromSource();
    EXPECT_EQ(host.heard(), disconnecting);
    EXPECT_FALSE(plugin->isConnected());
    EXPECT_FALSE(timer()->isActive());
}

TEST_F(EndOfConnection, IsReportedOnce) {
    plugin->disconnectFromSource();
    plugin->disconnectFromSource();
    EXPECT_EQ(host.heard(), disconnecting);
}

TEST_F(EndOfConnection, StopsTheTicks) {
    plugin->disconnectFromSource();
    host.forget();
    simulator.run();
    QTest::qWait(100);
    plugin->tick();
    simulator.stop();
    EXPECT_EQ(host.heard(), QStringList());
}

TEST_F(EndOfConnection, ClosesTheLink) {
    plugin->disconnectFromSource();
    const OpenObjects closed = OpenObjects::now();
    EXPECT_EQ(closed.simulatorMaps, 0);
    connectAndTick();
    EXPECT_NE(OpenObjects::now(), closed);
    plugin->disconnectFromSource();
    EXPECT_EQ(OpenObjects::now(), closed);
}

TEST_F(EndOfConnection, NeverHandsOverAnOpenLap) {
    for (int i = 0; i < 5; ++i) {
        tick();
    }
    plugin->disconnectFromSource();
    EXPECT_TRUE(host.telemetryLaps.isEmpty());
    connectAndTick();
    tick();
    EXPECT_TRUE(host.telemetryLaps.isEmpty());
}

TEST_F(EndOfConnection, ClosesEveryCarsLapSoThatTheNextOneBeginsWithTheNextConnection) {
    constexpr int kTicksAfterwards = 3;
    for (int i = 0; i < 10; ++i) {
        tick();
    }
    plugin->disconnectFromSource();
    connectAndTick();
    for (int i = 1; i < kTicksAfterwards; ++i) {
        tick();
    }
    for (const int car : {kOwnCar, kFastCar, kSlowCar}) {
        simulator.crossLine(car);
    }
    tick();
    ASSERT_EQ(host.laps().size(), 3);
    for (const auto& lap : host.laps()) {
        EXPECT_EQ(lap->size(), kTicksAfterwards) << lap->carId().toStdString();
    }
}

TEST_F(EndOfConnection, ClosesTheLapsBeforeTheHostIsTold) {
    constexpr int kTicksInTheSlot = 2;
    constexpr int kTicksAfterwards = 3;
    host.reactTo(u"Disconnected"_s, [this] {
        connectWhileRunning();
        for (int i = 0; i < kTicksInTheSlot; ++i) {
            tick();
        }
    });
    plugin->disconnectFromSource();
    ASSERT_TRUE(plugin->isConnected());
    for (int i = 0; i < kTicksAfterwards; ++i) {
        tick();
    }
    simulator.crossLine(kFastCar);
    tick();
    ASSERT_EQ(host.laps().size(), 1);
    EXPECT_EQ(host.laps().first()->size(), kTicksInTheSlot + kTicksAfterwards)
        << "a lap of the connection that the slot began";
}

TEST_F(EndOfConnection, DoesNotChangeTheLapsOfTheLastTick) {
    for (int lap = 0; lap < 2; ++lap) {
        for (int i = 0; i < 5; ++i) {
            tick();
        }
        simulator.crossLine(kFastCar);
        tick();
    }
    ASSERT_EQ(host.laps().size(), 2);
    const QSharedPointer<Lap> lap = host.laps().last();
    ASSERT_TRUE(lap->completed());
    const QTime time = lap->lapTime();
    const Lap::ChannelMap channels = lap->channels();
    QList<QList<double>> samples;
    for (const auto& channel : channels) {
        samples.append(channel->samples);
    }
    const QDateTime closed = lap->dateTime();
    QTest::qSleep(2);  // closing it again would give another time

    plugin->disconnectFromSource();

    EXPECT_TRUE(lap->completed());
    EXPECT_EQ(lap->lapTime(), time);
    EXPECT_EQ(lap->dateTime(), closed);
    EXPECT_EQ(lap->channels(), channels) << "the same objects";
    qsizetype i = 0;
    for (const auto& channel : channels) {
        EXPECT_EQ(channel->samples, samples[i++]);
    }
}

TEST_F(EndOfConnection, ByDestructionSendsNothingAndClosesTheLink) {
    delete plugin.data();
    EXPECT_EQ(host.heard(), QStringList());
    EXPECT_EQ(OpenObjects::now().simulatorMaps, 0);
}

TEST_F(Connection, LeavesNothingOpenWhenTheConnectedPluginIsDestroyed) {
    const OpenObjects before = OpenObjects::now();
    connectAndTick();
    delete plugin.data();
    EXPECT_EQ(host.heard(), QStringList());
    EXPECT_EQ(OpenObjects::now(), before);
}

TEST_F(Connection, LeavesTheLinkToTheNextPluginWhenAnUnconnectedOneIsDestroyed) {
    connectAndTick();
    delete new iRPluginLive;
    tick();
    EXPECT_EQ(host.samples.size(), 1);
}

// --- A second initialize() ---------------------------------------------------------------------

TEST_F(EndOfConnection, ComesFirstInASecondInitialization) {
    plugin->initialize();
    EXPECT_EQ(host.heard(), disconnecting + QStringList{u"CarListChanged 64"_s});
    EXPECT_FALSE(plugin->isConnected());
    EXPECT_EQ(OpenObjects::now().simulatorMaps, 0);
}

TEST_F(EndOfConnection, ByASecondInitializationLeavesOneStoppedTimer) {
    plugin->initialize();
    ASSERT_NE(timer(), nullptr);
    EXPECT_FALSE(timer()->isActive());
    EXPECT_EQ(timer()->interval(), 10);
}

TEST_F(EndOfConnection, ByASecondInitializationAllowsANewOneWithOneTickPerTimeout) {
    constexpr qsizetype kTicksUntilTheSimulatorIsDown = 101;
    plugin->initialize();
    connectAndTick();
    const QSignalSpy timeouts(timer(), &QTimer::timeout);
    simulator.runWithoutData();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !plugin->isConnected(); }, 20000));
    simulator.stop();
    EXPECT_EQ(timeouts.size(), kTicksUntilTheSimulatorIsDown);
}

TEST_F(Connection, AnnouncesTheNamesItKnowsWhenItIsInitializedAgain) {
    connectAndTick();
    plugin->initialize();
    EXPECT_EQ(driverName(kFastCar), u"Fast Driver"_s);
}

// --- Reconnecting ------------------------------------------------------------------------------

TEST_F(Reconnection, SendsNoCarListWhenNothingChanged) {
    tick();
    plugin->disconnectFromSource();
    host.forget();
    connectWhileRunning();
    EXPECT_EQ(host.heard(), connecting);
}

TEST_F(Reconnection, SendsTheCarListWhenADriverJoinedMeanwhile) {
    plugin->disconnectFromSource();
    StagedSession joined;
    joined.drivers.push_back({11, "Late Driver"});
    simulator.rewriteSession(joined);
    host.forget();
    connectWhileRunning();
    EXPECT_EQ(host.heard(), (QStringList{u"Connected"_s, u"CarListChanged 64"_s,
                                         u"Message [iRacing plugin] Connected (0)"_s}));
    EXPECT_EQ(driverName(11), u"Late Driver"_s);
    EXPECT_EQ(driverName(kFastCar), u"Fast Driver"_s);
}

TEST_F(Connection, ReadsTheSessionAgainInItsFirstTick) {
    connectWhileRunning();
    simulator.overwriteSession(kRenamed);
    host.forget();
    tick();
    EXPECT_EQ(host.heard(), (QStringList{u"CarListChanged 64"_s, u"Samples 64"_s}));
    EXPECT_EQ(driverName(kFastCar), u"Renamed Driver"_s);
}

TEST_F(Reconnection, DoesNotReadTheSessionAgainWhenItsCounterHasNotChanged) {
    tick();
    plugin->disconnectFromSource();
    connectWhileRunning();
    simulator.overwriteSession(kRenamed);
    host.forget();
    tick();
    EXPECT_EQ(host.heard(), QStringList{u"Samples 64"_s});
}

TEST_F(Reconnection, ReadsTheSessionAgainWhenItsCounterHasChanged) {
    tick();
    plugin->disconnectFromSource();
    simulator.setSessionUpdate(1000);
    connectWhileRunning();
    simulator.publisher.setSessionText(1000, kRenamed.text());
    host.forget();
    tick();
    EXPECT_EQ(host.heard(), (QStringList{u"CarListChanged 64"_s, u"Samples 64"_s}));
}

TEST_F(Reconnection, ReadsTheSessionAgainAfterASecondInitialization) {
    plugin->initialize();
    connectWhileRunning();
    simulator.overwriteSession(kRenamed);
    host.forget();
    tick();
    EXPECT_EQ(driverName(kFastCar), u"Renamed Driver"_s);
}

TEST_F(Reconnection, KeepsWhetherTheSessionIsAReplay) {
    StagedSession replay;
    replay.simMode = "replay";
    plugin->initialize();
    simulator.rewriteSession(replay);
    connectAndTick();
    plugin->disconnectFromSource();

    simulator.rewriteSession(StagedSession());
    simulator.block.set("LapDistPct", kOfTheOwnCar);
    simulator.block.set("CarIdxLapDistPct", kOfTheCarArray, kOwnCar);
    connectAndTick();
    tick();
    EXPECT_EQ(value(kOwnCar, u"lapdistpct"_s).toDouble(), kOfTheCarArray);

    plugin->initialize();
    connectAndTick();
    tick();
    EXPECT_EQ(value(kOwnCar, u"lapdistpct"_s).toDouble(), kOfTheOwnCar);
}

TEST_F(Reconnection, IsNotAReplayWithATextOutsideTheBlock) {
    plugin->initialize();
    simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset), -1);
    simulator.block.set("LapDistPct", kOfTheOwnCar);
    simulator.block.set("CarIdxLapDistPct", kOfTheCarArray, kOwnCar);
    connectAndTick();
    tick();
    EXPECT_EQ(value(kOwnCar, u"lapdistpct"_s).toDouble(), kOfTheOwnCar)
        << "the tree still has the weekend of the earlier text";
}

TEST_F(Reconnection, KeepsTheNamesOfTheVariables) {
    constexpr double kSpeed = 61.5;
    plugin->disconnectFromSource();
    simulator.block.set("Speed", kSpeed);
    std::memcpy(simulator.block.variable("Speed").name, "Pace", sizeof "Pace");
    simulator.publisher.publishBlock(simulator.block);
    connectAndTick();
    tick();
    EXPECT_EQ(value(kOwnCar, u"speed"_s).toDouble(), kSpeed);
    EXPECT_FALSE(host.lastSamples()[kOwnCar].containsValue(u"pace"_s));
}

class OtherBufferLength : public ConnectedPluginTest, public ::testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        ConnectedPluginTest::SetUp();
        plugin->disconnectFromSource();
        simulator.layOut(GetParam());
        simulator.publish();
        simulator.block.set("Speed", 61.5);
        host.forget();
    }

    void expectATickWithData() {
        connectAndTick();
        tick();
        EXPECT_EQ(value(kOwnCar, u"speed"_s).toDouble(), 61.5);
        EXPECT_EQ(host.samples.size(), 1);
    }
};

TEST_P(OtherBufferLength, IsUsedByTheNextConnection) {
    expectATickWithData();
}

TEST_P(OtherBufferLength, IsUsedByTheNextProbe) {
    simulator.run();
    plugin->checkConnectionAvailability();
    simulator.stop();
    EXPECT_EQ(host.heard(), kAvailable);
    expectATickWithData();
}

INSTANTIATE_TEST_SUITE_P(Reconnection, OtherBufferLength, ::testing::Values(1000, 4096, 65536));

TEST_F(Reconnection, IsPossibleManyTimesAndLeavesNothingBehind) {
    plugin->disconnectFromSource();
    const OpenObjects before = OpenObjects::now();
    for (int i = 0; i < 20; ++i) {
        connectAndTick();
        tick();
        EXPECT_EQ(host.samples.size(), 1);
        plugin->disconnectFromSource();
        EXPECT_EQ(host.events(), disconnecting);
    }
    EXPECT_EQ(OpenObjects::now(), before);
}

TEST_F(Reconnection, FindsARestartedSimulator) {
    simulator.publisher.command("unlink");
    simulator.publisher.command("unlink event");
    plugin->disconnectFromSource();
    host.forget();
    plugin->connectToSource();
    EXPECT_EQ(host.heard(), kRefused);
    simulator.publish();
    connectWhileRunning();
    EXPECT_EQ(host.events(), kRefused + connecting);
}
