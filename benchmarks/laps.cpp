// What it costs to append a tick's samples to the laps of 64 cars.

#include "benchmarks/allocations.h"
#include "benchmarks/contest.h"
#include "benchmarks/figures.h"
#include "benchmarks/obvious/addsample.h"
#include "benchmarks/workload.h"
#include "reader/irtelemetryreader.h"
#include "reader/laprecorder.h"
#include "sdk/lap.h"

#include <vector>

namespace bench {

namespace {

using TLM::SDK::Lap;

constexpr int kSamplesPerLap = 600;
constexpr int kExpectedSamples = 620;  // the car's last lap and a margin
constexpr int kRounds = 11;

class RecordingFigure {
public:
    RecordingFigure() : m_workload(kSamplesPerLap) {
        takeSamples();
        const double values = static_cast<double>(m_numbers.size()) * kSamplesPerLap;
        m_contest.add(
            "row", values, [this] { addRows(); }, [this] { startRecorders(); });
        m_contest.add(
            "sample", values, [this] { addSamples(); }, [this] { startLaps(); });
        m_contest.add(
            "obvious", values, [this] { addObvious(); }, [this] { startLaps(); });
        m_contest.add(
            "vector", values, [this] { pushBack(); }, [this] { startColumns(); });
    }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        startRecorders();
        const AllocationMeter meter;
        addRows();
        const double allocations = static_cast<double>(meter.count()) /
                                   static_cast<double>(m_numbers.size()) / kSamplesPerLap;
        report.add(
            "recording a value: times faster than the obvious way",
            1.0 / m_contest.ratio("row", "obvious"), atLeast(30.0),
            timeText(m_contest.seconds("row")) + " : " + timeText(m_contest.seconds("obvious")));
        report.add("recording a value: allocations, lap of 600 samples", allocations, atMost(0.01));
        report.add("recording a value: to std::vector::push_back", m_contest.ratio("row", "vector"),
                   atMost(1.5), timeText(m_contest.seconds("vector")));
        report.add("Lap::addSample, a value: times faster than the obvious way",
                   1.0 / m_contest.ratio("sample", "obvious"), atLeast(8.0),
                   timeText(m_contest.seconds("sample")));
    }

private:
    /** The samples of a tick, as the plugin's reader makes them. */
    void takeSamples() {
        const irsdk_header header = m_workload.header();
        const std::vector<char> snapshot = m_workload.snapshot(0);
        m_reader.setYaml(m_workload.sessionText({}).c_str());
        m_reader.updateCarList();
        m_reader.getRawData(&header, m_workload.table().data(), snapshot.data(),
                            m_workload.bufferLength());
        for (int car = 0; car < kCarCount; ++car) {
            for (const auto& value : sample(car).get().data()) {
                m_numbers.push_back(value.value.toDouble());
            }
        }
    }

    [[nodiscard]] const reader::CarSample& sample(int car) const {
        return m_reader.recorderCar(car).sample;
    }

    void startRecorders() {
        m_recorders.clear();
        for (int car = 0; car < kCarCount; ++car) {
            m_recorders.emplace_back(kExpectedSamples);
        }
    }

    void startLaps() {
        m_laps.clear();
        m_laps.resize(kCarCount);
    }

    void startColumns() {
        m_columns.clear();
        m_columns.resize(m_numbers.size());
        for (std::vector<double>& column : m_columns) {
            column.reserve(kExpectedSamples);
        }
    }

    void addRows() {
        for (int tick = 0; tick < kSamplesPerLap; ++tick) {
            for (int car = 0; car < kCarCount; ++car) {
                m_recorders[static_cast<std::size_t>(car)].add(sample(car));
            }
        }
        for (const reader::LapRecorder& recorder : m_recorders) {
            benchmark::DoNotOptimize(recorder->size());
        }
    }

    void addSamples() {
        for (int tick = 0; tick < kSamplesPerLap; ++tick) {
            for (int car = 0; car < kCarCount; ++car) {
                m_laps[static_cast<std::size_t>(car)].addSample(sample(car));
            }
        }
    }

    void addObvious() {
        for (int tick = 0; tick < kSamplesPerLap; ++tick) {
            for (int car = 0; car < kCarCount; ++car) {
                obvious::addSample(m_laps[static_cast<std::size_t>(car)], sample(car));
            }
        }
    }

    void pushBack() {
        for (int tick = 0; tick < kSamplesPerLap; ++tick) {
            for (std::size_t i = 0; i < m_columns.size(); ++i) {
                m_columns[i].push_back(m_numbers[i]);
            }
        }
    }

    Workload m_workload;
    iRTelemetryReader m_reader;
    std::vector<double> m_numbers;
    std::vector<reader::LapRecorder> m_recorders;
    std::vector<Lap> m_laps;
    std::vector<std::vector<double>> m_columns;
    Contest m_contest;
};

}  // namespace

void registerLaps(Report& report) {
    registerFigure<RecordingFigure>(report, "recording", kRounds);
}

}  // namespace bench
