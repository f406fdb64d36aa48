#include "tools/simulator/world.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace simulator {

namespace {

// The numbers of the random streams.
enum Stream : std::uint64_t {
    kWeekendStream = 1,
    kWeatherStream,
    kDriverStream,
    kSystemsStream,
    kFieldStream,
    kResultsStream,
    kEntrantStream = 100
};

constexpr SettlingDelay kOwnSettling = {12, 36};
constexpr SettlingDelay kOtherSettling = {2, 12};

// Seconds between the line and the results.
constexpr double kSoonestResult = 0.5;
constexpr double kLatestResult = 2.0;

constexpr double kOwnWaitSeconds = 6.0;
constexpr double kLongestWaitLaps = 0.45;  // of the other cars before their first out lap

// With fewer cars nobody joins or leaves.
constexpr int kFewestCarsForVisitors = 4;

Track trackOf(TrackChoice choice) {
    return choice == TrackChoice::Grand ? Track::grandCircuit() : Track::shortCircuit();
}

std::optional<double> lengthOr(const Options& options, std::optional<double> usual) {
    return options.sessionLength > 0.0 ? std::optional<double>(options.sessionLength) : usual;
}

SessionPlan racePlan(const Options& options) {
    constexpr int kRaceLapsGrand = 10;
    constexpr int kRaceLapsShort = 20;
    const int usual = options.track == TrackChoice::Grand ? kRaceLapsGrand : kRaceLapsShort;
    return {SessionType::Race, lengthOr(options, std::nullopt),
            options.raceLaps > 0 ? options.raceLaps : usual};
}

std::vector<SessionPlan> plansOf(const Options& options) {
    const auto timed = [&](SessionType type, std::optional<double> usual) {
        return SessionPlan{type, lengthOr(options, usual), std::nullopt};
    };
    switch (options.session) {
        case SessionChoice::Testing:
            return {timed(SessionType::Testing, std::nullopt)};
        case SessionChoice::Practice:
            return {timed(SessionType::Practice, std::nullopt)};
        case SessionChoice::Qualify:
            return {timed(SessionType::Qualify, std::nullopt)};
        case SessionChoice::Race:
            return {racePlan(options)};
        case SessionChoice::Weekend:
            break;
    }
    return {timed(SessionType::Practice, 900.0), timed(SessionType::Qualify, 600.0),
            timed(SessionType::Warmup, 400.0), racePlan(options)};
}

std::vector<Entrant> drawEntrants(const Track& track, int cars, int ownSlot, const Random& random) {
    std::vector<Driver> drivers = drawDrivers(cars, random.stream(kDriverStream));
    std::vector<Entrant> entrants;
    entrants.reserve(drivers.size());
    for (int slot = 0; slot < cars; ++slot) {
        entrants.emplace_back(slot, std::move(drivers[static_cast<std::size_t>(slot)]), track,
                              track.stall(slot, cars),
                              slot == ownSlot ? kOwnSettling : kOtherSettling,
                              random.stream(kEntrantStream + static_cast<std::uint64_t>(slot)));
        entrants.back().join();
    }
    return entrants;
}

}  // namespace

World::World(const Options& options)
    : m_track(trackOf(options.track)),
      m_random(Random(options.seed).stream(kFieldStream)),
      m_weekend(plansOf(options), m_track.length(), m_track.lapTime(),
                Random(options.seed).stream(kWeekendStream)),
      m_weather(Random(options.seed).stream(kWeatherStream)),
      // A random slot, but not the first unless it is the only one.
      m_ownSlot(options.cars > 1 ? 1 + m_random.below(options.cars - 1) : 0),
      m_systems(m_track, Random(options.seed).stream(kSystemsStream)) {
    m_entrants = drawEntrants(m_track, options.cars, m_ownSlot, Random(options.seed));
    m_standings.resize(m_entrants.size());
    m_results.emplace_back(m_weekend.isRace());
    m_weather.advance(0.0);
    if (options.cars >= kFewestCarsForVisitors) {
        const auto other = [&](int steps) { return (m_ownSlot + steps) % options.cars; };
        const double lap = m_track.lapTime();
        m_joins = Visitor{other(options.cars - 1), ticksOf(lap * m_random.between(0.4, 0.8))};
        m_leaves = Visitor{other(2), ticksOf(lap * m_random.between(2.3, 2.9))};
        m_entrants[static_cast<std::size_t>(m_joins->slot)].leave(context());
    }
    loadCars();
    workOutStandings();
}

