// What it costs to turn a snapshot into the samples of 64 cars and to hand them to a host.

#include "benchmarks/allocations.h"
#include "benchmarks/contest.h"
#include "benchmarks/figures.h"
#include "benchmarks/obvious/reader.h"
#include "benchmarks/plainnodes.h"
#include "benchmarks/workload.h"
#include "plugin/samplelists.h"
#include "reader/irtelemetryreader.h"
#include "sdk/dataemitter.h"

#include <QList>

#include <limits>

namespace bench {

namespace {

using TLM::SDK::DataEmitter;
using TLM::SDK::Sample;

constexpr int kTicksPerLap = 5400;
constexpr int kSnapshotCount = 16;
constexpr int kRounds = 21;
constexpr int kFastTicks = 64;
constexpr int kObviousTicks = 8;
constexpr qsizetype kEveryList = std::numeric_limits<qsizetype>::max();

/** Keeps the last lists, as a connection queued to another thread does. */
class Host {
public:
    Host(DataEmitter* emitter, qsizetype keptLists) : m_keptLists(keptLists) {
        QObject::connect(emitter, &DataEmitter::sendSamples, emitter,
                         [this](const QList<Sample>& samples) { take(samples); });
    }

    void clear() { m_lists.clear(); }

private:
    void take(const QList<Sample>& samples) {
        if (m_keptLists == 0) {
            return;
        }
        if (m_lists.size() == m_keptLists) {
            m_lists.removeFirst();
        }
        m_lists.append(samples);
    }

    qsizetype m_keptLists;
    QList<QList<Sample>> m_lists;
};

/** The list of a tick as the obvious way makes it; the fast one is SampleLists. */
class ObviousLists {
public:
    const QList<Sample>& fill(obvious::Reader& reader) {
        m_samples.reserve(kCarCount);
        for (int car = 0; car < kCarCount; ++car) {
            m_samples.append(reader.sample(car));
        }
        return m_samples;
    }
    void release() { m_samples = {}; }

private:
    QList<Sample> m_samples;
};

/** Samples snapshots with a reader, fast or obvious, and emits them as the plugin's tick does. */
template <typename Reader, typename Lists>
class Sampler {
public:
    Sampler(const Workload& workload, qsizetype keptLists)
        : m_header(workload.header()),
          m_table(workload.table()),
          m_length(workload.bufferLength()),
          m_host(&m_emitter, keptLists) {
        m_reader.setYaml(workload.sessionText({}).c_str());
        m_reader.updateCarList();
    }

    void tick(const char* snapshot) {
        m_reader.prepareTick();
        m_reader.getRawData(&m_header, m_table.data(), snapshot, m_length);
        emit m_emitter.sendSamples(m_lists.fill(m_reader));
        m_lists.release();
    }

