#include "sdk/plugininterfacelive.h"
#include "tests/benchmarks/sameresults.h"
#include "tests/plugin/hostrecorder.h"
#include "tests/support/drivenlaps.h"
#include "tests/support/printqt.h"
#include "tests/support/simulatorprocess.h"

#include <QMetaObject>
#include <QPluginLoader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;
using testsupport::DrivenLap;
using testsupport::onShortTrack;
using testsupport::SimulatorProcess;
using TLM::SDK::Lap;
using TLM::SDK::LapType;
using TLM::SDK::PluginInterfaceLive;
using TLM::SDK::Session;

namespace {

using Laps = QList<QSharedPointer<Lap>>;

const QTime kNoLapTime(0, 59, 59);

/** A run of the simulator up to a tick. */
struct SimulatorRun {
    const char* name;
    std::vector<std::string> arguments;
    int lastTick;
    QList<Session> sessions = {};  // of the laps, in their order

    [[nodiscard]] bool isReplay() const {
        return std::find(arguments.begin(), arguments.end(), "--replay") != arguments.end();
    }
};

void PrintTo(const SimulatorRun& run, std::ostream* out) {
    *out << run.name;
}

/** The laps that a host got in a run, and those that were driven. */
struct Recording {
    Laps laps;  // those with samples
    std::vector<DrivenLap> driven;
    QStringList events;  // without samples and car lists

    [[nodiscard]] QList<Session> sessions() const {
        QList<Session> sessions;
        for (const auto& lap : laps) {
            if (sessions.isEmpty() || sessions.last() != lap->session()) {
                sessions.append(lap->session());
            }
        }
        return sessions;
    }
};

/** Connecting needs a tick that comes while it waits. */
bool connectInLockstep(PluginInterfaceLive& plugin, SimulatorProcess& simulator) {
    constexpr int kAttempts = 10;
    // Once the first step is answered, everything is published.
    EXPECT_TRUE(simulator.step().has_value());
    for (int i = 0; i < kAttempts && !plugin.isConnected(); ++i) {
        simulator.goOn();
        plugin.connectToSource();
        simulator.pause();
    }
    return plugin.isConnected();
}

Laps withSamples(const Laps& laps) {
    Laps some;
    std::copy_if(laps.cbegin(), laps.cend(), std::back_inserter(some),
                 [](const auto& lap) { return !lap->isEmpty(); });
    return some;
}

/** Loads the plugin as a host does, lets it take every tick of the run, and unloads it. */
Recording record(const SimulatorRun& run) {
    Recording recording;
    const QTemporaryDir folder;
    const std::string log = folder.filePath(u"laps.log"_s).toStdString();
    SimulatorProcess simulator(testsupport::inLockStep(run.arguments, log));
    QPluginLoader loader(QStringLiteral(PLUGIN_MODULE));
    loader.setLoadHints({});  // by default they keep the library loaded
    std::unique_ptr<QObject> object(loader.instance());
    auto* plugin = qobject_cast<PluginInterfaceLive*>(object.get());
    EXPECT_NE(plugin, nullptr) << loader.errorString().toStdString();
    if (plugin == nullptr) {
        return recording;
    }
    const HostRecorder host(plugin->dataEmitter());
    plugin->initialize();
    EXPECT_TRUE(connectInLockstep(*plugin, simulator));
    // Cars do not move until long after the connection, so its exact tick makes no difference.
    for (auto tick = simulator.step(); tick && *tick < run.lastTick; tick = simulator.step()) {
        QMetaObject::invokeMethod(object.get(), "tick", Qt::DirectConnection);
    }
    EXPECT_TRUE(plugin->isConnected());
    plugin->disconnectFromSource();
    EXPECT_EQ(simulator.quit(), 0);
    recording.laps = withSamples(host.laps());
    const auto driven = testsupport::readDrivenLaps(log);
    EXPECT_TRUE(driven.has_value()) << log;
    recording.driven = driven.value_or(std::vector<DrivenLap>());
    recording.events = host.events();
    // The laps outlive the plugin and its library.
    object.reset();
    EXPECT_TRUE(loader.unload());
    return recording;
}

QList<double> samplesOf(const Lap& lap, const QString& channel) {
    return lap.channels().contains(channel) ? lap.channels()[channel]->samples : QList<double>();
}

int lastTickOf(const Lap& lap) {
    const QList<double> ticks = samplesOf(lap, u"sessiontick"_s);
    return ticks.isEmpty() ? -1 : static_cast<int>(ticks.last());
}

std::string textOf(const DrivenLap& driven) {
    return "car " + std::to_string(driven.car) + ", lap " + std::to_string(driven.lap) + " (" +
           driven.kind + "), ticks " + std::to_string(driven.start) + " to " +
           std::to_string(driven.finish);
}

/** The lap time in milliseconds, as the plugin computes it from the published number. */
QTime publishedTime(const DrivenLap& driven) {
    constexpr float kMillisecondsInASecond = 1000.0F;
    return QTime(0, 0).addMSecs(static_cast<int>(kMillisecondsInASecond * driven.published));
}

class EndToEnd : public ::testing::TestWithParam<SimulatorRun> {
protected:
    EndToEnd() : recording(record(GetParam())) {}

    /** The only lap whose last tick is the one before the driven lap ended. */
    QSharedPointer<Lap> handedOver(const DrivenLap& driven) const {
        // A fast replay skips ticks.
        const int largestStep = GetParam().isReplay() ? 8 : 1;
        Laps found;
        for (const auto& lap : recording.laps) {
            const auto ticksBefore = driven.finish - lastTickOf(*lap);
            if (lap->carId().toInt() == driven.car && ticksBefore >= 1 &&
                ticksBefore <= largestStep) {
                found.append(lap);
            }
        }
        EXPECT_LE(found.size(), 1) << textOf(driven);
        return found.isEmpty() ? QSharedPointer<Lap>() : found.first();
    }

