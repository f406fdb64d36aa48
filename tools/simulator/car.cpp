#include "tools/simulator/car.h"

#include "tools/simulator/performance.h"
#include "tools/simulator/wave.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace simulator {

namespace {

// Gentle acceleration and braking on pit road, m/s^2.
constexpr double kPitBraking = 4.0;

// Share of the track's speed in a formation lap, and its limit in m/s.
constexpr double kFormationShare = 0.55;
constexpr double kFormationCeiling = 32.0;

// Speed at which each gear reaches the shift speed of the engine, m/s; entry 0 is neutral.
constexpr std::array<double, Car::kGears + 1> kGearTop = {0.0, 21.0, 31.0, 42.0, 53.0, 65.0, 80.0};

constexpr int kTicksPerShift = 5;
constexpr double kSteeringPerCurvature = 44.0;
constexpr double kRefuelLitersPerTick = 2.4 * kSecondsPerTick;
constexpr double kLitersPerMeterCoasting = 0.00022;
constexpr double kLitersPerMeterFlatOut = 0.00060;
constexpr double kIdleLitersPerTick = 0.0005 * kSecondsPerTick;
constexpr double kPedalShare = 0.30;  // part of the way to its target that a pedal moves in a tick

}  // namespace

Car::Car(const Track& track, Random random, double pace, double stallDistance)
    : m_track(&track), m_random(random), m_pace(pace), m_stallDistance(stallDistance) {
    drawForm();
}

void Car::leaveWorld() {
    m_place = Place::OutOfWorld;
    m_stopPlanned = false;
    stand();
}

void Car::park() {
    m_place = Place::Garage;
    m_distance = m_stallDistance;
    m_fuel = m_random.between(0.55, 0.9) * kTank;
    m_stopPlanned = false;
    stand();
}

void Car::enterGridSlot(double distance) {
    m_place = Place::Grid;
    m_distance = m_track->around(distance);
    m_fuel = m_random.between(0.9, 0.98) * kTank;
    m_stopPlanned = false;
    stand();
}

void Car::getIn() {
    if (m_place == Place::Garage) {
        m_place = Place::Stall;
    }
}

void Car::driveOff() {
    if (m_place == Place::Stall) {
        m_place = Place::PitOut;
    } else if (m_place == Place::Grid) {
        m_place = Place::Track;
    }
}

CarStep Car::advance(const Orders& orders) {
    if (m_place == Place::PitIn || m_place == Place::PitOut || m_place == Place::Track) {
        return move(orders);
    }
    stand();
    if (m_place == Place::Stall && m_fuel < m_refuelTarget) {
        m_fuel = std::min(m_refuelTarget, m_fuel + kRefuelLitersPerTick);
    } else if (engineRuns()) {
        m_fuel -= kIdleLitersPerTick;
    }
    operate();
    return {};
}

bool Car::onPitRoad() const {
    return inStall() || m_place == Place::PitIn || m_place == Place::PitOut;
}

double Car::lapDistPct() const {
    return inWorld() ? m_distance / m_track->length() : -1.0;
}

double Car::sideAcceleration() const {
    return m_speed * m_speed * m_track->curvature(m_distance);
}

double Car::yaw() const {
    // Half a degree of slip for every 10 m/s^2 across the car.
    return wrappedAngle(m_track->heading(m_distance) + 0.0009 * sideAcceleration());
}

double Car::yawRate() const {
    return m_speed * m_track->curvature(m_distance);
}

bool Car::engineRuns() const {
    return m_place != Place::OutOfWorld && m_place != Place::Garage;
}

double Car::targetSpeed(const Orders& orders) const {
    if (m_place != Place::Track) {
        return pitRoadTarget();
    }
    const double limit = m_track->speed(m_distance);
    if (orders.formation) {
        return std::min(limit * kFormationShare, kFormationCeiling);
    }
    const double wobble = 1.0 + 0.006 * wave(m_distance / m_track->length() * 3.0 + m_wobblePhase);
    double target = limit * m_pace * m_form * wobble * orders.paceFactor;
    if (m_stopPlanned) {
        const double room = m_track->ahead(m_distance, m_track->pitEntry());
        const double pitLimit = m_track->description().pitLimitMetersPerS;
        target = std::min(target, std::sqrt(pitLimit * pitLimit + 2.0 * 0.6 * kBraking * room));
    }
    return target;
}

double Car::pitRoadTarget() const {
    const double limit = m_track->description().pitLimitMetersPerS * 0.99;
    if (m_place == Place::PitOut) {
        return limit;
    }
    const double room = m_track->ahead(m_distance, m_stallDistance);
    constexpr double kCreep = 0.4;
    return std::clamp(std::sqrt(2.0 * kPitBraking * 0.8 * room), kCreep, limit);
}