void World::advance() {
    const TickContext before = context();
    ++m_tick;
    follow(m_weekend.advance(m_tick, progress()), before);
    changeField();
    m_weather.advance(secondsOf(m_tick));
    advanceEntrants();
    if (m_results.back().settle(m_tick)) {
        noteChange();
    }
    workOutStandings();
    advanceOwnSystems();
}

std::vector<LapRecord> World::takeLaps() {
    return std::exchange(m_laps, {});
}

void World::finish() {
    for (Entrant& entrant : m_entrants) {
        record(entrant.cutShort(m_tick, m_weekend.number()));
    }
}

TickContext World::context() const {
    const SessionState state = m_weekend.state();
    return {.tick = m_tick,
            .sessionSeconds = sessionSeconds(),
            .session = m_weekend.number(),
            .race = m_weekend.isRace(),
            .pitsOpen = m_weekend.pitsOpen(),
            .formation = state == SessionState::ParadeLaps,
            .over = state == SessionState::Checkered || state == SessionState::CoolDown};
}

SessionProgress World::progress() const {
    SessionProgress progress;
    progress.allIn = true;
    for (const Entrant& entrant : m_entrants) {
        const Place place = entrant.car().place();
        progress.leaderLaps = std::max(progress.leaderLaps, entrant.timer().lapCompleted());
        progress.allIn = progress.allIn && place != Place::Track && place != Place::PitIn;
    }
    if (!m_grid.empty()) {
        progress.leaderMeters =
            m_entrants[static_cast<std::size_t>(m_grid.front())].car().metersDriven() -
            m_gridStartMeters;
    }
    return progress;
}

void World::follow(WeekendEvent event, const TickContext& before) {
    switch (event) {
        case WeekendEvent::None:
            return;
        case WeekendEvent::StateChanged:
            if (m_weekend.state() == SessionState::ParadeLaps) {
                startFormation();
            }
            break;
        case WeekendEvent::SessionChanged:
        case WeekendEvent::WeekendChanged:
            m_results.back().settleAll();
            for (Entrant& entrant : m_entrants) {
                TickContext ending = before;
                ending.tick = m_tick;
                record(entrant.startSession(ending));
            }
            if (event == WeekendEvent::WeekendChanged) {
                m_results.clear();
            }
            m_results.emplace_back(m_weekend.isRace());
            m_grid.clear();
            break;
        case WeekendEvent::CarsLoaded:
            loadCars();
            break;
    }
    noteChange();
}

void World::loadCars() {
    if (m_weekend.isRace()) {
        drawGrid();
    }
    for (Entrant& entrant : m_entrants) {
        if (entrant.present()) {
            loadCar(entrant);
        }
    }
    m_systems.service(m_weather);
}

void World::loadCar(Entrant& entrant) {
    if (!m_weekend.isRace()) {
        const double longest = kLongestWaitLaps * m_track.lapTime();
        entrant.enterGarage(context(), entrant.slot() == m_ownSlot
                                           ? kOwnWaitSeconds
                                           : m_random.between(2.0, longest));
        return;
    }
    // Limited, because a car too far back would not count as waiting for the start.
    constexpr double kUsualGap = 8.0;      // metres from slot to slot
    constexpr double kToFirstSlot = 12.0;  // metres from the line
    constexpr double kLongestGridShare = 0.25;
    const double gap = std::min(
        kUsualGap, kLongestGridShare * m_track.length() / static_cast<double>(m_entrants.size()));
    const auto slot = std::find(m_grid.begin(), m_grid.end(), entrant.slot()) - m_grid.begin();
    const int laps = m_weekend.plan().laps.value_or(std::numeric_limits<int>::max());
    const double stopShare = m_random.between(0.35, 0.65);
    entrant.enterGridSlot(-kToFirstSlot - gap * static_cast<double>(slot),
                          std::max(2, static_cast<int>(laps * stopShare)));
}

