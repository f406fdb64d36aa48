// What a tick costs over a race, from the link's copy to the last signal, with 64 cars recording.

#include "benchmarks/allocations.h"
#include "benchmarks/contest.h"
#include "benchmarks/figures.h"
#include "benchmarks/obvious/plugin.h"
#include "benchmarks/physicalfloor.h"
#include "benchmarks/plot.h"
#include "benchmarks/standin.h"
#include "benchmarks/workload.h"
#include "irsdk/irsdk.h"
#include "plugin/irpluginlive.h"
#include "sdk/dataemitter.h"

#include <QList>
#include <QSharedPointer>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace bench {

namespace {

using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::Sample;

constexpr int kLaps = 10;
constexpr int kTicksPerLap = 5400;
constexpr int kRaceTicks = kLaps * kTicksPerLap;
constexpr int kRaces = 3;

// To save time, the obvious way only runs until the last car has closed its first lap. Its worst
// tick of the whole race can only be worse.
constexpr int kObviousTicks = kTicksPerLap + kTicksPerLap / 10;

// The two ways take turns of this length, over the same ticks of the race.
constexpr int kTurnTicks = 60;

// All cars begin their laps in the first ticks.
constexpr int kStartTicks = 60;

// The simulator rewrites its text at most this often.
constexpr int kTextInterval = 30;

/** Keeps the last list, as a connection queued to another thread does, and the laps of a tick. */
class Host {
public:
    explicit Host(DataEmitter* emitter) {
        QObject::connect(emitter, &DataEmitter::sendSamples, emitter,
                         [this](const QList<Sample>& samples) { m_last = samples; });
        QObject::connect(emitter, &DataEmitter::sendTelemetryLap, emitter,
                         [this](const QSharedPointer<Lap>& lap) { m_laps.append(lap); });
    }

    /** Releases the laps, outside the measured tick; returns their number. */
    int takeLaps() {
        const auto count = static_cast<int>(m_laps.size());
        m_laps.clear();
        return count;
    }

private:
    QList<Sample> m_last;
    QList<QSharedPointer<Lap>> m_laps;
};

/** One way through one race. */
template <typename Plugin>
class Runner {
public:
    Runner() : m_host(m_plugin.dataEmitter()) {}

    void connect() {
        if constexpr (std::is_same_v<Plugin, iRPluginLive>) {
            m_plugin.initialize();
        }
        m_plugin.connectToSource();
    }

    double tick() {
        const AllocationMeter meter;
        const double start = threadSeconds();
        m_plugin.tick();
        const double seconds = threadSeconds() - start;
        m_allocations = meter.count();
        m_lapCount += m_host.takeLaps();
        return seconds;
    }

    [[nodiscard]] std::uint64_t allocations() const { return m_allocations; }
    [[nodiscard]] int lapCount() const { return m_lapCount; }

private:
    Plugin m_plugin;
    Host m_host;
    int m_lapCount = 0;
    std::uint64_t m_allocations = 0;
};

void keepLess(std::vector<double>& best, std::size_t tick, double seconds) {
    best[tick] = std::min(best[tick], seconds);
}

class RaceFigure {
public:
    explicit RaceFigure(std::string plotFile)
        : m_plotFile(std::move(plotFile)), m_workload(kTicksPerLap), m_standIn(m_workload) {
        m_fast.assign(kRaceTicks, 1.0);
        m_obvious.assign(kObviousTicks, 1.0);
    }

    ~RaceFigure() { irsdk_shutdown(); }

    double round() {
        giveBackFreedMemory();
        Runner<iRPluginLive> fast;
        connect(fast);
        double seconds = startTogether(fast);
        for (int tick = kObviousTicks; tick < kRaceTicks; tick += kTurnTicks) {
            seconds += turn(fast, m_fast, tick);
        }
        return seconds;
    }

