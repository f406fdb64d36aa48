#pragma once

#include "tools/simulator/carsystems.h"
#include "tools/simulator/clock.h"
#include "tools/simulator/entrant.h"
#include "tools/simulator/laprecord.h"
#include "tools/simulator/options.h"
#include "tools/simulator/results.h"
#include "tools/simulator/track.h"
#include "tools/simulator/weather.h"
#include "tools/simulator/weekend.h"

#include <array>
#include <optional>
#include <vector>

namespace simulator {

/** A car's place in the running order. */
struct Standing {
    int position = 0;           // from 1, 0 without a position
    int classPosition = 0;      // the same within its class
    double behindLeader = 0.0;  // s
    double behindNext = 0.0;    // s
};

/**
 * The simulated world: the weekend, the field, the weather and the user's own car. It does not know
 * how it is published. The same options give the same world in every tick and on every machine.
 */
class World {
public:
    explicit World(const Options& options);

    // Entrants and systems point to this object's track.
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /** Moves the world by one tick. */
    void advance();

    /** Ticks since the start of the run. */
    Tick tick() const { return m_tick; }
    double sessionSeconds() const { return m_weekend.sessionSeconds(m_tick); }

    /** Changes with the results, the drivers and the session. */
    int revision() const { return m_revision; }

    const Track& track() const { return m_track; }
    const Weekend& weekend() const { return m_weekend; }
    const Weather& weather() const { return m_weather; }

    /** The slots in use, by car index. */
    const std::vector<Entrant>& entrants() const { return m_entrants; }
    int ownSlot() const { return m_ownSlot; }
    const Entrant& own() const { return m_entrants[static_cast<std::size_t>(m_ownSlot)]; }
    const CarSystems& ownSystems() const { return m_systems; }

    /** Results of the weekend's sessions so far, by session number. */
    const std::vector<Results>& results() const { return m_results; }
    const Standing& standing(int slot) const { return m_standings[static_cast<std::size_t>(slot)]; }

    /** The cars by grid position in a race, empty in other sessions. */
    const std::vector<int>& grid() const { return m_grid; }

    /** Laps that the own car has completed in this run. */
    int ownLapsCompleted() const { return m_ownLapsCompleted; }

    /** Returns the stretches that ended since the last call, in order. */
    std::vector<LapRecord> takeLaps();

    /** Ends all stretches being driven. Call it once, at the end of a run. */
    void finish();

private:
    TickContext context() const;
    SessionProgress progress() const;
    void follow(WeekendEvent event, const TickContext& before);
    void loadCars();
    void loadCar(Entrant& entrant);
    void drawGrid();
    void startFormation();
    void changeField();
    void advanceEntrants();
    void advanceOwnSystems();
    void report(const Entrant& entrant, const TimedLap& lap);
    void record(const std::optional<LapRecord>& lap);
    void workOutStandings();
    void noteChange() { ++m_revision; }

    struct Visitor {
        int slot;
        Tick at;
    };

    Track m_track;
    Random m_random;
    Weekend m_weekend;
    Weather m_weather;
    std::vector<Entrant> m_entrants;
    int m_ownSlot;
    CarSystems m_systems;
    std::vector<Results> m_results;
    std::vector<Standing> m_standings;
    std::vector<int> m_grid;
    std::optional<Visitor> m_joins;
    std::optional<Visitor> m_leaves;
    std::vector<LapRecord> m_laps;
    Tick m_tick = 0;
    int m_revision = 1;
    int m_ownLapsCompleted = 0;
    int m_ownLapOfSystems = -1;
    double m_gridStartMeters = 0.0;
};

}  // namespace simulator
