#pragma once

#include "tools/simulator/car.h"
#include "tools/simulator/random.h"
#include "tools/simulator/track.h"
#include "tools/simulator/weather.h"

#include <array>

namespace simulator {

/** Samples that the car measures within one tick. */
inline constexpr int kSubSamples = 6;

using SubSamples = std::array<double, kSubSamples>;

/** One corner of the car. */
struct Wheel {
    std::array<double, 3> surface{};  // C, from the inner to the outer edge
    std::array<double, 3> carcass{};  // C, from the inner to the outer edge
    std::array<double, 3> tread{};    // remaining share, 1 when new
    double coldPressure = 0.0;        // kPa
    double pressure = 0.0;            // kPa
    double speed = 0.0;               // m/s at the tread
    double brakeTemperature = 0.0;    // C
    double linePressure = 0.0;        // bar
    double deflection = 0.0;          // m
    double deflectionSpeed = 0.0;     // m/s
    double rideHeight = 0.0;          // m
    double load = 0.0;                // N
    double slipRatio = 0.0;
    double slipAngle = 0.0;  // rad
    double meters = 0.0;     // driven on this set
    SubSamples deflections{};
    SubSamples deflectionSpeeds{};
};

/** The corners in the order of the published names. */
enum WheelIndex { kLeftFront, kRightFront, kLeftRear, kRightRear };

inline constexpr int kWheels = 4;

/**
 * Data that only the user's own car publishes: tyres, suspension, engine temperatures, the electric
 * drive, accelerations sampled within a tick.
 */
class CarSystems {
public:
    CarSystems(const Track& track, Random random);

    /** Fits new tyres and sets all temperatures to that of the air. */
    void service(const Weather& weather);

    /** Resets the values that are counted per lap, when the published lap counter changes. */
    void startLap();

    /** Moves everything by one tick after `car` has been moved. */
    void advance(const Car& car, const Weather& weather);

    const Wheel& wheel(int index) const { return m_wheels[static_cast<std::size_t>(index)]; }

    double waterTemperature() const { return m_water; }                          // C
    double oilTemperature() const { return m_oil; }                              // C
    double oilPressure() const { return m_oilPressure; }                         // bar
    double fuelPressure() const { return m_fuelPressure; }                       // bar
    double manifoldPressure() const { return m_manifold; }                       // bar
    double voltage() const { return m_voltage; }                                 // V
    double batteryEnergy() const { return m_battery; }                           // J
    double deployedThisLap() const { return m_deployed; }                        // J
    double recoveredThisLap() const { return m_recovered; }                      // J
    double motorTorque() const { return m_motorTorque; }                         // N*m
    double motorPower() const { return m_motorPower; }                           // W
    double verticalAcceleration() const { return m_vertical[kSubSamples - 1]; }  // m/s^2
    double pitch() const { return m_pitch; }                                     // rad
    double roll() const { return m_roll; }                                       // rad
    double steeringTorque() const { return m_steeringTorque; }                   // N*m

    const SubSamples& sideAccelerations() const { return m_side; }          // m/s^2
    const SubSamples& forwardAccelerations() const { return m_forward; }    // m/s^2
    const SubSamples& verticalAccelerations() const { return m_vertical; }  // m/s^2
    const SubSamples& yawRates() const { return m_yawRates; }               // rad/s
    const SubSamples& steeringTorques() const { return m_torques; }         // N*m

    static constexpr double kBatteryCapacity = 4.0e6;    // J
    static constexpr double kDeployPerLapLimit = 2.0e6;  // J

private:
    void advanceWheel(int index, const Car& car, const Weather& weather);
    void advanceEngine(const Car& car, const Weather& weather);
    void advanceEnergy(const Car& car);
    void sampleWithinTick(const Car& car);

    const Track* m_track;
    Random m_random;
    std::array<Wheel, kWheels> m_wheels;
    double m_water = 20.0;
    double m_oil = 20.0;
    double m_oilPressure = 0.0;
    double m_fuelPressure = 0.0;
    double m_manifold = 0.0;
    double m_voltage = 12.6;
    double m_battery = 0.6 * kBatteryCapacity;
    double m_deployed = 0.0;
    double m_recovered = 0.0;
    double m_motorTorque = 0.0;
    double m_motorPower = 0.0;
    double m_pitch = 0.0;
    double m_roll = 0.0;
    double m_steeringTorque = 0.0;
    double m_lastSide = 0.0;
    double m_lastForward = 0.0;
    double m_lastYawRate = 0.0;
    SubSamples m_side{};
    SubSamples m_forward{};
    SubSamples m_vertical{};
    SubSamples m_yawRates{};
    SubSamples m_torques{};
};

}  // namespace simulator
