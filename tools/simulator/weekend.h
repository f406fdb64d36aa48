#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/random.h"
#include "tools/simulator/session.h"

#include <cstdint>
#include <vector>

namespace simulator {

/** What a session's course depends on, as it stands in a tick. */
struct SessionProgress {
    double leaderMeters = 0.0;  // driven by the car on the first grid slot since it moved off
    int leaderLaps = 0;         // most laps that any car has completed
    bool allIn = false;         // no car is on the track any more
};

/** What changed in a tick. */
enum class WeekendEvent {
    None,
    StateChanged,
    SessionChanged,  // the next session of the weekend has begun: cars out of the world
    WeekendChanged,  // a new weekend with new identities has begun: cars out of the world
    CarsLoaded,      // cars come into the world: garage or grid
};

/**
 * The course of a weekend: its sessions one after another, the states of each, the clock. After the
 * last session a new weekend of the same kind begins under a new identity, so a run never ends by
 * itself. A session without limit stays for ever.
 */
class Weekend {
public:
    /** `plans` is not empty; `lapMeters` and `lapSeconds` describe the track. */
    Weekend(std::vector<SessionPlan> plans, double lapMeters, double lapSeconds, Random random);

    /** Moves the weekend to `tick`, the one after the last. */
    WeekendEvent advance(Tick tick, const SessionProgress& progress);

    const std::vector<SessionPlan>& plans() const { return m_plans; }
    const SessionPlan& plan() const { return m_plans[m_number]; }
    int number() const { return static_cast<int>(m_number); }
    SessionState state() const { return m_state; }
    bool isRace() const { return plan().type == SessionType::Race; }

    /** Whether cars are in the world; not so for some seconds between two sessions. */
    bool carsLoaded() const { return m_loaded; }

    /** Whether cars may leave the pits. */
    bool pitsOpen() const { return m_loaded && m_state == SessionState::Racing; }

    double sessionSeconds(Tick tick) const { return secondsOf(tick - m_sessionStart); }
    double remainingSeconds(Tick tick) const;
    int remainingLaps(int leaderLaps) const;

    std::int64_t sessionId() const { return m_sessionId; }
    std::int64_t subSessionId() const { return m_subSessionId; }

    /** Number of the session over all weekends of the run, from 1. */
    int uniqueId() const { return m_uniqueId; }

    /** Published where a time or a number of laps has no limit. */
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
