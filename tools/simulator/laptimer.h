#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/random.h"

#include <optional>

namespace simulator {

/** How many ticks after the line a car's lap counters and times change. */
struct SettlingDelay {
    int least;
    int most;
};

/** A lap that has just been completed. */
struct TimedLap {
    int number;                     // the value of lap() during the lap
    std::optional<double> seconds;  // no value when it did not start at the line
};

/**
 * The official timing of one car. A lap runs from line to line and includes the part on pit road.
 * The first lap of a session starts in the pits or on the grid and has no time.
 *
 * lap() increases at the line. All other values (completed laps, last and best lap, running lap
 * time) change together some ticks later, as in the real timing. So after a lap without a time
 * there are some ticks in which lap() has increased and the running lap time is still 0.
 */
class LapTimer {
public:
    LapTimer(SettlingDelay delay, Random random) : m_delay(delay), m_random(random) {}

    /** Forgets everything for a new session. */
    void reset();

    /** Abandons the running lap, as when the car is towed. */
    void abandonLap();

    /** The car has passed the line at `seconds`, within tick `tick`. */
    TimedLap crossLine(double seconds, Tick tick);

    /** Publishes what is due. Call it once in each tick, after crossLine(). */
    void settle(Tick tick);

    /** Number of the running lap, 0 before the first line. */
    int lap() const { return m_lap; }

    /** Published number of completed laps: one less than lap() once published, at first -1. */
    int lapCompleted() const { return m_lapCompleted; }

    double lastLapTime() const { return m_last; }  // s, -1 without one
    double bestLapTime() const { return m_best; }  // s, -1 without one
    int bestLap() const { return m_bestLap; }      // number, -1 without one

    /** Published running lap time at `seconds`, 0 while the lap has no start. */
    double currentLapTime(double seconds) const;

private:
    struct Pending {
        Tick due;
        TimedLap lap;
    };

    void publish(const Pending& pending);

    SettlingDelay m_delay;
    Random m_random;
    int m_lap = 0;
    std::optional<double> m_start;           // of the lap being driven
    std::optional<double> m_publishedStart;  // of the lap that the published time belongs to
    std::optional<Pending> m_pending;
    int m_lapCompleted = -1;
    double m_last = -1.0;
    double m_best = -1.0;
    int m_bestLap = -1;
};

}  // namespace simulator
