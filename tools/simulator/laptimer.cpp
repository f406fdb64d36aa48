#include "tools/simulator/laptimer.h"

#include <cmath>

namespace simulator {

namespace {

// The timing has a resolution of 0.1 ms, so that four decimals give the exact time.
constexpr double kTimingStepsPerSecond = 10000.0;

}  // namespace

void LapTimer::reset() {
    m_lap = 0;
    m_start.reset();
    m_publishedStart.reset();
    m_pending.reset();
    m_lapCompleted = -1;
    m_last = -1.0;
    m_best = -1.0;
    m_bestLap = -1;
}

void LapTimer::abandonLap() {
    if (m_pending) {
        publish(*m_pending);
    }
    m_start.reset();
    m_publishedStart.reset();
}

TimedLap LapTimer::crossLine(double seconds, Tick tick) {
    if (m_pending) {
        publish(*m_pending);
    }
    TimedLap lap{m_lap, std::nullopt};
    if (m_start) {
        lap.seconds =
            std::round((seconds - *m_start) * kTimingStepsPerSecond) / kTimingStepsPerSecond;
    }
    const int delay = m_random.whole(m_delay.least, m_delay.most);
    m_pending = Pending{tick + delay, lap};
    m_start = seconds;
    ++m_lap;
    return lap;
}

void LapTimer::settle(Tick tick) {
    if (m_pending && tick >= m_pending->due) {
        publish(*m_pending);
    }
}

double LapTimer::currentLapTime(double seconds) const {
    return m_publishedStart ? seconds - *m_publishedStart : 0.0;
}

void LapTimer::publish(const Pending& pending) {
    const Pending settled = pending;
    m_pending.reset();
    m_lapCompleted = settled.lap.number;
    m_publishedStart = m_start;
    m_last = settled.lap.seconds.value_or(-1.0);
    if (settled.lap.seconds && (m_best < 0.0 || *settled.lap.seconds < m_best)) {
        m_best = *settled.lap.seconds;
        m_bestLap = settled.lap.number;
    }
}

}  // namespace simulator