void World::drawGrid() {
    m_grid.clear();
    if (m_results.size() > 1) {
        // By the results of qualifying, the second session of a weekend.
        for (const ResultLine& line : m_results[1].lines()) {
            m_grid.push_back(line.car);
        }
    }
    std::vector<int> others;
    for (const Entrant& entrant : m_entrants) {
        if (std::find(m_grid.begin(), m_grid.end(), entrant.slot()) == m_grid.end()) {
            others.push_back(entrant.slot());
        }
    }
    while (!others.empty()) {
        const auto drawn = others.begin() + m_random.below(static_cast<int>(others.size()));
        m_grid.push_back(*drawn);
        others.erase(drawn);
    }
    // Drivers who are not present have no grid position.
    m_grid.erase(std::remove_if(m_grid.begin(), m_grid.end(),
                                [&](int slot) {
                                    return !m_entrants[static_cast<std::size_t>(slot)].present();
                                }),
                 m_grid.end());
}

void World::startFormation() {
    m_gridStartMeters = m_entrants[static_cast<std::size_t>(m_grid.front())].car().metersDriven();
    for (Entrant& entrant : m_entrants) {
        entrant.startFormation(context());
    }
}

void World::changeField() {
    if (!m_weekend.carsLoaded()) {
        return;
    }
    if (m_joins && m_tick >= m_joins->at) {
        Entrant& entrant = m_entrants[static_cast<std::size_t>(m_joins->slot)];
        entrant.join();
        entrant.enterGarage(context(), 5.0);
        m_joins.reset();
        noteChange();
    }
    // Not on the grid or in formation, where the field waits for its first car.
    if (m_leaves && m_tick >= m_leaves->at && m_weekend.pitsOpen()) {
        record(m_entrants[static_cast<std::size_t>(m_leaves->slot)].leave(context()));
        m_leaves.reset();
        noteChange();
    }
}

void World::advanceEntrants() {
    const TickContext now = context();
    for (Entrant& entrant : m_entrants) {
        const EntrantStep step = entrant.advance(now);
        if (step.officialLap) {
            report(entrant, *step.officialLap);
        }
        record(step.stretch);
        if (step.stopped && entrant.slot() == m_ownSlot) {
            m_systems.service(m_weather);
        }
    }
}

void World::advanceOwnSystems() {
    if (own().timer().lapCompleted() != m_ownLapOfSystems) {
        m_ownLapOfSystems = own().timer().lapCompleted();
        m_systems.startLap();
    }
    m_systems.advance(own().car(), m_weather);
}

void World::report(const Entrant& entrant, const TimedLap& lap) {
    const double delay = m_random.between(kSoonestResult, kLatestResult);
    m_results.back().report(entrant.slot(), lap, entrant.lineSeconds(), entrant.incidents(),
                            m_tick + ticksOf(delay));
}

void World::record(const std::optional<LapRecord>& lap) {
    if (!lap) {
        return;
    }
    m_laps.push_back(*lap);
    if (lap->car == m_ownSlot && lap->complete) {
        ++m_ownLapsCompleted;
    }
}

void World::workOutStandings() {
    struct Runner {
        int slot;
        double laps;
    };
    std::vector<Runner> order;
    for (const Entrant& entrant : m_entrants) {
        m_standings[static_cast<std::size_t>(entrant.slot())] = Standing();
        if (entrant.car().inWorld()) {
            // On the grid and in formation a car is still before the start of its lap 0.
            const bool beforeStart = m_weekend.isRace() && entrant.timer().lap() == 0;
            order.push_back({entrant.slot(), entrant.timer().lap() + entrant.car().lapDistPct() -
                                                 (beforeStart ? 1.0 : 0.0)});
        }
    }
    std::sort(order.begin(), order.end(), [](const Runner& a, const Runner& b) {
        return a.laps != b.laps ? a.laps > b.laps : a.slot < b.slot;
    });
    std::vector<std::pair<int, int>> classCounts;
    for (std::size_t place = 0; place < order.size(); ++place) {
        Standing& standing = m_standings[static_cast<std::size_t>(order[place].slot)];
        standing.position = static_cast<int>(place) + 1;
        standing.behindLeader = (order.front().laps - order[place].laps) * m_track.lapTime();
        standing.behindNext =
            place == 0 ? 0.0 : (order[place - 1].laps - order[place].laps) * m_track.lapTime();
        const int classId =
            m_entrants[static_cast<std::size_t>(order[place].slot)].driver().model->classId;
        auto count = std::find_if(classCounts.begin(), classCounts.end(),
                                  [&](const auto& entry) { return entry.first == classId; });
        if (count == classCounts.end()) {
            count = classCounts.insert(classCounts.end(), {classId, 0});
        }
        standing.classPosition = ++count->second;
    }
}

}  // namespace simulator
