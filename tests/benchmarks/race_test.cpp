#include "benchmarks/obvious/reader.h"
#include "benchmarks/workload.h"
#include "reader/irtelemetryreader.h"
#include "tests/benchmarks/sameresults.h"
#include "tests/sdk/streams.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <string_view>

namespace fastpath {
namespace {

using bench::kCarCount;

constexpr int kTicksPerLap = 90;

/** The workload's race with all that can happen to cars: pits, tows, ends of sessions. */
class EventfulRace {
public:
    explicit EventfulRace(unsigned int seed) : m_random(seed), m_workload(kTicksPerLap) {
        m_snapshot.resize(static_cast<std::size_t>(m_workload.bufferLength()));
    }

    [[nodiscard]] const bench::Workload& workload() const { return m_workload; }
    [[nodiscard]] const char* snapshot() const { return m_snapshot.data(); }

    void advance(int tick) {
        m_workload.fill(m_snapshot.data(), tick);
        for (int car = 0; car < kCarCount; ++car) {
            const auto index = static_cast<std::size_t>(car);
            m_onPitRoad[index] ^= happens(70);
            m_inWorld[index] ^= happens(m_inWorld[index] ? 150 : 10);
            set<std::int8_t>("CarIdxOnPitRoad", m_onPitRoad[index], car);
            if (!m_inWorld[index]) {
                set("CarIdxLapDistPct", -1.0F, car);
            }
            if (happens(300)) {
                set("CarIdxLapDistPct", static_cast<float>(number(100)) / 100.0F, car);
            }
        }
        m_ownOnTrack ^= happens(120);
        m_ownOnPitRoad ^= happens(90);
        m_sessionState = happens(80) ? number(6) : m_sessionState;
        set<std::int8_t>("IsOnTrack", m_ownOnTrack);
        set<std::int8_t>("PlayerCarInPitStall", !m_ownOnTrack);
        set<std::int8_t>("OnPitRoad", m_ownOnPitRoad);
        set("SessionState", m_sessionState);
        set("ReplayPlaySpeed", happens(100) ? 4 : 1);
        set("SessionNum", happens(400) ? -1 : 2);
        if (happens(15)) {
            set("SessionTick", m_lastTick);
        }
        m_lastTick = 6000 + tick;
        if (happens(60)) {
            set("LapCurrentLapTime", 0.0F);
        }
    }

    bool happens(int onceIn) { return number(onceIn) == 0; }
    int number(int count) { return std::uniform_int_distribution(0, count - 1)(m_random); }

private:
    template <typename Number>
    void set(std::string_view name, Number number, int element = 0) {
        for (const irsdk_varHeader& entry : m_workload.table()) {
            if (name == entry.name) {
                const std::size_t place = static_cast<std::size_t>(entry.offset) +
                                          static_cast<std::size_t>(element) * sizeof number;
                std::memcpy(m_snapshot.data() + place, &number, sizeof number);
                return;
            }
        }
        FAIL() << name;
    }

    std::mt19937 m_random;
    bench::Workload m_workload;
    std::vector<char> m_snapshot;
    std::array<bool, kCarCount> m_onPitRoad{};
    std::array<bool, kCarCount> m_inWorld = [] {
        std::array<bool, kCarCount> all{};
        all.fill(true);
        return all;
    }();
    bool m_ownOnTrack = true;
    bool m_ownOnPitRoad = false;
    int m_sessionState = 4;
    int m_lastTick = 0;
};

/** A fast and an obvious reader that see the same race. */
class TwoReaders {
public:
    TwoReaders(unsigned int seed, const char* mode) : m_race(seed), m_mode(mode) { publish(0); }

    void tick(int tick) {
        m_race.advance(tick);
        if (tick % 20 == 0) {
            publish(tick);
        }
        ASSERT_EQ(m_fast.updateCarList(), m_obvious.updateCarList()) << "tick " << tick;
        process(m_fast);
        process(m_obvious);
        for (int car = 0; car < kCarCount; ++car) {
            ASSERT_NO_FATAL_FAILURE(compare(car)) << "tick " << tick << ", car " << car;
        }
    }

    [[nodiscard]] int lapCount() const { return m_lapCount; }

private:
    void publish(int tick) {
        std::string text = m_race.workload().sessionText(m_race.workload().results(tick));
        text.replace(text.find("SimMode: full"), std::strlen("SimMode: full"),
                     "SimMode: " + m_mode);
        if (m_race.happens(20)) {
            text.replace(text.find("SubSessionID: 678"), std::strlen("SubSessionID: 678"),
                         "SubSessionID: 679");
        }
        m_fast.setYaml(text.c_str());
        m_obvious.setYaml(text.c_str());
    }

    template <typename Reader>
    void process(Reader& reader) {
        const irsdk_header header = m_race.workload().header();
        reader.prepareTick();
        reader.getRawData(&header, m_race.workload().table().data(), m_race.snapshot(),
                          m_race.workload().bufferLength());
        reader.processData();
    }

    void compare(int car) {
        const RecorderCar& fast = m_fast.recorderCar(car);
        const RecorderCar& plain = m_obvious.recorderCar(car);
        ASSERT_EQ(fast.current.status, plain.current.status);
        ASSERT_EQ(fast.current.lap, plain.current.lap);
        ASSERT_EQ(fast.current.lapInStint, plain.current.lapInStint);
        ASSERT_EQ(fast.current.stintInSession, plain.current.stintInSession);
        ASSERT_EQ(fast.lapReady, plain.lapReady);
        ASSERT_EQ(fast.lap->size(), plain.lap->size());
        ASSERT_EQ(fast.nextLap->size(), plain.nextLap->size());
        ASSERT_TRUE(haveSameValues(fast.sample, plain.sample));
        if (fast.lapReady) {
            ++m_lapCount;
            ASSERT_TRUE(areSameLaps(*fast.lap, *plain.lap));
        }
    }

    EventfulRace m_race;
    std::string m_mode;
    iRTelemetryReader m_fast;
    obvious::Reader m_obvious;
    int m_lapCount = 0;
};

void runRaces(const char* mode, unsigned int races, int laps) {
    const QuietQt quiet;
    int updates = 0;
    int closedLaps = 0;
    for (unsigned int seed = 1; seed <= races; ++seed) {
        TwoReaders readers(seed, mode);
        for (int tick = 0; tick < laps * kTicksPerLap; ++tick, updates += kCarCount) {
            ASSERT_NO_FATAL_FAILURE(readers.tick(tick)) << "seed " << seed;
        }
        closedLaps += readers.lapCount();
    }
    EXPECT_GE(updates, 100'000);
    EXPECT_GE(closedLaps, 1000);
}

TEST(TickFastPath, GivesTheLapsOfTheObviousWayToTheBit) {
    runRaces("full", 3, 6);
}

TEST(TickFastPath, GivesTheLapsOfTheObviousWayInAReplay) {
    runRaces("replay", 3, 6);
}

}  // namespace
}  // namespace fastpath
