#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/random.h"

#include <optional>

namespace simulator {

/** How long after the line a car's own lap counters and times take their new values, in ticks. */
struct SettlingDelay {
    int least;
    int most;
};

/** A lap that has just been driven to its end. */
struct TimedLap {
    int number;                     // what lap() was while it was driven
    std::optional<double> seconds;  // none when it did not start at the line
};

/**
 * The official timing of one car. A lap runs from line to line, the part on pit road included; the
 * first one of a session starts in the pits or on the grid and has no time.
 *
 * At the line lap() counts on at once. What else the world sees (laps completed, last and best lap,
 * the running lap time) keeps its old value for some ticks more and then changes all in one tick,
 * as the simulator's timing does. So a lap without a time is followed by some ticks in which lap()
 * has moved on and the running lap time is still 0.
 */
class LapTimer {
public:
    LapTimer(SettlingDelay delay, Random random) : m_delay(delay), m_random(random) {}

    /** A new session: everything is forgotten. */
    void reset();

    /** The running lap is given up without an end, as when the car is towed. */
    void abandonLap();

    /** The car has passed the line at `seconds`, within tick `tick`. */
    TimedLap crossLine(double seconds, Tick tick);

    /** To be called once in each tick after crossLine(); settles what is due. */
    void settle(Tick tick);

    /** Number of the running lap: 0 up to the first line. */
    int lap() const { return m_lap; }

    /** Laps completed as published: one less than lap() once settled, so -1 before the first line.
     */
    int lapCompleted() const { return m_lapCompleted; }

    double lastLapTime() const { return m_last; }  // s, -1 when there is none
    double bestLapTime() const { return m_best; }  // s, -1 when there is none
    int bestLap() const { return m_bestLap; }      // number, -1 when there is none

    /** Running lap time as published at `seconds`; 0 while the lap has no start. */
    double currentLapTime(double seconds) const;

    /** The time at which the running lap began, once published. */
    std::optional<double> lapStart() const { return m_publishedStart; }

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
    std::optional<double> m_publishedStart;  // of the lap that the published time still counts
    std::optional<Pending> m_pending;
    int m_lapCompleted = -1;
    double m_last = -1.0;
    double m_best = -1.0;
    int m_bestLap = -1;
};

}  // namespace simulator