    /**
     * Only the own car's sample has the state of the session, so another car's recording begins on
     * the grid of a race, not at its start.
     */
    static bool beganOnTheGrid(const DrivenLap& driven, const Lap& lap) {
        return lap.session() == Session::Race && !lap.detailedTelemetry() && driven.lap <= 1;
    }

    /** Fast forwarding in an own lap restarts its recording after that part. */
    static bool wasFastForwarded(const DrivenLap& driven, const Lap& lap) {
        constexpr double kFewTicks = 3;
        return GetParam().isReplay() && lap.detailedTelemetry() && driven.kind == "flying" &&
               samplesOf(lap, u"sessiontick"_s).first() >
                   static_cast<double>(driven.start) + kFewTicks;
    }

    static void expectHeader(const DrivenLap& driven, const Lap& lap) {
        EXPECT_EQ(lap.pluginName(), u"iR Plugin"_s);
        EXPECT_EQ(lap.source(), u"iRacing"_s);
        EXPECT_FALSE(lap.driverName().isEmpty());
        EXPECT_EQ(lap.completed(), driven.complete);
        if (wasFastForwarded(driven, lap)) {
            EXPECT_EQ(lap.lapType(), LapType::OutLap);
            EXPECT_EQ(lap.lapTime(), kNoLapTime);
            return;
        }
        const bool isOutLap = driven.kind == "out";
        EXPECT_EQ(lap.lapType(), isOutLap ? LapType::OutLap : LapType::FlyingLap);
        const bool hasTime = driven.complete && driven.seconds > 0.0 &&
                             (!isOutLap || lap.session() == Session::Race);
        EXPECT_EQ(lap.lapTime(), hasTime ? publishedTime(driven) : kNoLapTime);
    }

    static void expectChannels(const DrivenLap& driven, const Lap& lap) {
        for (const auto& [name, channel] : lap.channels().asKeyValueRange()) {
            EXPECT_EQ(channel->samples.size(), lap.size()) << name.toStdString();
        }
        if (beganOnTheGrid(driven, lap)) {
            return;
        }
        const QList<double> distance = samplesOf(lap, u"lapdistpct"_s);
        EXPECT_TRUE(std::is_sorted(distance.cbegin(), distance.cend()));
        const QList<double> ticks = samplesOf(lap, u"sessiontick"_s);
        if (!GetParam().isReplay()) {
            // Only the tick that closed the lap before is not recorded.
            EXPECT_GE(ticks.size(), static_cast<qsizetype>(ticks.last() - ticks.first()));
        }
        const bool beganAtTheFormation = lap.session() == Session::Race && driven.lap == 0;
        if (!wasFastForwarded(driven, lap) && !beganAtTheFormation) {
            constexpr double kTicksUntilALapIsOpen = 2;
            EXPECT_NEAR(ticks.first(), static_cast<double>(driven.start), kTicksUntilALapIsOpen);
        }
    }

    Recording recording;
};

const SimulatorRun kPractice{
    "Practice", onShortTrack(5, {"--seed", "7"}), 3900, {Session::Practice}};

const SimulatorRun kRuns[] = {
    kPractice,
    {"Weekend",
     onShortTrack(3, {"--seed", "7", "--session", "weekend", "--session-length", "20"}),
     6650,
     {Session::Practice, Session::Qualify}},
    {"Race",
     onShortTrack(4, {"--seed", "7", "--session", "race", "--race-laps", "2"}),
     5250,
     {Session::Race}},
    {"Replay", onShortTrack(2, {"--seed", "2", "--replay"}), 6600, {Session::Practice}},
};

}  // namespace

TEST_P(EndToEnd, HandsOverTheLapsThatWereDriven) {
    qsizetype expected = 0;
    for (const DrivenLap& driven : recording.driven) {
        SCOPED_TRACE(textOf(driven));
        const QSharedPointer<Lap> lap = handedOver(driven);
        if (!vanishedBeforeItsResult(driven, recording.driven)) {
            EXPECT_EQ(!lap.isNull(), isHandedOver(driven));
        }
        if (!lap.isNull()) {
            ++expected;
            expectHeader(driven, *lap);
            expectChannels(driven, *lap);
        }
    }
    EXPECT_EQ(recording.laps.size(), expected);
    EXPECT_EQ(recording.sessions(), GetParam().sessions);
    EXPECT_EQ(recording.events.count(u"Disconnected"_s), 1);
}

INSTANTIATE_TEST_SUITE_P(Of, EndToEnd, ::testing::ValuesIn(kRuns),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(EndToEndTwice, HandsOverTheSameLapsForTheSameSeed) {
    SimulatorRun run = kPractice;
    run.lastTick = 2400;
    const Laps first = record(run).laps;
    const Laps second = record(run).laps;
    ASSERT_FALSE(first.isEmpty());
    ASSERT_EQ(first.size(), second.size());
    for (qsizetype i = 0; i < first.size(); ++i) {
        SCOPED_TRACE(first[i]->carId().toStdString());
        EXPECT_TRUE(fastpath::areSameLaps(*first[i], *second[i]));
        EXPECT_EQ(first[i]->getAvailableCalculatedChannels(),
                  second[i]->getAvailableCalculatedChannels());
        EXPECT_NE(first[i]->lapId(), second[i]->lapId());
    }
}
