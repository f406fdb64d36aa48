#include "tests/plugin/hostlog.h"
#include "tests/plugin/plugintest.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTest>

#include <cstddef>
#include <ostream>
#include <string>
#include <tuple>

using namespace Qt::StringLiterals;

// A host calls the plugin from its slots and from its message handler: tests every combination of a
// signal or log line with an action of the slot.

namespace {

class Reentrancy;

/** What a slot does. */
struct Action {
    const char* name;
    void (Reentrancy::*act)();
};

/** The plugin's state when it emits the signal. */
enum class Setting {
    Unconnected,  // there was no connection before
    Connected,    // the recording starts within a connection
    Tick          // the same, and a tick emits the signal
};

/** The signal whose slot acts, or the log line whose handler acts. */
struct Moment {
    const char* name;
    QString entry;  // of the recorder; for a log line "Log" and its first two words
    void (Reentrancy::*provoke)();
    Setting setting;
    QStringList rest;  // the later entries if the slot does nothing, without car lists
};

void PrintTo(const Action& action, std::ostream* out) {
    *out << action.name;
}

void PrintTo(const Moment& moment, std::ostream* out) {
    *out << moment.name;
}

class Reentrancy : public InitializedPluginTest,
                   public ::testing::WithParamInterface<std::tuple<Moment, Action>> {
public:
    // --- Actions ---

    void disconnect() { plugin->disconnectFromSource(); }
    void connect() { plugin->connectToSource(); }
    void probe() { plugin->checkConnectionAvailability(); }
    void initializeAgain() { plugin->initialize(); }
    void callTick() { plugin->tick(); }
    void callUpdateCarList() { plugin->updateCarList(); }

    void reconnect() {
        disconnect();
        connect();
    }

    void disconnectAndProbe() {
        disconnect();
        probe();
    }

    void initializeAndConnect() {
        initializeAgain();
        connect();
    }

    void runEventLoop() { QTest::qWait(kLoopMilliseconds); }

    void runEventLoopThatDisconnects() {
        QTimer::singleShot(0, plugin.data(), &iRPluginLive::disconnectFromSource);
        runEventLoop();
    }

    void runEventLoopThatReconnects() {
        QTimer::singleShot(0, plugin.data(), [this] { reconnect(); });
        runEventLoop();
    }

    void runEventLoopThatDeletes() {
        QTimer::singleShot(0, plugin.data(), &QObject::deleteLater);
        runEventLoop();
    }

    void reconnectAndRunEventLoop() {
        reconnect();
        runEventLoop();
    }

    void deleteSoon() { plugin->deleteLater(); }
    void deleteNow() { delete plugin.data(); }

    // --- Moments ---

    void provokeInitialization() {
        awaitMoment();
        plugin->initialize();
    }

    void provokeConnection() {
        awaitMoment();
        connectWhileRunning();
    }

    void provokeRefusal() {
        awaitMoment();
        plugin->connectToSource();
    }

    void provokeProbe() {
        awaitMoment();
        simulator.run();
        plugin->checkConnectionAvailability();
        simulator.stop();
    }

    void provokeTick() {
        stageTickWithEverything();
        awaitMoment();
        plugin->tick();
    }

    void provokeTickThatRepairsPeaks() {
        stageLapWithAPeak();
        simulator.crossLine(kOwnCar);
        simulator.crossLine(kFastCar);
        simulator.nextTick();
        awaitMoment();
        plugin->tick();
    }

    void provokeDisconnectionThatRepairsPeaks() {
        stageLapWithAPeak();
        awaitMoment();
        plugin->disconnectFromSource();
    }

    void provokeTickThatAbandonsAReplayLap() {
        StagedSession replay;
        replay.simMode = "replay";
        simulator.rewriteSession(replay);
        simulator.block.set("ReplayPlaySpeed", 1);
        connectAndTick();
        tick();
        tick();
        simulator.block.set("ReplayPlaySpeed", 2);
        simulator.nextTick();
        awaitMoment();
        plugin->tick();
    }

    void provokeConnectionToABlockThatIsInvalid() {
        makeBlockInvalid();
        awaitMoment();
        plugin->connectToSource();
    }

    void provokeProbeOfABlockThatIsInvalid() {
        makeBlockInvalid();
        awaitMoment();
        plugin->checkConnectionAvailability();
    }

    void provokeTickByTimer() {
        stageTickWithEverything();
        awaitMoment();
        EXPECT_TRUE(QTest::qWaitFor([this] { return m_hasReacted; }, kPatience));
        // The tick is over when the event loop runs again.
        QCoreApplication::processEvents();
    }

    void provokeDisconnection() {
        connectAndTick();
        awaitMoment();
        plugin->disconnectFromSource();
    }

    void provokeSilence() {
        constexpr int kMissesThatEndAConnection = 101;
        connectAndTick();
        awaitMoment();
        simulator.runWithoutData();
        for (int i = 0; i < kMissesThatEndAConnection && !m_hasReacted; ++i) {
            plugin->tick();
        }
        simulator.stop();
    }

protected:
    static bool isOfTheLog(const QString& entry) { return entry.startsWith("Log "_L1); }

    static QStringList withoutLog(QStringList entries) {
        entries.removeIf(&Reentrancy::isOfTheLog);
        return entries;
    }

    static bool isOfATick(const QString& entry) {
        return entry.startsWith("TelemetryLap"_L1) || entry.startsWith("Samples"_L1);
    }

    static QStringList withoutCarLists(QStringList entries) {
        entries.removeAll(u"CarListChanged 64"_s);
        return entries;
    }

    static const Moment& moment() { return std::get<Moment>(GetParam()); }
    static const Action& action() { return std::get<Action>(GetParam()); }

    template <typename Check>
    void provokeAndCheck(Check check) {
        const OpenObjects before = OpenObjects::now();
        (this->*moment().provoke)();
        ASSERT_TRUE(m_hasReacted) << transcript();
        expectOrder();
        expectNoTickWithinATick();
        check();
        expectUsablePluginOrNone();
        EXPECT_EQ(OpenObjects::now(), before);
    }

    void awaitMoment() {
        host.forget();
        host.reactTo(moment().entry, [this] { react(); });
    }

    /** The simulator runs meanwhile, so that connecting succeeds and a tick would have data. */
    void react() {
        const bool wasStopped = simulator.run();
        m_heardBefore = host.heard().size();
        (this->*action().act)();
        m_heardAfter = host.heard().size();
        m_wasDeleted = plugin.isNull();
        m_hasReacted = true;
        if (wasStopped) {
            simulator.stop();
        }
    }

    [[nodiscard]] QStringList heardDuring() const {
        return host.heard().sliced(m_heardBefore, m_heardAfter - m_heardBefore);
    }
    [[nodiscard]] QStringList heardAfter() const { return host.heard().sliced(m_heardAfter); }

    /** Samples, laps and messages of a connection come between Connected and Disconnected. */
    void expectOrder() const {
        bool open = moment().setting != Setting::Unconnected;
        for (const QString& entry : host.heard()) {
            if (entry == "Connected"_L1) {
                EXPECT_FALSE(open) << transcript();
                open = true;
            } else if (entry == "Disconnected"_L1) {
                EXPECT_TRUE(open) << transcript();
                open = false;
            } else if (isOfATick(entry) || entry.contains("Sim is down"_L1) ||
                       entry.contains("] Connected"_L1)) {
                EXPECT_TRUE(open) << transcript();
            }
        }
    }

    /** No tick runs inside another one. */
    void expectNoTickWithinATick() const {
        for (const QString& entry : heardDuring()) {
            EXPECT_FALSE(moment().setting == Setting::Tick && isOfATick(entry)) << transcript();
        }
    }

    /**
     * The work that emitted the signal continues unless its connection has ended or, if there was
     * none, one has begun. Log lines about what was done before are still written.
     */
    void expectRestOfTheWork() const {
        const bool begun =
            moment().setting == Setting::Unconnected && heardDuring().contains(u"Connected"_s);
        const bool ended = m_wasDeleted || begun || heardDuring().contains(u"Disconnected"_s);
        if (ended) {
            EXPECT_EQ(withoutLog(heardAfter()), QStringList()) << transcript();
        } else {
            EXPECT_EQ(withoutCarLists(heardAfter()), moment().rest) << transcript();
        }
    }

    /** A plugin that was not deleted works as before. */
    void expectUsablePluginOrNone() {
        deleteWhatIsToBeDeleted();
        if (plugin.isNull()) {
            return;
        }
        EXPECT_EQ(timer()->isActive(), plugin->isConnected());
        if (plugin->isConnected()) {
            tick();
            EXPECT_EQ(host.samples.size(), 1) << "over an open link";
        }
        plugin->disconnectFromSource();
        connectAndTick();
        tick();
        EXPECT_EQ(host.samples.size(), 1) << transcript();
        host.forget();
        plugin->disconnectFromSource();
        EXPECT_EQ(host.heard(), disconnecting);
    }

    [[nodiscard]] std::string transcript() const {
        return "heard: " + host.heard().join("; "_L1).toStdString();
    }

    static constexpr int kLoopMilliseconds = 50;
    static constexpr int kPatience = 20000;

    bool m_hasReacted = false;
    bool m_wasDeleted = false;

private:
    /** A deferred deletion sends no signals. */
    void deleteWhatIsToBeDeleted() {
        host.forget();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(host.heard(), QStringList());
    }

    /** A tick that will send the car list, two laps and the samples. */
    void stageTickWithEverything() {
        connectAndTick();
        tick();
        simulator.block.set("CarIdxLapDistPct", -1.0, kSlowCar);
        tick();
        simulator.crossLine(kOwnCar);
        simulator.crossLine(kFastCar);
        simulator.nextTick();
    }

    /** The fast car's lap has one reading of its distance that is too far ahead. */
    void stageLapWithAPeak() {
        constexpr double kStep = 0.00025;  // 60 m/s on this track
        StagedSession session;
        session.trackLength = "4.00 km";
        simulator.rewriteSession(session);
        connectAndTick();
        double distance = 0.5;
        for (const double steps : {1.0, 1.0, 1.0, 1.5, 1.0, 1.0, 1.0}) {
            distance += steps * kStep;
            simulator.block.set("CarIdxLapDistPct", distance, kFastCar);
            tick();
        }
    }

    /** Causes an error that is logged, until the simulator runs. */
    void makeBlockInvalid() { simulator.publisher.poke(offsetof(irsdk_header, bufferLength), 0); }

    qsizetype m_heardBefore = 0;
    qsizetype m_heardAfter = 0;
    HostLog m_log{[this](const QString& text) { host.note(u"Log "_s + text.section(u' ', 0, 1)); }};
};

class ReentrancyByTimer : public Reentrancy {};

const QString kConnectedMessage = u"Message [iRacing plugin] Connected (0)"_s;
const QString kDisconnectedMessage = u"Message [iRacing plugin] Disconnected (0)"_s;

const Moment kMoments[] = {
    {"Initialization",
     u"CarListChanged 64"_s,
     &Reentrancy::provokeInitialization,
     Setting::Unconnected,
     {}},
    {"Connected",
     u"Connected"_s,
     &Reentrancy::provokeConnection,
     Setting::Unconnected,
     {kConnectedMessage}},
    {"CarListOfConnection",
     u"CarListChanged 64"_s,
     &Reentrancy::provokeConnection,
     Setting::Unconnected,
     {kConnectedMessage}},
    {"ConnectedMessage",
     kConnectedMessage,
     &Reentrancy::provokeConnection,
     Setting::Unconnected,
     {}},
    {"NotConnected", u"NotConnected"_s, &Reentrancy::provokeRefusal, Setting::Unconnected, {}},
    {"Available",
     u"ConnectivityAvailable true"_s,
     &Reentrancy::provokeProbe,
     Setting::Unconnected,
     {}},
    {"CarListOfTick",
     u"CarListChanged 64"_s,
     &Reentrancy::provokeTick,
     Setting::Tick,
     {u"TelemetryLap 2"_s, u"TelemetryLap 5"_s, u"Samples 64"_s}},
    {"FirstLapOfTick",
     u"TelemetryLap 2"_s,
     &Reentrancy::provokeTick,
     Setting::Tick,
     {u"TelemetryLap 5"_s, u"Samples 64"_s}},
    {"LastLapOfTick",
     u"TelemetryLap 5"_s,
     &Reentrancy::provokeTick,
     Setting::Tick,
     {u"Samples 64"_s}},
    {"Samples", u"Samples 64"_s, &Reentrancy::provokeTick, Setting::Tick, {}},
    {"SimIsDownMessage",
     u"Message [iRacing plugin] Sim is down (0)"_s,
     &Reentrancy::provokeSilence,
     Setting::Tick,
     {u"Disconnected"_s, kDisconnectedMessage}},
    {"DisconnectedAfterSilence",
     u"Disconnected"_s,
     &Reentrancy::provokeSilence,
     Setting::Tick,
     {kDisconnectedMessage}},
    {"DisconnectedMessageAfterSilence",
     kDisconnectedMessage,
     &Reentrancy::provokeSilence,
     Setting::Tick,
     {}},
    {"Disconnected",
     u"Disconnected"_s,
     &Reentrancy::provokeDisconnection,
     Setting::Connected,
     {kDisconnectedMessage}},
    {"DisconnectedMessage",
     kDisconnectedMessage,
     &Reentrancy::provokeDisconnection,
     Setting::Connected,
     {}},
    {"PeakDetected",
     u"Log peak detected"_s,
     &Reentrancy::provokeTickThatRepairsPeaks,
     Setting::Tick,
     {u"Log peak fixed"_s, u"TelemetryLap 2"_s, u"TelemetryLap 5"_s, u"Samples 64"_s}},
    {"PeakFixed",
     u"Log peak fixed"_s,
     &Reentrancy::provokeTickThatRepairsPeaks,
     Setting::Tick,
     {u"TelemetryLap 2"_s, u"TelemetryLap 5"_s, u"Samples 64"_s}},
    {"PeakDetectedByDisconnection",
     u"Log peak detected"_s,
     &Reentrancy::provokeDisconnectionThatRepairsPeaks,
     Setting::Connected,
     {u"Log peak fixed"_s}},
    {"ReplayLapAborted",
     u"Log Replay lap"_s,
     &Reentrancy::provokeTickThatAbandonsAReplayLap,
     Setting::Tick,
     {u"Samples 64"_s}},
    {"FailureOfConnection",
     u"Log No data"_s,
     &Reentrancy::provokeConnectionToABlockThatIsInvalid,
     Setting::Unconnected,
     {u"NotConnected"_s}},
    {"FailureOfProbe",
     u"Log No data"_s,
     &Reentrancy::provokeProbeOfABlockThatIsInvalid,
     Setting::Unconnected,
     {u"ConnectivityAvailable false"_s}},
    {"FailureThatWasSilence",
     u"Log No data"_s,
     &Reentrancy::provokeSilence,
     Setting::Tick,
     {u"Message [iRacing plugin] Sim is down (0)"_s, u"Disconnected"_s, kDisconnectedMessage}},
};

const Moment kMomentsOfTheTimer[] = {
    {"CarList", u"CarListChanged 64"_s, &Reentrancy::provokeTickByTimer, Setting::Tick, {}},
    {"Lap", u"TelemetryLap 2"_s, &Reentrancy::provokeTickByTimer, Setting::Tick, {}},
    {"Samples", u"Samples 64"_s, &Reentrancy::provokeTickByTimer, Setting::Tick, {}},
};

const Action kActions[] = {
    {"Disconnects", &Reentrancy::disconnect},
    {"Connects", &Reentrancy::connect},
    {"Reconnects", &Reentrancy::reconnect},
    {"Probes", &Reentrancy::probe},
    {"DisconnectsAndProbes", &Reentrancy::disconnectAndProbe},
    {"RunsAnEventLoop", &Reentrancy::runEventLoop},
    {"RunsAnEventLoopThatDisconnects", &Reentrancy::runEventLoopThatDisconnects},
    {"RunsAnEventLoopThatReconnects", &Reentrancy::runEventLoopThatReconnects},
    {"RunsAnEventLoopThatDeletes", &Reentrancy::runEventLoopThatDeletes},
    {"ReconnectsAndRunsAnEventLoop", &Reentrancy::reconnectAndRunEventLoop},
    {"Initializes", &Reentrancy::initializeAgain},
    {"InitializesAndConnects", &Reentrancy::initializeAndConnect},
    {"CallsTick", &Reentrancy::callTick},
    {"CallsUpdateCarList", &Reentrancy::callUpdateCarList},
    {"DeletesLater", &Reentrancy::deleteSoon},
    {"DeletesNow", &Reentrancy::deleteNow},
};

std::string rowName(const ::testing::TestParamInfo<std::tuple<Moment, Action>>& row) {
    return std::string(std::get<Moment>(row.param).name) + "_" + std::get<Action>(row.param).name;
}

}  // namespace

