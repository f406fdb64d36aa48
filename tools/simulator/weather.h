#pragma once

#include "tools/simulator/random.h"
#include "tools/simulator/wave.h"

namespace simulator {

/** The weather of a run. Its values drift slowly around those drawn at the start. */
class Weather {
public:
    explicit Weather(Random random)
        : m_air(random.between(14.0, 28.0)),
          m_windDirection(random.between(-kPi, kPi)),
          m_phase(random.fraction()),
          m_skies(random.below(4)) {}

    void advance(double seconds) { m_turns = seconds / kDriftSeconds + m_phase; }

    double air() const { return m_air + 1.5 * wave(m_turns); }                   // C
    double track() const { return m_air + 11.0 + 4.0 * wave(m_turns - 0.08); }   // C
    double humidity() const { return 0.55 - 0.08 * wave(m_turns); }              // 0 to 1
    double pressure() const { return 95400.0 + 60.0 * wave(m_turns * 0.3); }     // Pa
    double density() const { return pressure() / (287.05 * (air() + 273.15)); }  // kg/m^3
    double wind() const { return 3.0 + 1.4 * wave(m_turns * 7.0); }              // m/s
    double windDirection() const {
        return wrappedAngle(m_windDirection + 0.3 * wave(m_turns * 3.0));  // rad
    }
    double fog() const { return 0.02 + 0.02 * wave(m_turns * 0.5); }       // 0 to 1
    int skies() const { return m_skies; }                                  // 0 clear to 3 overcast
    double sunHeight() const { return 0.8 + 0.05 * wave(m_turns * 0.2); }  // rad

private:
    static constexpr double kDriftSeconds = 3600.0;

    double m_air;
    double m_windDirection;
    double m_phase;
    int m_skies;
    double m_turns = 0.0;
};

}  // namespace simulator
