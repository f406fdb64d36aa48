#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/random.h"

namespace simulator {

/**
 * The speed of a replay: normal most of the time, sometimes paused or fast for some seconds, as
 * when a user looks for a scene. A live session always runs at 1.
 */
class Playback {
public:
    /** `lapSeconds` determines how long the speed stays the same. */
    Playback(bool replay, double lapSeconds, Random random);

    bool isReplay() const { return m_replay; }

    /** Ticks that the world moves for the next snapshot. */
    int speed() const { return m_speed; }

    /** Call it once for each snapshot. */
    void advance();

private:
    bool m_replay;
    double m_lapSeconds;
    Random m_random;
    int m_speed = 1;
    Tick m_snapshotsLeft;
};

}  // namespace simulator
