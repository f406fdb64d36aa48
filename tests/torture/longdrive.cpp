#include "tests/torture/longdrive.h"

#include "tools/publisher/namedobjects.h"
#include "tools/simulator/feed.h"
#include "tools/simulator/laplog.h"

#include <QScopeGuard>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <map>
#include <span>
#include <thread>

namespace torture {

namespace {

constexpr int kMinutesAnHour = 60;
constexpr int kTicksAMinute = simulator::kTicksPerSecond * 60;
constexpr double kMicrosecondsASecond = 1e6;
constexpr double kMedianLimit = 1.25;

// After these ticks everything that a tick needs is allocated, and all cars are still in the pits.
constexpr int kRestTicks = 30;

double threadMicroseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * kMicrosecondsASecond +
           static_cast<double>(time.tv_nsec) / 1000.0;
}

/** Fixed work of the same kind as a tick's: a walk over a map larger than the first-level cache. */
class Yardstick {
public:
    Yardstick() {
        constexpr int kNodes = 3000;
        for (int i = 0; i < kNodes; ++i) {
            m_map[i] = i;
        }
    }

    void measure() {
        const double start = threadMicroseconds();
        for (auto& [key, value] : m_map) {
            value += key;
        }
        m_costs.push_back(threadMicroseconds() - start);
    }

    [[nodiscard]] double takeMedian() {
        std::sort(m_costs.begin(), m_costs.end());
        const double median = m_costs[m_costs.size() / 2];
        m_costs.clear();
        return median;
    }

private:
    std::map<int, double> m_map;
    std::vector<double> m_costs;
};

testsupport::DrivenLap drivenLap(const simulator::LapRecord& record) {
    testsupport::DrivenLap lap;
    lap.car = record.car;
    lap.lap = record.lap;
    lap.kind = simulator::lapKindText(record.kind);
    lap.start = record.start;
    lap.finish = record.finish;
    lap.complete = record.complete;
    return lap;
}

}  // namespace

/** The simulator's model with its objects, in this process. */
class LongDrive::Source {
public:
    Source() : m_feed(options()) {
        m_ready = m_objects.createBlock(m_feed.blockSize()) && m_objects.createEvent();
        if (m_ready) {
            m_feed.attach(m_objects.block());
        }
    }

    [[nodiscard]] bool isReady() const { return m_ready; }

    void publish() {
        m_feed.publishNextTick();
        m_objects.signalEvent();
    }

    /** Connecting needs a tick that comes while it waits. */
    bool connect(Host& host) {
        static constexpr std::chrono::milliseconds kPause(5);
        std::jthread publisher([this](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                publish();
                std::this_thread::sleep_for(kPause);
            }
        });
        host.source().connectToSource();
        return host.source().isConnected();
    }

    [[nodiscard]] std::vector<simulator::LapRecord> takeLaps() { return m_feed.takeLaps(); }

private:
    static simulator::Options options() {
        simulator::Options options;
        options.cars = simulator::Options::kMostCars;
        return options;
    }

    simulator::Feed m_feed;
    publisher::NamedObjects m_objects;
    bool m_ready = false;
};

void LongDrive::run() {
    m_start = restingResources();
    {
        Source source;
        if (!source.isReady() || !source.connect(m_host)) {
            m_connected = false;
            return;
        }
        driveHours(source);
        m_host.source().disconnectFromSource();
    }
    m_end = restingResources();
}

Resources LongDrive::restingResources() {
    Source source;
    if (!source.isReady() || !source.connect(m_host)) {
        m_connected = false;
        return {};
    }
    for (int tick = 0; tick < kRestTicks; ++tick) {
        source.publish();
        m_host.tick();
    }
    const Resources resources = Resources::now();
    m_host.source().disconnectFromSource();
    return resources;
}

void LongDrive::driveHours(Source& source) {
    LapLedger ledger;
    std::vector<testsupport::DrivenLap> driven;
    m_host.writeTo(&ledger);
    const auto stopWriting = qScopeGuard([this] { m_host.writeTo(nullptr); });
    std::vector<double> costs;
    costs.reserve(static_cast<std::size_t>(kMinutesAnHour) * kTicksAMinute);
    Yardstick yardstick;
    for (int hour = 0; hour < m_options.driveHours; ++hour) {
        costs.clear();
        for (int tick = 0; tick < kMinutesAnHour * kTicksAMinute; ++tick) {
            source.publish();
            if (tick % simulator::kTicksPerSecond == 0) {
                yardstick.measure();
            }
            const long long before = m_host.snapshots();
            const double start = threadMicroseconds();
            m_host.tick();
            costs.push_back(threadMicroseconds() - start);
            m_missedTicks += m_host.snapshots() == before ? 1 : 0;
            if (const auto newest = m_host.newestTick()) {
                ledger.see(*newest, true);
            }
            for (const simulator::LapRecord& record : source.takeLaps()) {
                driven.push_back(drivenLap(record));
            }
        }
        std::sort(costs.begin(), costs.end());
        m_hours.push_back({costs[costs.size() / 2], costs[costs.size() - costs.size() / 1000],
                           costs.back(), yardstick.takeMedian()});
        std::fprintf(stderr, "Hour %d: %.1f us a tick\n", hour + 1, m_hours.back().median);
    }
    m_balance = ledger.balance(driven, LapLedger::Trust::AllCars);
    for (const std::string& complaint : m_balance.complaints) {
        std::fprintf(stderr, "%s\n", complaint.c_str());
    }
}

void LongDrive::addTo(Table& table) const {
    table.add("connections to the simulator", m_connected ? "all" : "not all", "all", m_connected);
    table.add("ticks that the plugin did not take", std::to_string(m_missedTicks), "0",
              m_missedTicks == 0);
    table.add("laps driven to the line or the pits", std::to_string(m_balance.driven));
    table.add("of these, handed over", std::to_string(m_balance.handedOver));
    table.add("of these, open at the end", std::to_string(m_balance.cutShort));
    table.add("laps lost, twice, with a wrong end, mixed, never driven",
              std::to_string(m_balance.lost) + ", " + std::to_string(m_balance.twice) + ", " +
                  std::to_string(m_balance.wrongEnd) + ", " + std::to_string(m_balance.mixed) +
                  ", " + std::to_string(m_balance.neverDriven),
              "0 of at least 1", m_balance.isFlawless() && m_balance.handedOver > 0);
    for (std::size_t i = 0; i < m_hours.size(); ++i) {
        const Hour& hour = m_hours[i];
        const Hour& first = m_hours.front();
        // Other load on the machine can change one of the two, a slower tick changes both.
        const bool hasGrown = hour.median > first.median * kMedianLimit &&
                              hour.relativeMedian() > first.relativeMedian() * kMedianLimit;
        table.add("processor time of a tick in hour " + std::to_string(i + 1) +
                      ": median, worst but a thousandth, worst",
                  number(hour.median, 1) + ", " + number(hour.almostWorst, 1) + ", " +
                      number(hour.worst, 0, "us"));
        table.add("the median, in units of work that is always the same",
                  number(hour.relativeMedian(), 2), "as in the first hour", !hasGrown);
    }
    addMemoryInUse(table, "memory in use before and after, laps released", m_start, m_end);
    addResidentMemory(table, "resident memory before and after", m_start, m_end);
    addEqualCounts(table, "open files before and after", m_start.descriptors, m_end.descriptors);
}

}  // namespace torture
