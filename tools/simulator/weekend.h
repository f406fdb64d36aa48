#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/random.h"
#include "tools/simulator/session.h"

#include <cstdint>
#include <vector>

namespace simulator {

/** The state of the field on which a session's course depends. */
struct SessionProgress {
    double leaderMeters = 0.0;  // driven by the first car on the grid since the start
    int leaderLaps = 0;         // highest number of completed laps
    bool allIn = false;         // no car is left on the track
};

/** What changed in a tick. */
enum class WeekendEvent {
    None,
    StateChanged,
    SessionChanged,  // the next session has begun: cars leave the world
    WeekendChanged,  // a new weekend has begun: cars leave the world
    CarsLoaded,      // cars enter the world, in the garage or on the grid
};

/**
 * The course of a weekend: its sessions with their states, and the clock. After the last session a
 * new weekend of the same kind begins under a new identity, so that a run never ends by itself. A
 * session without a limit never ends.
 */
class Weekend {
public:
    /** `plans` must not be empty. `lapMeters` and `lapSeconds` describe the track. */
    Weekend(std::vector<SessionPlan> plans, double lapMeters, double lapSeconds, Random random);

    /** Moves the weekend to `tick`, which follows the last one. */
    WeekendEvent advance(Tick tick, const SessionProgress& progress);

    const std::vector<SessionPlan>& plans() const { return m_plans; }
    const SessionPlan& plan() const { return m_plans[m_number]; }
    int number() const { return static_cast<int>(m_number); }
    SessionState state() const { return m_state; }
    bool isRace() const { return plan().type == SessionType::Race; }

    /** Whether cars are in the world. False for some seconds between two sessions. */
    bool carsLoaded() const { return m_loaded; }

    /** Whether cars may leave the pits. */
    bool pitsOpen() const { return m_loaded && m_state == SessionState::Racing; }

    double sessionSeconds(Tick tick) const { return secondsOf(tick - m_sessionStart); }
    double remainingSeconds(Tick tick) const;
    int remainingLaps(int leaderLaps) const;

    std::int64_t sessionId() const { return m_sessionId; }
    std::int64_t subSessionId() const { return m_subSessionId; }

    /** Number of the session in the run, counted over all weekends from 1. */
    int uniqueId() const { return m_uniqueId; }

    /** Published for an unlimited time or number of laps. */
    static constexpr double kNoTimeLimit = 604800.0;
    static constexpr int kNoLapLimit = 32767;

private:
    WeekendEvent enter(SessionState state, Tick tick);
    WeekendEvent nextSession(Tick tick);
    bool isOver(Tick tick, const SessionProgress& progress) const;
    void drawIdentity();

    std::vector<SessionPlan> m_plans;
    double m_lapMeters;
    double m_lapSeconds;
    Random m_random;
    std::size_t m_number = 0;
    SessionState m_state;
    bool m_loaded = true;
    Tick m_sessionStart = 0;
    Tick m_stateStart = 0;
    std::int64_t m_sessionId = 0;
    std::int64_t m_subSessionId = 0;
    int m_uniqueId = 1;
};

}  // namespace simulator
