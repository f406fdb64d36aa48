#pragma once

#include "tools/simulator/car.h"
#include "tools/simulator/clock.h"
#include "tools/simulator/driver.h"
#include "tools/simulator/laprecord.h"
#include "tools/simulator/laptimer.h"
#include "tools/simulator/random.h"
#include "tools/simulator/track.h"

#include <optional>

namespace simulator {

/** The state of the session that all entrants see in a tick. */
struct TickContext {
    Tick tick;
    double sessionSeconds;
    int session;
    bool race;
    bool pitsOpen;
    bool formation;  // the field moves, but nobody races yet
    bool over;       // the flag was shown: finish the lap, then come in
};

/** What an entrant did in a tick. */
struct EntrantStep {
    std::optional<TimedLap> officialLap;  // the line was passed and counted
    std::optional<LapRecord> stretch;     // a stretch on the track ended
    bool stopped = false;                 // the car has stopped in its stall
};

/**
 * A driver with a car in one slot: decides when to leave the pits and when to come in, and keeps
 * the official timing and the record of what was driven.
 */
class Entrant {
public:
    Entrant(int slot, Driver driver, const Track& track, double stallDistance,
            SettlingDelay settling, Random random);

    int slot() const { return m_slot; }
    const Driver& driver() const { return m_driver; }
    const Car& car() const { return m_car; }
    const LapTimer& timer() const { return m_timer; }

    /** Whether the driver is listed: has joined and not left. */
    bool present() const { return m_present; }
    void join() { m_present = true; }

    /** Laps since the car was last in its stall. */
    int lapsInStint() const { return m_lapsInStint; }
    int pitStops() const { return m_pitStops; }
    int incidents() const { return m_incidents; }

    /** Session seconds of the last line crossing. */
    double lineSeconds() const { return m_lineSeconds; }

    /** Starts a new session out of the world. Returns the stretch being driven, if any. */
    std::optional<LapRecord> startSession(const TickContext& context);

    /** The driver leaves for good. */
    std::optional<LapRecord> leave(const TickContext& context);

    /** Enters the garage, and leaves for the track `waitSeconds` after the pits open. */
    void enterGarage(const TickContext& context, double waitSeconds);
    void enterGridSlot(double distance, int lapsToStop);

    /** Starts the formation lap. */
    void startFormation(const TickContext& context);

    EntrantStep advance(const TickContext& context);

    /** Ends the stretch being driven where it is, as at the end of the run. */
    std::optional<LapRecord> cutShort(Tick tick, int session);

private:
    Orders orders(const TickContext& context) const;
    void decideToLeave(const TickContext& context);
    void planNextStop(const TickContext& context);
    void openStretch(LapKind kind, Tick tick);
    void passLine(double seconds, const TickContext& context, EntrantStep& step);
    void comeToRest(const TickContext& context);

    struct Stretch {
        LapKind kind;
        int lap;
        Tick start;
    };

    int m_slot;
    Driver m_driver;
    Random m_random;
    Car m_car;
    LapTimer m_timer;
    bool m_present = false;
    bool m_finished = false;  // has passed the line after the flag
    bool m_coldTyres = true;
    Tick m_getInAt = 0;
    Tick m_leaveAt = 0;
    bool m_waiting = false;  // in the stall until it is time to leave
    int m_lapsToStop = 0;
    int m_lapsInStint = 0;
    int m_pitStops = 0;
    int m_incidents = 0;
    double m_lineSeconds = 0.0;
    std::optional<Stretch> m_stretch;
};

}  // namespace simulator
