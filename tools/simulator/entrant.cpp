#include "tools/simulator/entrant.h"

#include <utility>

namespace simulator {

namespace {

constexpr double kColdTyrePace = 0.955;
constexpr double kCoolDownPace = 0.80;
constexpr double kComingInPace = 0.98;
constexpr double kLittleFuel = 5.0;      // litres
constexpr double kSecondsToGetIn = 3.0;  // from sitting down to driving off
constexpr int kIncidentOneLapIn = 9;

}  // namespace

Entrant::Entrant(int slot, Driver driver, const Track& track, double stallDistance,
                 SettlingDelay settling, Random random)
    : m_slot(slot),
      m_driver(std::move(driver)),
      m_random(random.stream(0)),
      m_car(track, random.stream(1), m_driver.model->pace * m_random.between(0.955, 1.0),
            stallDistance),
      m_timer(settling, random.stream(2)) {}

std::optional<LapRecord> Entrant::startSession(const TickContext& context) {
    std::optional<LapRecord> cut = cutShort(context.tick, context.session);
    m_car.leaveWorld();
    m_timer.reset();
    m_finished = false;
    m_coldTyres = true;
    m_waiting = false;
    m_lapsInStint = 0;
    m_pitStops = 0;
    m_incidents = 0;
    m_lineSeconds = 0.0;
    return cut;
}

std::optional<LapRecord> Entrant::leave(const TickContext& context) {
    std::optional<LapRecord> cut = cutShort(context.tick, context.session);
    m_car.leaveWorld();
    m_timer.abandonLap();
    m_waiting = false;
    m_present = false;
    return cut;
}

void Entrant::enterGarage(const TickContext& context, double waitSeconds) {
    m_car.park();
    m_waiting = true;
    m_leaveAt = context.tick + ticksOf(waitSeconds);
    m_getInAt = m_leaveAt - ticksOf(kSecondsToGetIn);
    planNextStop(context);
}

void Entrant::enterGridSlot(double distance, int lapsToStop) {
    m_car.enterGridSlot(distance);
    m_lapsToStop = lapsToStop;
}

void Entrant::startFormation(const TickContext& context) {
    if (m_car.place() == Place::Grid) {
        m_car.driveOff();
        openStretch(LapKind::Out, context.tick);
    }
}

EntrantStep Entrant::advance(const TickContext& context) {
    decideToLeave(context);
    const double tickStart = context.sessionSeconds - kSecondsPerTick;
    const CarStep moved = m_car.advance(orders(context));
    EntrantStep step;
    if (moved.leftPitRoad) {
        openStretch(LapKind::Out, context.tick);
    }
    if (moved.crossedLineAfter && !context.formation) {
        passLine(tickStart + *moved.crossedLineAfter, context, step);
    }
    if (moved.enteredPitRoad) {
        if (m_stretch && m_stretch->kind == LapKind::Flying) {
            m_stretch->kind = LapKind::In;
        }
        step.stretch = cutShort(context.tick, context.session);
    }
    if (m_car.place() == Place::Stall && !m_waiting) {
        comeToRest(context);
        step.stopped = true;
    }
    m_timer.settle(context.tick);
    return step;
}

std::optional<LapRecord> Entrant::cutShort(Tick tick, int session) {
    if (!m_stretch) {
        return std::nullopt;
    }
    const LapRecord record{m_slot,       m_stretch->lap, m_stretch->kind,  false,
                           std::nullopt, session,        m_stretch->start, tick};
    m_stretch.reset();
    return record;
}

Orders Entrant::orders(const TickContext& context) const {
    Orders orders;
    orders.formation = context.formation;
    if (m_finished) {
        orders.paceFactor = kCoolDownPace;
    } else if (m_coldTyres) {
        orders.paceFactor = kColdTyrePace;
    } else if (m_car.stopPlanned()) {
        orders.paceFactor = kComingInPace;
    }
    return orders;
}

void Entrant::decideToLeave(const TickContext& context) {
    if (!m_waiting) {
        return;
    }
    if (context.tick >= m_getInAt) {
        m_car.getIn();
    }
    if (context.tick >= m_leaveAt && context.pitsOpen) {
        m_car.driveOff();
        m_waiting = m_car.place() == Place::Stall;
    }
}

void Entrant::planNextStop(const TickContext& context) {
    constexpr int kFewestLaps = 3;
    constexpr int kMostLaps = 7;
    constexpr int kRaceStintLaps = 40;
    m_lapsToStop = context.race ? kRaceStintLaps : m_random.whole(kFewestLaps, kMostLaps);
    m_car.refuelTo(m_random.between(0.7, 0.95) * Car::kTank);
}

void Entrant::openStretch(LapKind kind, Tick tick) {
    m_stretch = Stretch{kind, m_timer.lap(), tick};
}

void Entrant::passLine(double seconds, const TickContext& context, EntrantStep& step) {
    const TimedLap lap = m_timer.crossLine(seconds, context.tick);
    step.officialLap = lap;
    m_lineSeconds = seconds;
    if (m_random.below(kIncidentOneLapIn) == 0) {
        m_incidents += m_random.whole(1, 2);
    }
    if (m_car.place() != Place::Track) {
        return;
    }
    if (m_stretch) {
        step.stretch = LapRecord{m_slot,      m_stretch->lap,  m_stretch->kind,  true,
                                 lap.seconds, context.session, m_stretch->start, context.tick};
    }
    openStretch(LapKind::Flying, context.tick);
    m_coldTyres = false;
    ++m_lapsInStint;
    --m_lapsToStop;
    m_finished = m_finished || context.over;
    if (m_lapsToStop <= 0 || m_finished || m_car.fuel() < kLittleFuel) {
        m_car.planStop(true);
    }
}

void Entrant::comeToRest(const TickContext& context) {
    constexpr double kShortestStop = 9.0;
    constexpr double kLongestRaceStop = 16.0;
    constexpr double kLongestStop = 28.0;
    m_waiting = true;
    m_coldTyres = true;
    m_lapsInStint = 0;
    ++m_pitStops;
    m_getInAt = context.tick;
    m_leaveAt = context.tick + ticksOf(m_random.between(
                                   kShortestStop, context.race ? kLongestRaceStop : kLongestStop));
    planNextStop(context);
}

}  // namespace simulator