// After initialize() the plugin is not connected, whatever slots have done, and every end of a
// connection was signalled.
TEST_F(ConnectedPluginTest, IsUnconnectedAfterAnInitializationThatItsHostAnsweredByConnecting) {
    simulator.run();
    host.reactTo(u"Disconnected"_s, [this] { plugin->connectToSource(); });
    plugin->initialize();
    simulator.stop();
    const QStringList connections =
        host.heard().filter(QRegularExpression(u"^(Disc|C)onnected$"_s));
    EXPECT_EQ(connections, (QStringList{u"Disconnected"_s, u"Connected"_s, u"Disconnected"_s}));
    EXPECT_FALSE(plugin->isConnected());
    EXPECT_FALSE(timer()->isActive());
    EXPECT_EQ(OpenObjects::now().simulatorMaps, 0);
}

// A host that always reconnects must not cause an endless loop.
TEST_F(ConnectedPluginTest, RefusesAHostThatConnectsAgainAndAgainDuringAnInitialization) {
    simulator.run();
    QObject::connect(plugin->dataEmitter(), &TLM::SDK::DataEmitter::sendDisconnected,
                     [this] { plugin->connectToSource(); });
    plugin->initialize();
    EXPECT_EQ(host.disconnected.size(), 2);
    EXPECT_EQ(host.connected.size(), 1);
    EXPECT_EQ(host.notConnected.size(), 1);
    EXPECT_FALSE(plugin->isConnected());
    plugin->connectToSource();
    EXPECT_TRUE(plugin->isConnected()) << "allowed afterwards";
    simulator.stop();
}

