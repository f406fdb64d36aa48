// What it costs when all cars close a lap of 90 seconds in one tick.

#include "benchmarks/contest.h"
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

constexpr int kTicksPerLap = 5400;
constexpr int kRounds = 3;

/**
 * A reader at the end of all second laps, as at a session's end. A car's first closed lap, which
 * costs more, is over.
 */
template <typename Reader>
class LapEnd {
public:
    explicit LapEnd(const Workload& workload) : m_workload(workload), m_header(workload.header()) {
        publishResults(0);
        record(kTicksPerLap * 9 / 10, kFirstResultTick);
        publishResults(kFirstResultTick);
        record(kFirstResultTick, 2 * kTicksPerLap - 5);
        publishResults(kSecondResultTick);
        sample(kSecondResultTick);
    }

    /** The own car's lap ends with the session, the others' laps with new results. */
    void closeAll() {
        m_reader.processData();
        m_reader.processLap(kOwnCar, false);
    }

    [[nodiscard]] bool isEveryLapClosed() {
        for (int car = 0; car < kCarCount; ++car) {
            const bool isShort = car != kOwnCar && m_reader.lap(car)->size() < kShortestLap;
            if (!m_reader.isLapReady(car) || isShort) {
                return false;
            }
        }
        return true;
    }

private:
    // A second after the slowest car has crossed the line: all results are in.
    static constexpr int kFirstResultTick = kTicksPerLap + 400;
    static constexpr int kSecondResultTick = 2 * kTicksPerLap + 800;
    static constexpr int kShortestLap = kTicksPerLap * 9 / 10;  // samples

    void publishResults(int tick) {
        m_reader.setYaml(m_workload.sessionText(m_workload.results(tick)).c_str());
        m_reader.updateCarList();
    }

    void record(int firstTick, int endTick) {
        for (int tick = firstTick; tick < endTick; ++tick) {
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

    const Workload& m_workload;
    irsdk_header m_header;
    Reader m_reader;
};

class ClosingFigure {
public:
    ClosingFigure() : m_workload(kTicksPerLap) {
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
            std::abort();  // laps were not closed, so the time means nothing
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
    static constexpr int kDerivedChannels = 4;

    template <typename End>
    void renew(std::unique_ptr<End>& end) {
        end.reset();
        end = std::make_unique<End>(m_workload);
    }

    /** The least that closing must do: fill new lists with as many numbers. */
    void writeDerivedChannels() {
        for (int i = 0; i < (kCarCount - 1) * kDerivedChannels; ++i) {
            m_derived.append(QList<double>(kTicksPerLap, 1.0));
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
    registerFigure<ClosingFigure>(report, "closing", kRounds);
}

}  // namespace bench
