#include "tools/simulator/playback.h"

#include <array>

namespace simulator {

namespace {

constexpr std::array<int, 4> kOtherSpeeds = {0, 2, 4, 8};

// Laps at normal speed between two searches, and the duration of a search in seconds.
constexpr double kFewestLaps = 2.4;
constexpr double kMostLaps = 4.0;
constexpr double kShortestSearch = 2.0;
constexpr double kLongestSearch = 5.0;

}  // namespace

Playback::Playback(bool replay, double lapSeconds, Random random)
    : m_replay(replay),
      m_lapSeconds(lapSeconds),
      m_random(random),
      m_snapshotsLeft(ticksOf(lapSeconds * kMostLaps)) {}

void Playback::advance() {
    if (!m_replay || --m_snapshotsLeft > 0) {
        return;
    }
    if (m_speed == 1) {
        const auto drawn = m_random.below(static_cast<int>(kOtherSpeeds.size()));
        m_speed = kOtherSpeeds[static_cast<std::size_t>(drawn)];
        m_snapshotsLeft = ticksOf(m_random.between(kShortestSearch, kLongestSearch));
    } else {
        m_speed = 1;
        m_snapshotsLeft = ticksOf(m_lapSeconds * m_random.between(kFewestLaps, kMostLaps));
    }
}

}  // namespace simulator