void Car::changeSpeed(double target) {
    const double brakingLimit = (m_place == Place::Track ? 1.2 * kBraking : kPitBraking);
    const double drive = availableAcceleration(m_speed) * (m_place == Place::Track ? 1.0 : 0.6);
    const double before = m_speed;
    m_speed = std::clamp(target, before - brakingLimit * kSecondsPerTick,
                         before + drive * kSecondsPerTick);
    m_acceleration = (m_speed - before) * kTicksPerSecond;
}

void Car::stand() {
    m_speed = 0.0;
    m_acceleration = 0.0;
}

CarStep Car::move(const Orders& orders) {
    changeSpeed(targetSpeed(orders));
    const double meters = m_speed * kSecondsPerTick;
    CarStep step;
    const double toLine = m_track->length() - m_distance;
    if (meters >= toLine) {
        step.crossedLineAfter = toLine / m_speed;
        drawForm();
    }
    const auto reaches = [&](double mark) { return m_track->ahead(m_distance, mark) <= meters; };
    if (m_place == Place::Track && m_stopPlanned && reaches(m_track->pitEntry())) {
        m_place = Place::PitIn;
        step.enteredPitRoad = true;
    } else if (m_place == Place::PitOut && reaches(m_track->pitExit())) {
        m_place = Place::Track;
        step.leftPitRoad = true;
    }
    const bool arrives = m_place == Place::PitIn && reaches(m_stallDistance);
    m_distance = m_track->around(m_distance + meters);
    m_metersDriven += meters;
    burn(meters);
    if (arrives) {
        arriveInStall();
    }
    operate();
    return step;
}

void Car::arriveInStall() {
    m_place = Place::Stall;
    m_distance = m_stallDistance;
    m_stopPlanned = false;
    stand();
}

void Car::operate() {
    const double demand = m_acceleration + drag(m_speed);
    const double full = availableAcceleration(m_speed) + drag(m_speed);
    const bool moving = m_speed > 0.0;
    const double throttleAim = moving ? std::clamp(demand / full, 0.0, 1.0) : 0.0;
    const double brakeAim =
        moving ? std::clamp(-demand / kBraking, 0.0, 1.0) : (engineRuns() ? 0.35 : 0.0);
    m_throttle += kPedalShare * (throttleAim - m_throttle);
    m_brake += kPedalShare * (brakeAim - m_brake);
    const double wheelAim = moving ? m_track->curvature(m_distance) * kSteeringPerCurvature : 0.0;
    m_steering += 0.4 * (wheelAim - m_steering) + (moving ? 0.002 * m_random.bellShaped() : 0.0);
    shift();
}

void Car::shift() {
    if (!engineRuns()) {
        m_gear = 0;
        m_rpm = 0.0;
        m_clutch = 1.0;
        return;
    }
    if (m_speed <= 0.0) {
        m_gear = 0;
        m_clutch = 0.0;
        m_rpm += 0.2 * (kIdleRpm + 15.0 * m_random.bellShaped() - m_rpm);
        return;
    }
    const int before = m_gear;
    if (m_gear == 0) {
        m_gear = 1;
    } else if (m_gear < kGears && m_speed > kGearTop[static_cast<std::size_t>(m_gear)] * 0.985) {
        ++m_gear;
    } else if (m_gear > 1 && m_speed < kGearTop[static_cast<std::size_t>(m_gear) - 1] * 0.86) {
        --m_gear;
    }
    m_ticksOfShift = before != m_gear ? kTicksPerShift : std::max(0, m_ticksOfShift - 1);
    m_clutch = m_ticksOfShift > 0 ? 1.0 - 0.15 * m_ticksOfShift : 1.0;
    const double geared = kShiftRpm * m_speed / kGearTop[static_cast<std::size_t>(m_gear)] +
                          6.0 * m_random.bellShaped();
    m_rpm += 0.45 * (std::max(kIdleRpm, geared) - m_rpm);
}

void Car::burn(double meters) {
    const double liters = meters * (kLitersPerMeterCoasting + kLitersPerMeterFlatOut * m_throttle) +
                          kIdleLitersPerTick;
    m_fuel = std::max(0.0, m_fuel - liters);
    m_fuelPerHour = liters * kTicksPerSecond * 3600.0 * kFuelKgPerLiter;
}

void Car::drawForm() {
    m_form = 1.0 + 0.006 * m_random.bellShaped();
    m_wobblePhase = m_random.fraction();
}

}  // namespace simulator
