// What it costs when all cars close a lap of 90 seconds in one tick.

#include "benchmarks/contest.h"
#include "benchmarks/figure.h"
#include "benchmarks/figures.h"
#include "benchmarks/obvious/reader.h"
#include "benchmarks/workload.h"
#include "reader/irtelemetryreader.h"
#include "sdk/lap.h"

#include <QSharedPointer>

#include <cstdlib>
#include <memory>

namespace bench {

namespace {

using TLM::SDK::Lap;

constexpr int ticksPerLap = 5400;
constexpr int rounds = 9;

RecorderCar& recorderOf(obvious::Reader& reader, int car) {
    return reader.recorderCar(car);
}

const RecorderCar& recorderOf(iRTelemetryReader& reader, int car) {
    return reader.recorderCar(car);
}

/**
 * A reader at the end of everybody's second lap, as at a session's end: what the first closed lap
 * of a car settles is settled. To spare the time of 5400 real ticks the recorded channels are
 * lengthened to a whole lap by hand.
 */
template <typename Reader>
class LapEnd {
public:
    explicit LapEnd(const Workload& workload) : m_workload(workload), m_header(workload.header()) {
        publishResults(0);
        record(ticksPerLap * 9 / 10);
        publishResults(firstResultTick);
        record(firstResultTick);
        record(ticksPerLap * 19 / 10);
        for (int car = 0; car < carCount; ++car) {
            lengthen(*recorderOf(m_reader, car).lap);
        }
        publishResults(secondResultTick);
        sample(secondResultTick);
    }

    void closeAll() { m_reader.processData(); }

    [[nodiscard]] bool isEveryLapClosed() {
        for (int car = 0; car < carCount; ++car) {
            if (!m_reader.isLapReady(car) || m_reader.lap(car)->size() < ticksPerLap) {
                return false;
            }
        }
        return true;
    }

private:
    // A second behind the line of the slowest car: all results are in.
    static constexpr int firstResultTick = ticksPerLap + 400;
    static constexpr int secondResultTick = 2 * ticksPerLap + 800;
    static constexpr int recordedTicks = 5;

    void publishResults(int tick) {
        m_reader.setYaml(m_workload.sessionText(m_workload.results(tick)).c_str());
        m_reader.updateCarList();
    }

    void record(int firstTick) {
        for (int tick = firstTick; tick < firstTick + recordedTicks; ++tick) {
            sample(tick);
            m_reader.processData();
        }
    }

    void sample(int tick) {
        const std::vector<char> snapshot = m_workload.snapshot(tick);
        m_reader.prepareTick();
        m_reader.getRawData(&m_header, m_workload.table().data(), snapshot.data(),
                            m_workload.bufferLength());
    }

    /** A whole lap from line to line: what tells time and distance rises, the rest goes on. */
    static void lengthen(const Lap& lap) {
        for (auto channel = lap.channels().cbegin(); channel != lap.channels().cend(); ++channel) {
            QList<double>& samples = channel.value()->samples;
            samples.resize(ticksPerLap, samples.constLast());
            if (channel.key() == u"lapdistpct") {
                rise(samples, 1.0 / ticksPerLap);
            } else if (channel.key() == u"sessiontime" || channel.key() == u"lapcurrentlaptime") {
                rise(samples, 1.0 / ticksPerSecond);
            }
        }
    }

    static void rise(QList<double>& samples, double step) {
        for (qsizetype i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<double>(i) * step;
        }
    }

    const Workload& m_workload;
    irsdk_header m_header;
    Reader m_reader;
};

class ClosingFigure {
public:
    ClosingFigure() : m_workload(ticksPerLap) {
        m_contest.add(
            "fast", 1.0, [this] { m_fast->closeAll(); }, [this] { renew(m_fast); });
        m_contest.add(
            "obvious", 1.0, [this] { m_obvious->closeAll(); }, [this] { renew(m_obvious); });
        m_contest.add(
            "copy", 1.0, [this] { writeDerivedChannels(); }, [this] { m_derived.clear(); });
    }

    double round() {
        const double seconds = m_contest.round();
        if (!m_fast->isEveryLapClosed() || !m_obvious->isEveryLapClosed()) {
            std::abort();  // what is measured here does not happen
        }
        return seconds;
    }

    void report(Report& report) {
        report.add(
            "64 laps closed in one tick: to the obvious way", m_contest.ratio("fast", "obvious"),
            atMost(0.25),
            timeText(m_contest.seconds("fast")) + " : " + timeText(m_contest.seconds("obvious")));
        report.add("64 laps closed in one tick: to writing the derived channels",
                   m_contest.ratio("fast", "copy"), std::nullopt,
                   timeText(m_contest.seconds("copy")));
    }

private:
    // Time step, running time, distance and speed.
    static constexpr int derivedChannels = 4;

    template <typename End>
    void renew(std::unique_ptr<End>& end) {
        end.reset();
        end = std::make_unique<End>(m_workload);
    }

    /** What closing cannot do without: new lists with as many numbers. */
    void writeDerivedChannels() {
        for (int i = 0; i < (carCount - 1) * derivedChannels; ++i) {
            m_derived.append(QList<double>(ticksPerLap, 1.0));
        }
    }

    Workload m_workload;
    std::unique_ptr<LapEnd<iRTelemetryReader>> m_fast;
    std::unique_ptr<LapEnd<obvious::Reader>> m_obvious;
    QList<QList<double>> m_derived;
    Contest m_contest;
};

}  // namespace

void registerClosing(Report& report) {
    registerFigure<ClosingFigure>(report, "closing", rounds);
}

}  // namespace bench
