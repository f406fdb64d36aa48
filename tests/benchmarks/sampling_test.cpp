#include "benchmarks/obvious/reader.h"
#include "benchmarks/workload.h"
#include "plugin/samplelists.h"
#include "reader/irtelemetryreader.h"
#include "tests/benchmarks/randomsimulator.h"
#include "tests/benchmarks/sameresults.h"

#include <gtest/gtest.h>

#include <array>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>

namespace fastpath {
namespace {

using TLM::SDK::Sample;

constexpr int kCarCount = 64;

std::string sessionText(const std::string& mode, const std::string& ownCar) {
    return "---\nWeekendInfo:\n SimMode: " + mode + "\nDriverInfo:\n DriverCarIdx: " + ownCar +
           "\n Drivers:\n - CarIdx: 3\n   UserName: A\n";
}

template <typename Reader>
void readText(Reader& reader, const std::string& text) {
    reader.setYaml(text.c_str());
    reader.updateCarList();
}

/** Begins a tick and samples the snapshot of a simulator. */
template <typename Reader>
void sampleSnapshot(Reader& reader, const RandomSimulator& simulator) {
    const irsdk_header header = simulator.header();
    reader.prepareTick();
    reader.getRawData(&header, simulator.table().data(), simulator.snapshot().data(),
                      static_cast<qint64>(simulator.snapshot().size()));
}

/** A list that the host keeps, and a copy of its values at the time it came. */
class KeptList {
public:
    explicit KeptList(const QList<Sample>& samples) : m_samples(samples) {
        for (const Sample& sample : samples) {
            TLM::SDK::DynamicData copy;
            for (auto it = sample.data().cbegin(); it != sample.data().cend(); ++it) {
                copy.setValue(it.key(), it.value());
            }
            m_copies.append(copy);
        }
    }

    [[nodiscard]] testing::AssertionResult isUnchanged() const {
        for (qsizetype car = 0; car < m_samples.size(); ++car) {
            const testing::AssertionResult same = haveSameValues(m_samples[car], m_copies[car]);
            if (!same) {
                return testing::AssertionFailure() << "car " << car << ": " << same.message();
            }
        }
        return testing::AssertionSuccess();
    }

private:
    QList<Sample> m_samples;
    QList<TLM::SDK::DynamicData> m_copies;
};

/** Keeps about every third list for a random time and checks repeatedly whether it has changed. */
class KeepingHost {
public:
    explicit KeepingHost(unsigned int seed) : m_random(seed) {}

    void take(KeptList samples) {
        if (number(3) == 0) {
            m_kept.push_back(std::move(samples));
        }
        while (!m_kept.empty() && (number(5) == 0 || m_kept.size() > 12)) {
            const auto chosen = m_kept.begin() + number(static_cast<int>(m_kept.size()));
            check(*chosen);
            m_kept.erase(chosen);
        }
        if (!m_kept.empty()) {
            check(m_kept[static_cast<std::size_t>(number(static_cast<int>(m_kept.size())))]);
        }
    }

    /** Checks the remaining lists; returns the number of changes seen. */
    int finish() {
        for (const KeptList& list : m_kept) {
            check(list);
        }
        return m_changes;
    }

private:
    int number(int count) { return std::uniform_int_distribution(0, count - 1)(m_random); }

    void check(const KeptList& list) {
        if (!list.isUnchanged()) {
            ++m_changes;
        }
    }

    std::mt19937 m_random;
    std::deque<KeptList> m_kept;
    int m_changes = 0;
};

/** The same on a thread of its own, which gets the lists through a queue. */
class HostThread {
public:
    explicit HostThread(unsigned int seed) : m_host(seed), m_thread([this] { run(); }) {}

    void take(KeptList samples) {
        {
            const std::lock_guard lock(m_mutex);
            m_queue.push_back(std::move(samples));
        }
        m_wake.notify_one();
        // At most a few lists are queued.
        while (queued() > 3) {
            std::this_thread::yield();
        }
    }

    int finish() {
        {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
        }
        m_wake.notify_one();
        m_thread.join();
        return m_host.finish();
    }

private:
    std::size_t queued() {
        const std::lock_guard lock(m_mutex);
        return m_queue.size();
    }

    void run() {
        while (std::optional<KeptList> samples = next()) {
            m_host.take(std::move(*samples));
        }
    }

