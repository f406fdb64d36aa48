// What it costs to append a tick's samples to the laps of 64 cars.

#include "benchmarks/allocations.h"
#include "benchmarks/contest.h"
#include "benchmarks/figure.h"
#include "benchmarks/figures.h"
#include "benchmarks/obvious/addsample.h"
#include "benchmarks/workload.h"
#include "reader/irtelemetryreader.h"
#include "sdk/lap.h"

#include <QSharedPointer>

namespace bench {

namespace {

using TLM::SDK::Lap;
using TLM::SDK::Sample;

constexpr int samplesPerLap = 600;
constexpr int expectedSamples = 620;  // the car's last lap with some to spare
constexpr int rounds = 11;

using Laps = std::vector<QSharedPointer<Lap>>;

class AddSampleFigure {
public:
    AddSampleFigure() : m_workload(samplesPerLap) {
        takeSamples();
        const double values = static_cast<double>(valuesPerTick()) * samplesPerLap;
        m_contest.add(
            "fast", values, [this] { addFast(); }, [this] { startLaps(); });
        m_contest.add(
            "obvious", values, [this] { addObvious(); }, [this] { startLaps(); });
        m_contest.add(
            "vector", values, [this] { pushBack(); }, [this] { startColumns(); });
    }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        startLaps();
        const AllocationMeter meter;
        addFast();
        const double allocations = static_cast<double>(meter.count()) /
                                   static_cast<double>(valuesPerTick()) / samplesPerLap;
        report.add("addSample: times faster than the obvious way",
                   1.0 / m_contest.ratio("fast", "obvious"), atLeast(8.0),
                   timeText(m_contest.seconds("fast")) + " : " +
                       timeText(m_contest.seconds("obvious")) + " a value");
        report.add("addSample: allocations a value, lap of 600 samples", allocations, atMost(0.01));
        report.add("addSample: to std::vector::push_back", m_contest.ratio("fast", "vector"),
                   atMost(3.0), timeText(m_contest.seconds("vector")) + " a value");
    }

private:
    /** The samples of a tick, as the plugin's reader makes them. */
    void takeSamples() {
        iRTelemetryReader reader;
        const irsdk_header header = m_workload.header();
        const std::vector<char> snapshot = m_workload.snapshot(0);
        reader.setYaml(m_workload.sessionText({}).c_str());
        reader.updateCarList();
        reader.getRawData(&header, m_workload.table().data(), snapshot.data(),
                          m_workload.bufferLength());
        for (int car = 0; car < carCount; ++car) {
            m_samples.push_back(std::as_const(reader).sample(car));
            for (const auto& value : std::as_const(m_samples.back()).data()) {
                m_numbers.push_back(value.value.toDouble());
            }
        }
    }

    [[nodiscard]] std::size_t valuesPerTick() const { return m_numbers.size(); }

    void startLaps() {
        m_laps.clear();
        for (int car = 0; car < carCount; ++car) {
            m_laps.push_back(QSharedPointer<Lap>::create());
            m_laps.back()->reserve(expectedSamples);
        }
    }

    void startColumns() {
        m_columns.clear();
        m_columns.resize(valuesPerTick());
        for (std::vector<double>& column : m_columns) {
            column.reserve(expectedSamples);
        }
    }

    void addFast() {
        for (int tick = 0; tick < samplesPerLap; ++tick) {
            for (std::size_t car = 0; car < carCount; ++car) {
                m_laps[car]->addSample(m_samples[car]);
            }
        }
    }

    void addObvious() {
        for (int tick = 0; tick < samplesPerLap; ++tick) {
            for (std::size_t car = 0; car < carCount; ++car) {
                obvious::addSample(*m_laps[car], m_samples[car]);
            }
        }
    }

    void pushBack() {
        for (int tick = 0; tick < samplesPerLap; ++tick) {
            for (std::size_t i = 0; i < m_columns.size(); ++i) {
                m_columns[i].push_back(m_numbers[i]);
            }
        }
    }

    Workload m_workload;
    std::vector<Sample> m_samples;
    std::vector<double> m_numbers;
    Laps m_laps;
    std::vector<std::vector<double>> m_columns;
    Contest m_contest;
};

}  // namespace

void registerLaps(Report& report) {
    registerFigure<AddSampleFigure>(report, "addSample", rounds);
}

}  // namespace bench