    Host& host() { return m_host; }
    const Sample& sample(int car) const { return std::as_const(m_reader).sample(car); }

private:
    irsdk_header m_header;
    const std::vector<irsdk_varHeader>& m_table;
    qint64 m_length;
    Reader m_reader;
    Lists m_lists;
    DataEmitter m_emitter;
    Host m_host;
};

using FastSampler = Sampler<iRTelemetryReader, SampleLists>;
using ObviousSampler = Sampler<obvious::Reader, ObviousLists>;

std::vector<std::vector<char>> snapshotsOf(const Workload& workload) {
    std::vector<std::vector<char>> snapshots;
    snapshots.reserve(kSnapshotCount);
    for (int tick = 0; tick < kSnapshotCount; ++tick) {
        snapshots.push_back(workload.snapshot(tick));
    }
    return snapshots;
}

class SamplingFigure {
public:
    SamplingFigure(const char* title, qsizetype keptLists)
        : m_title(title),
          m_workload(kTicksPerLap),
          m_snapshots(snapshotsOf(m_workload)),
          m_fast(m_workload, keptLists),
          m_obvious(m_workload, keptLists) {
        // Values that a host keeps cannot be overwritten, so the stores use several sets of nodes.
        for (qsizetype i = 0; i <= keptLists; ++i) {
            m_nodes.emplace_back(m_workload.table());
        }
        m_contest.add("fast", kFastTicks, [this] { run(m_fast, kFastTicks); });
        m_contest.add("obvious", kObviousTicks, [this] { run(m_obvious, kObviousTicks); });
        m_contest.add("stores", kFastTicks, [this] {
            for (int i = 0; i < kFastTicks; ++i) {
                m_nodes[static_cast<std::size_t>(i) % m_nodes.size()].store(snapshot(i));
            }
            benchmark::DoNotOptimize(m_nodes.data());
            benchmark::ClobberMemory();
        });
        // Warms up: resolves what is resolved once, and fills the host's kept lists.
        run(m_fast, kFastTicks);
        run(m_obvious, kObviousTicks);
    }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        const AllocationMeter meter;
        run(m_fast, kFastTicks);
        const double allocations = static_cast<double>(meter.count()) / kFastTicks;
        report.add(
            m_title + ": times faster than the obvious way",
            1.0 / m_contest.ratio("fast", "obvious"), atLeast(40.0),
            timeText(m_contest.seconds("fast")) + " : " + timeText(m_contest.seconds("obvious")));
        report.add(m_title + ": allocations a tick", allocations, atMost(0.0));
        report.add(m_title + ": to plain stores", m_contest.ratio("fast", "stores"), atMost(2.0),
                   timeText(m_contest.seconds("stores")));
    }

private:
    const char* snapshot(int i) const {
        return m_snapshots[static_cast<std::size_t>(i % kSnapshotCount)].data();
    }

    template <typename Sampler>
    void run(Sampler& sampler, int ticks) {
        for (int i = 0; i < ticks; ++i) {
            sampler.tick(snapshot(i));
        }
    }

    std::string m_title;
    Workload m_workload;
    std::vector<std::vector<char>> m_snapshots;
    FastSampler m_fast;
    ObviousSampler m_obvious;
    std::vector<PlainNodes> m_nodes;
    Contest m_contest;
};

/** If the host keeps every list, every tick makes new maps: the cost is that of copying a map. */
class EveryListKeptFigure {
public:
    EveryListKeptFigure()
        : m_workload(kTicksPerLap),
          m_snapshots(snapshotsOf(m_workload)),
          m_fast(m_workload, kEveryList) {
        const auto clear = [this] {
            m_fast.host().clear();
            m_copies.clear();
            mergeFreedMemory();
        };
        m_contest.add(
            "fast", kFastTicks, [this] { run(); }, clear);
        m_contest.add(
            "copy", kFastTicks, [this] { copy(); }, clear);
        run();
    }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        report.add(
            "the same, host keeps every list: to a plain copy of the maps",
            m_contest.ratio("fast", "copy"), atMost(1.6),
            timeText(m_contest.seconds("fast")) + " : " + timeText(m_contest.seconds("copy")));
    }

private:
    void run() {
        for (int i = 0; i < kFastTicks; ++i) {
            m_fast.tick(m_snapshots[static_cast<std::size_t>(i % kSnapshotCount)].data());
        }
    }

    void copy() {
        for (int i = 0; i < kFastTicks; ++i) {
            QList<Sample> samples;
            samples.reserve(kCarCount);
            for (int car = 0; car < kCarCount; ++car) {
                samples.append(m_fast.sample(car));
                samples.last().data().detach();
            }
            m_copies.append(samples);
        }
    }

    Workload m_workload;
    std::vector<std::vector<char>> m_snapshots;
    FastSampler m_fast;
    QList<QList<Sample>> m_copies;
    Contest m_contest;
};

}  // namespace

void registerSampling(Report& report) {
    registerFigure<SamplingFigure>(report, "sampling/none", kRounds,
                                   "sampling + emission, host keeps nothing", 0);
    registerFigure<SamplingFigure>(report, "sampling/one", kRounds,
                                   "the same, host keeps the last list", 1);
    registerFigure<SamplingFigure>(report, "sampling/two", kRounds,
                                   "the same, host keeps the last two lists", 2);
    registerFigure<EveryListKeptFigure>(report, "sampling/every", kRounds);
}

}  // namespace bench
