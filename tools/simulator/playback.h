#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/random.h"

namespace simulator {

/**
 * How fast a replay is played: at its own speed most of the time, now and then paused or fast for
 * some seconds, as somebody does who looks for a scene. A live session always runs at 1.
 */
class Playback {
public:
    /** `lapSeconds` gives the measure for how long the speed stays the same. */
    Playback(bool replay, double lapSeconds, Random random);

    bool isReplay() const { return m_replay; }

    /** Ticks by which the world moves on for the next snapshot. */
    int speed() const { return m_speed; }

    /** To be called once for each snapshot. */
    void advance();

private:
    bool m_replay;
    double m_lapSeconds;
    Random m_random;
    int m_speed = 1;
    Tick m_snapshotsLeft;
};

}  // namespace simulator
