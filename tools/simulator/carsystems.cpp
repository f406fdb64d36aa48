#include "tools/simulator/carsystems.h"

#include "tools/simulator/wave.h"

#include <algorithm>
#include <cmath>

namespace simulator {

namespace {

constexpr double kGravity = 9.81;
constexpr double kCarMass = 1290.0;  // kg without fuel
constexpr double kWheelLoad = kCarMass * kGravity / 4.0;
constexpr double kColdPressure = 152.0;    // kPa
constexpr double kTreadPerMeter = 2.2e-6;  // lost at full slip

bool isLeft(int index) {
    return index == kLeftFront || index == kLeftRear;
}

bool isFront(int index) {
    return index == kLeftFront || index == kRightFront;
}

// Moves `value` towards `aim` with a time constant of `seconds`.
void approach(double& value, double aim, double seconds) {
    value += (aim - value) * kSecondsPerTick / seconds;
}

}  // namespace

CarSystems::CarSystems(const Track& track, Random random) : m_track(&track), m_random(random) {}

void CarSystems::service(const Weather& weather) {
    for (Wheel& wheel : m_wheels) {
        wheel = Wheel();
        wheel.surface.fill(weather.track());
        wheel.carcass.fill(weather.track());
        wheel.tread.fill(1.0);
        wheel.coldPressure = kColdPressure + 2.0 * m_random.bellShaped();
        wheel.pressure = wheel.coldPressure;
        wheel.brakeTemperature = weather.air() + 60.0;
    }
}

void CarSystems::startLap() {
    m_deployed = 0.0;
    m_recovered = 0.0;
}

void CarSystems::advance(const Car& car, const Weather& weather) {
    m_roll = 0.0022 * car.sideAcceleration();
    m_pitch = -0.0016 * car.acceleration() + m_track->slope(car.distance());
    m_steeringTorque = 0.55 * car.steering() * std::min(1.0, car.speed() / 30.0) * 9.0;
    for (int index = 0; index < kWheels; ++index) {
        advanceWheel(index, car, weather);
    }
    advanceEngine(car, weather);
    advanceEnergy(car);
    sampleWithinTick(car);
}

void CarSystems::advanceWheel(int index, const Car& car, const Weather& weather) {
    Wheel& wheel = m_wheels[static_cast<std::size_t>(index)];
    const double outwards = (isLeft(index) ? -1.0 : 1.0) * car.sideAcceleration();
    const double forwards = (isFront(index) ? -1.0 : 1.0) * car.acceleration();
    const double wing = 0.42 * car.speed() * car.speed();
    const double load =
        kWheelLoad * (1.0 + 0.035 * outwards + 0.018 * forwards) + wing + car.fuel() * 1.8;
    wheel.load = std::max(150.0, load);

    wheel.slipRatio = std::clamp(
        0.012 * (isFront(index) ? -6.0 * car.brake() : 2.0 * car.throttle() - 4.0 * car.brake()),
        -0.12, 0.12);
    wheel.slipAngle = 0.0032 * car.sideAcceleration() * (isFront(index) ? 1.1 : 0.9);
    wheel.speed = car.speed() * (1.0 + wheel.slipRatio);
    const double meters = car.speed() * kSecondsPerTick;
    wheel.meters += meters;

    const double work = car.speed() / 50.0 *
                        (0.25 + std::abs(wheel.slipAngle) * 12.0 + std::abs(wheel.slipRatio) * 6.0);
    for (std::size_t zone = 0; zone < wheel.surface.size(); ++zone) {
        // The inner edge works more because of the camber, the outer edge in bends.
        const double share = zone == 0 ? 1.12 : (zone == 1 ? 1.0 : 0.9 + 0.02 * std::abs(outwards));
        approach(wheel.surface[zone], weather.track() + 52.0 * work * share, 6.0);
        approach(wheel.carcass[zone], wheel.surface[zone], 45.0);
        wheel.tread[zone] = std::max(0.0, wheel.tread[zone] - kTreadPerMeter * meters * work);
    }
    wheel.pressure =
        wheel.coldPressure * (273.15 + wheel.carcass[1]) / (273.15 + weather.air() + 6.0);

    wheel.linePressure = car.brake() * (isFront(index) ? 62.0 : 44.0);
    const double brakeHeat =
        weather.air() + 60.0 + 900.0 * car.brake() * car.speed() / kWheels / 15.0;
    approach(wheel.brakeTemperature, brakeHeat, brakeHeat > wheel.brakeTemperature ? 3.0 : 25.0);

    const double before = wheel.deflection;
    const double bumps = car.speed() > 0.0 ? 0.0016 * m_random.bellShaped() : 0.0;
    wheel.deflection = wheel.load / 185000.0 + bumps;
    wheel.deflectionSpeed = (wheel.deflection - before) * kTicksPerSecond;
    wheel.rideHeight = (isFront(index) ? 0.062 : 0.078) - wheel.deflection * 0.6;
    for (std::size_t sample = 0; sample < wheel.deflections.size(); ++sample) {
        const double share = static_cast<double>(sample + 1) / kSubSamples;
        wheel.deflections[sample] = before + share * (wheel.deflection - before);
        wheel.deflectionSpeeds[sample] = wheel.deflectionSpeed * (0.9 + 0.1 * share);
    }
}

void CarSystems::advanceEngine(const Car& car, const Weather& weather) {
    const bool runs = car.engineRuns();
    const double effort = car.throttle() * car.rpm() / Car::kRedLineRpm;
    approach(m_water, runs ? 74.0 + 16.0 * effort + 0.2 * weather.air() : weather.air(),
             runs ? 60.0 : 900.0);
    approach(m_oil, runs ? 82.0 + 26.0 * effort + 0.2 * weather.air() : weather.air(),
             runs ? 90.0 : 900.0);
    approach(m_oilPressure, runs ? 1.6 + 3.9 * car.rpm() / Car::kRedLineRpm : 0.0, 0.3);
    approach(m_fuelPressure, runs ? 4.1 + 0.3 * effort : 0.0, 0.3);
    approach(m_manifold, runs ? 0.32 + 0.66 * car.throttle() : 0.95, 0.08);
    approach(m_voltage, runs ? 13.9 - 0.2 * effort : 12.6, 2.0);
}

void CarSystems::advanceEnergy(const Car& car) {
    constexpr double kMotorWatts = 60000.0;
    const bool pushes =
        car.throttle() > 0.95 && m_deployed < kDeployPerLapLimit && m_battery > 0.05e6;
    const bool brakes = car.brake() > 0.1 && car.speed() > 15.0 && m_battery < kBatteryCapacity;
    m_motorPower = pushes ? kMotorWatts : (brakes ? -kMotorWatts * car.brake() : 0.0);
    m_motorTorque = car.rpm() > 100.0 ? m_motorPower / (car.rpm() * 2.0 * kPi / 60.0) : 0.0;
    const double joules = m_motorPower * kSecondsPerTick;
    m_battery = std::clamp(m_battery - joules, 0.0, kBatteryCapacity);
    m_deployed += std::max(0.0, joules);
    m_recovered += std::max(0.0, -joules);
}

void CarSystems::sampleWithinTick(const Car& car) {
    const bool moving = car.speed() > 0.0;
    for (std::size_t sample = 0; sample < kSubSamples; ++sample) {
        const double share = static_cast<double>(sample + 1) / kSubSamples;
        m_side[sample] = m_lastSide + share * (car.sideAcceleration() - m_lastSide);
        m_forward[sample] = m_lastForward + share * (car.acceleration() - m_lastForward);
        m_yawRates[sample] = m_lastYawRate + share * (car.yawRate() - m_lastYawRate);
        m_vertical[sample] = kGravity + (moving ? 0.8 * m_random.bellShaped() : 0.0);
        m_torques[sample] = m_steeringTorque + (moving ? 0.15 * m_random.bellShaped() : 0.0);
    }
    m_lastSide = car.sideAcceleration();
    m_lastForward = car.acceleration();
    m_lastYawRate = car.yawRate();
}

}  // namespace simulator