    void report(Report& report) {
        const double worst = percentile(m_fast, 1.0);
        const double obviousWorst = percentile(m_obvious, 1.0);
        report.add("whole tick, 64 cars recording: times faster than the obvious way",
                   median(m_ratios), atLeast(35.0),
                   timeText(median(m_fast)) + " : " + timeText(median(m_obvious)));
        report.add("whole tick: to its physical floor", median(m_floorRatios), atMost(3.0),
                   timeText(median(m_floor)));
        report.add("whole tick: allocations (median)", median(m_allocations), std::nullopt);
        report.add("worst tick of a 10-lap race: to the obvious way's", worst / obviousWorst,
                   atMost(1.0 / 20.0), timeText(worst) + " : " + timeText(obviousWorst));
        report.add(
            "worst tick: number of the tick", indexOfWorst(m_fast), std::nullopt,
            "the obvious way's: " + std::to_string(static_cast<int>(indexOfWorst(m_obvious))));
        const std::vector<double> later(m_fast.begin() + kStartTicks, m_fast.end());
        report.add(
            "worst tick after the first second: to the obvious way's",
            percentile(later, 1.0) / obviousWorst, std::nullopt,
            timeText(percentile(later, 1.0)) + ", p99 " + timeText(percentile(m_fast, 0.99)));
        if (!m_plotFile.empty()) {
            writePlot(m_plotFile, kTicksPerLap,
                      {{"this plugin", m_fast}, {"the obvious way", m_obvious}});
        }
    }

private:
    static double indexOfWorst(const std::vector<double>& seconds) {
        return static_cast<double>(std::max_element(seconds.begin(), seconds.end()) -
                                   seconds.begin());
    }

    /** The ticks that all ways run, turn by turn. */
    double startTogether(Runner<iRPluginLive>& fast) {
        Runner<obvious::Plugin> obvious;
        PhysicalFloor floor(m_workload, kTicksPerLap);
        connect(obvious);
        double seconds = 0.0;
        for (int tick = 0; tick < kObviousTicks; tick += kTurnTicks) {
            const double fastSeconds = turn(fast, m_fast, tick);
            m_ratios.push_back(turn(obvious, m_obvious, tick) / fastSeconds);
            m_floorRatios.push_back(fastSeconds / floorTurn(floor));
            seconds += fastSeconds;
        }
        if (fast.lapCount() != obvious.lapCount()) {
            std::abort();  // they did not see the same race
        }
        return seconds;
    }

    /** The first look at a newly opened link takes no snapshot; the next one does. */
    template <typename Plugin>
    void connect(Runner<Plugin>& runner) {
        m_standIn.publishResults(m_workload.results(0));
        irsdk_startup();
        irsdk_getNewData(nullptr);
        m_standIn.publish(0);
        runner.connect();
    }

    template <typename Plugin>
    double turn(Runner<Plugin>& runner, std::vector<double>& best, int firstTick) {
        double sum = 0.0;
        for (int tick = firstTick; tick < firstTick + kTurnTicks; ++tick) {
            m_standIn.publishResults(m_workload.results(tick / kTextInterval * kTextInterval));
            m_standIn.publish(tick);
            const double seconds = runner.tick();
            keepLess(best, static_cast<std::size_t>(tick), seconds);
            sum += seconds;
            if constexpr (std::is_same_v<Plugin, iRPluginLive>) {
                m_allocations.push_back(static_cast<double>(runner.allocations()));
            }
        }
        return sum;
    }

    double floorTurn(PhysicalFloor& floor) {
        double sum = 0.0;
        for (int tick = 0; tick < kTurnTicks; ++tick) {
            const double start = threadSeconds();
            floor.tick(m_standIn.header());
            const double seconds = threadSeconds() - start;
            m_floor.push_back(seconds);
            sum += seconds;
        }
        return sum;
    }

    std::string m_plotFile;
    Workload m_workload;
    StandIn m_standIn;
    std::vector<double> m_fast;  // the best time of each tick
    std::vector<double> m_obvious;
    std::vector<double> m_ratios;
    std::vector<double> m_floor;
    std::vector<double> m_floorRatios;
    std::vector<double> m_allocations;
};

}  // namespace

void registerRace(Report& report, const std::string& plotFile) {
    registerFigure<RaceFigure>(report, "race", kRaces, plotFile);
}

}  // namespace bench