    std::optional<KeptList> next() {
        std::unique_lock lock(m_mutex);
        m_wake.wait(lock, [this] { return m_ended || !m_queue.empty(); });
        if (m_queue.empty()) {
            return std::nullopt;
        }
        KeptList samples = std::move(m_queue.front());
        m_queue.pop_front();
        return samples;
    }

    KeepingHost m_host;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<KeptList> m_queue;
    bool m_ended = false;
    std::thread m_thread;
};

/** Samples and hands out lists as the plugin's tick does. */
class PluginSampling {
public:
    void setYaml(const std::string& text) { readText(m_reader, text); }

    const QList<Sample>& tick(const RandomSimulator& simulator) {
        sampleSnapshot(m_reader, simulator);
        return m_lists.fill(m_reader);
    }

    void release() { m_lists.release(); }

private:
    iRTelemetryReader m_reader;
    SampleLists m_lists;
};

/**
 * Writes to known addresses without checking whether they are shared, as the sampling would without
 * its generations. It breaks the promise to hosts, so a test that it passes proves nothing.
 */
class CarelessSampling {
public:
    void setYaml(const std::string& text) { readText(m_scratch, text); }

    const QList<Sample>& tick(const RandomSimulator& simulator) {
        sampleSnapshot(m_scratch, simulator);
        m_samples.resize(kCarCount);
        for (int car = 0; car < kCarCount; ++car) {
            if (m_samples[car].isEmpty()) {
                m_samples[car] = m_scratch.sample(car);
            } else {
                overwrite(std::as_const(m_samples)[car], m_scratch.sample(car));
            }
        }
        return m_samples;
    }

    void release() {}

private:
    static void overwrite(const Sample& target, const Sample& source) {
        for (auto it = target.data().cbegin(); it != target.data().cend(); ++it) {
            const QVariant reading = source.value(it.key()).value;
            const QVariant& place = it->value;
            if (reading.metaType() == place.metaType() && reading.isValid()) {
                std::memcpy(const_cast<void*>(place.constData()), reading.constData(),
                            static_cast<std::size_t>(reading.metaType().sizeOf()));
            }
        }
    }

    obvious::Reader m_scratch;
    QList<Sample> m_samples;
};

template <typename Sampling, typename Host>
int changesSeenByHost(int ticks) {
    RandomSimulator simulator(41);
    Sampling sampling;
    Host host(43);
    sampling.setYaml(sessionText("full", "3"));
    for (int tick = 0; tick < ticks; ++tick) {
        simulator.advance();
        host.take(KeptList(sampling.tick(simulator)));
        sampling.release();
    }
    return host.finish();
}

/** A fast and an obvious reader that get the same calls. */
class TwoReaders {
public:
    explicit TwoReaders(unsigned int seed) : m_simulator(seed), m_host(seed) {}

    /** Whether both gave the same samples. */
    [[nodiscard]] testing::AssertionResult tick() {
        m_simulator.advance();
        for (int i = m_simulator.number(2); i > 0; --i) {
            doSomethingElse();
        }
        inBoth([this](auto& reader) { sampleSnapshot(reader, m_simulator); });
        m_host.take(KeptList(m_lists.fill(m_fast)));
        m_lists.release();
        return compare();
    }

    int changesSeenByHost() { return m_host.finish(); }

private:
    template <typename Call>
    void inBoth(Call call) {
        call(m_fast);
        call(m_obvious);
    }

    void doSomethingElse() {
        const int car = m_simulator.number(kCarCount);
        switch (m_simulator.number(12)) {
            case 0:
            case 1:
                m_simulator.changeTable();
                break;
            case 2:
                setYaml(std::to_string(m_simulator.number(70) - 2));
                break;
            case 3:
                setYaml("none");
                break;
            case 4:
                inBoth(
                    [on = m_simulator.number(3) == 0](auto& reader) { reader.setDiskLoading(on); });
                break;
            case 5:
                // After a closed lap, the next tick starts with an empty sample.
                inBoth([car](auto& reader) { reader.processLap(car, false); });
                break;
            case 6:
                inBoth([car](auto& reader) { reader.sample(car).removeValue("lapdistpct"); });
                break;
            case 7:
                inBoth([car](auto& reader) {
                    reader.sample(car).setValue("gear", QVariant(QString("R")), QString());
                });
                break;
            case 8:
                inBoth([car, tick = m_simulator.number(1000)](auto& reader) {
                    reader.sample(car).setValue("visitor", QVariant(tick), QString());
                });
                break;
            default:
                inBoth([](auto& reader) { reader.processData(); });
                break;
        }
    }