// Laps of such a connection do not continue in the next one.
TEST_F(ConnectedPluginTest, ClosesTheLapsOfAConnectionThatAnInitializationEnds) {
    constexpr int kTicksAfterwards = 3;
    host.reactTo(u"Disconnected"_s, [this] {
        connectWhileRunning();
        for (int i = 0; i < 5; ++i) {
            tick();
        }
    });
    plugin->initialize();
    ASSERT_FALSE(plugin->isConnected());
    ASSERT_GE(host.samples.size(), 5);
    connectAndTick();
    for (int i = 1; i < kTicksAfterwards; ++i) {
        tick();
    }
    simulator.crossLine(kFastCar);
    tick();
    ASSERT_EQ(host.laps().size(), 1);
    EXPECT_EQ(host.laps().first()->size(), kTicksAfterwards);
}

// A slot's argument stays valid until it returns, even if it deletes the plugin.
TEST_F(InitializedPluginTest, GivesACarListThatASlotCanReadAfterDeletingThePlugin) {
    qsizetype cars = 0;
    QObject::connect(plugin->dataEmitter(), &TLM::SDK::DataEmitter::sendCarListChanged,
                     [&](const TLM::SDK::LivePluginInfo& info) {
                         delete plugin.data();
                         cars = info.cars.size();
                     });
    connectWhileRunning();
    EXPECT_EQ(cars, 64);
    EXPECT_TRUE(plugin.isNull());
}

TEST_P(Reentrancy, LeavesThePluginUsable) {
    provokeAndCheck([this] { expectRestOfTheWork(); });
}

INSTANTIATE_TEST_SUITE_P(AnySlot, Reentrancy,
                         ::testing::Combine(::testing::ValuesIn(kMoments),
                                            ::testing::ValuesIn(kActions)),
                         rowName);

// The same with the timer's own signal below the slot on the stack. Further ticks may follow.
TEST_P(ReentrancyByTimer, LeavesThePluginUsable) {
    provokeAndCheck([] {});
}

INSTANTIATE_TEST_SUITE_P(AnySlot, ReentrancyByTimer,
                         ::testing::Combine(::testing::ValuesIn(kMomentsOfTheTimer),
                                            ::testing::ValuesIn(kActions)),
                         rowName);
