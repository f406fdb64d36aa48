#include "tools/simulator/weekend.h"

#include <algorithm>
#include <utility>

namespace simulator {

namespace {

constexpr double kLoadingSeconds = 4.0;
constexpr double kGridSeconds = 8.0;
constexpr double kEnginesSeconds = 5.0;
constexpr double kCoolDownSeconds = 10.0;

// The race starts when the first car is this close to the line again.
constexpr double kGreenAtLapShare = 0.978;

// Time that cars on the track get to finish after the flag, in laps.
constexpr double kCheckeredLaps = 1.6;

SessionState firstState(const SessionPlan& plan) {
    return plan.type == SessionType::Race ? SessionState::GetInCar : SessionState::Racing;
}

}  // namespace

Weekend::Weekend(std::vector<SessionPlan> plans, double lapMeters, double lapSeconds, Random random)
    : m_plans(std::move(plans)),
      m_lapMeters(lapMeters),
      m_lapSeconds(lapSeconds),
      m_random(random),
      m_state(firstState(m_plans.front())) {
    drawIdentity();
}

WeekendEvent Weekend::advance(Tick tick, const SessionProgress& progress) {
    const double inState = secondsOf(tick - m_stateStart);
    if (!m_loaded) {
        if (inState < kLoadingSeconds) {
            return WeekendEvent::None;
        }
        m_loaded = true;
        enter(firstState(plan()), tick);
        return WeekendEvent::CarsLoaded;
    }
    switch (m_state) {
        case SessionState::GetInCar:
            return inState >= kGridSeconds ? enter(SessionState::Warmup, tick) : WeekendEvent::None;
        case SessionState::Warmup:
            return inState >= kEnginesSeconds ? enter(SessionState::ParadeLaps, tick)
                                              : WeekendEvent::None;
        case SessionState::ParadeLaps:
            return progress.leaderMeters >= kGreenAtLapShare * m_lapMeters
                       ? enter(SessionState::Racing, tick)
                       : WeekendEvent::None;
        case SessionState::Racing:
            return isOver(tick, progress) ? enter(SessionState::Checkered, tick)
                                          : WeekendEvent::None;
        case SessionState::Checkered:
            return progress.allIn || inState >= kCheckeredLaps * m_lapSeconds
                       ? enter(SessionState::CoolDown, tick)
                       : WeekendEvent::None;
        case SessionState::CoolDown:
            return inState >= kCoolDownSeconds ? nextSession(tick) : WeekendEvent::None;
    }
    return WeekendEvent::None;
}

double Weekend::remainingSeconds(Tick tick) const {
    if (!plan().seconds) {
        return kNoTimeLimit;
    }
    return std::max(0.0, *plan().seconds - sessionSeconds(tick));
}

int Weekend::remainingLaps(int leaderLaps) const {
    return plan().laps ? std::max(0, *plan().laps - leaderLaps) : kNoLapLimit;
}

WeekendEvent Weekend::enter(SessionState state, Tick tick) {
    m_state = state;
    m_stateStart = tick;
    return WeekendEvent::StateChanged;
}

WeekendEvent Weekend::nextSession(Tick tick) {
    const bool last = m_number + 1 == m_plans.size();
    m_number = last ? 0 : m_number + 1;
    if (last) {
        drawIdentity();
    }
    ++m_uniqueId;
    m_loaded = false;
    m_sessionStart = tick;
    enter(SessionState::GetInCar, tick);
    return last ? WeekendEvent::WeekendChanged : WeekendEvent::SessionChanged;
}

bool Weekend::isOver(Tick tick, const SessionProgress& progress) const {
    const bool outOfTime = plan().seconds && sessionSeconds(tick) >= *plan().seconds;
    const bool outOfLaps = plan().laps && progress.leaderLaps >= *plan().laps;
    return outOfTime || outOfLaps;
}

void Weekend::drawIdentity() {
    m_sessionId = m_random.whole(210000000, 219999999);
    m_subSessionId = m_random.whole(61000000, 69999999);
}

}  // namespace simulator