    void setYaml(const std::string& ownCar) {
        static const std::array<std::string, 3> kModes{"full", "replay", "other"};
        const std::string text =
            sessionText(kModes[static_cast<std::size_t>(m_simulator.number(3))], ownCar);
        inBoth([&text](auto& reader) { readText(reader, text); });
    }

    testing::AssertionResult compare() {
        for (int car = 0; car < kCarCount; ++car) {
            const testing::AssertionResult same =
                haveSameValues(std::as_const(m_fast).sample(car), m_obvious.sample(car));
            if (!same) {
                return testing::AssertionFailure() << "car " << car << ": " << same.message();
            }
        }
        return testing::AssertionSuccess();
    }

    RandomSimulator m_simulator;
    iRTelemetryReader m_fast;
    obvious::Reader m_obvious;
    SampleLists m_lists;
    KeepingHost m_host;
};

TEST(SamplingFastPath, GivesTheSamplesOfTheObviousWayToTheBit) {
    constexpr unsigned int kReaders = 24;
    constexpr int kTicksPerReader = 80;
    int updates = 0;
    for (unsigned int seed = 1; seed <= kReaders; ++seed) {
        TwoReaders readersOfSeed(seed);
        for (int tick = 0; tick < kTicksPerReader; ++tick, updates += kCarCount) {
            ASSERT_TRUE(readersOfSeed.tick()) << "seed " << seed << ", tick " << tick;
        }
        EXPECT_EQ(readersOfSeed.changesSeenByHost(), 0) << "seed " << seed;
    }
    EXPECT_GE(updates, 100'000);
}

TEST(SamplingFastPath, ServesTheRecorderWhileTheHostKeepsEverything) {
    const bench::Workload workload(5400);
    const irsdk_header header = workload.header();
    const std::string text = workload.sessionText({});
    iRTelemetryReader fast;
    obvious::Reader obviousReader;
    SampleLists lists;
    QList<QList<Sample>> kept;
    const auto tickWith = [&](auto& reader, const std::vector<char>& snapshot) {
        reader.prepareTick();
        reader.getRawData(&header, workload.table().data(), snapshot.data(),
                          static_cast<qint64>(snapshot.size()));
        reader.processData();
    };
    readText(fast, text);
    readText(obviousReader, text);
    // The reader only knows whether a host still holds the last few lists.
    constexpr qsizetype kEverything = 10;
    // Long enough to check twice whether the host still keeps everything.
    for (int tick = 100; tick < 700; ++tick) {
        const std::vector<char> snapshot = workload.snapshot(tick);
        tickWith(fast, snapshot);
        tickWith(obviousReader, snapshot);
        kept.append(lists.fill(fast));
        lists.release();
        if (kept.size() > kEverything) {
            kept.removeFirst();
        }
        for (int car = 0; car < kCarCount; ++car) {
            const RecorderSample& own = fast.recorderCar(car).current;
            const RecorderSample& other = obviousReader.recorderCar(car).current;
            ASSERT_EQ(own.sessionTick, other.sessionTick) << "car " << car << ", tick " << tick;
            ASSERT_EQ(own.lapDistPct, other.lapDistPct) << "car " << car << ", tick " << tick;
            ASSERT_EQ(own.status, other.status) << "car " << car << ", tick " << tick;
            ASSERT_EQ(fast.isLapReady(car), obviousReader.isLapReady(car)) << "car " << car;
        }
    }
}

TEST(SamplingFastPath, ChangesNothingInListsThatTheHostKeeps) {
    EXPECT_EQ((changesSeenByHost<PluginSampling, KeepingHost>(600)), 0);
}

TEST(SamplingFastPath, ChangesNothingInListsThatAnotherThreadKeeps) {
    EXPECT_EQ((changesSeenByHost<PluginSampling, HostThread>(600)), 0);
}

TEST(SamplingFastPath, WouldBeCaughtByTheHostIfItWroteToSharedValues) {
    EXPECT_GT((changesSeenByHost<CarelessSampling, KeepingHost>(100)), 0);
}

TEST(SamplingFastPath, WouldBeCaughtByAnotherThreadIfItWroteToSharedValues) {
    EXPECT_GT((changesSeenByHost<CarelessSampling, HostThread>(600)), 0);
}

}  // namespace
}  // namespace fastpath
