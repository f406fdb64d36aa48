#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/random.h"
#include "tools/simulator/track.h"

#include <optional>

namespace simulator {

/** Where a car is. Determines how it moves. */
enum class Place {
    OutOfWorld,  // not loaded: no position
    Garage,      // parked in its stall, nobody in it
    Stall,       // standing in its stall with the driver in
    PitIn,       // on pit road on the way to the stall
    PitOut,      // on pit road on the way to the track
    Grid,        // standing on its grid slot
    Track,       // driving on the track
};

/** How to drive a car in a tick. */
struct Orders {
    bool formation = false;   // follow the leader slowly, no racing
    double paceFactor = 1.0;  // 1 on a flying lap, less on cold tyres or while cooling down
};

/** What happened to a car in a tick. */
struct CarStep {
    std::optional<double> crossedLineAfter;  // seconds into the tick at which it passed the line
    bool enteredPitRoad = false;
    bool leftPitRoad = false;
};

/**
 * A car as a moving point on the track with an engine, pedals and a tank. It moves by ticks of
 * simulated time and owns everything except its timing: position, speed, pedals, gear, engine
 * speed, heading and fuel.
 */
class Car {
public:
    /** `pace` is the share of the track's speed that this car reaches on a good lap. */
    Car(const Track& track, Random random, double pace, double stallDistance);

    void leaveWorld();
    void park();
    void enterGridSlot(double distance);

    /** The driver gets in: from the garage to the stall, engine running. */
    void getIn();

    /** Drives off from the stall or the grid slot. */
    void driveOff();

    /** Whether the car enters the pits when it next passes their entry. */
    void planStop(bool stop) { m_stopPlanned = stop; }
    bool stopPlanned() const { return m_stopPlanned; }

    /** Fills the tank towards `liters` while standing in the stall. */
    void refuelTo(double liters) { m_refuelTarget = liters; }

    /** Moves the car by one tick. */
    CarStep advance(const Orders& orders);

    Place place() const { return m_place; }
    bool inWorld() const { return m_place != Place::OutOfWorld; }
    bool onPitRoad() const;
    bool inStall() const { return m_place == Place::Garage || m_place == Place::Stall; }

    /** Metres from the line, 0 to the length of the track. */
    double distance() const { return m_distance; }

    /** Share of the lap, 0 to 1, or -1 when out of the world. */
    double lapDistPct() const;

    double speed() const { return m_speed; }                // m/s
    double acceleration() const { return m_acceleration; }  // along the car, m/s^2
    double sideAcceleration() const;                        // across the car, m/s^2
    double throttle() const { return m_throttle; }          // 0 to 1
    double brake() const { return m_brake; }                // 0 to 1
    double clutch() const { return m_clutch; }              // 0 open to 1 closed
    int gear() const { return m_gear; }                     // 0 is neutral
    double rpm() const { return m_rpm; }
    double steering() const { return m_steering; }  // wheel angle, rad, positive to the left
    double yaw() const;                             // rad, -pi to pi
    double yawRate() const;                         // rad/s
    double fuel() const { return m_fuel; }          // litres
    double fuelUsedPerHour() const { return m_fuelPerHour; }  // kg/h
    double metersDriven() const { return m_metersDriven; }
    bool engineRuns() const;

    /** The capacity of the tank in litres. */
    static constexpr double kTank = 62.0;
    static constexpr double kFuelKgPerLiter = 0.75;
    static constexpr int kGears = 6;
    static constexpr double kIdleRpm = 1100.0;
    static constexpr double kShiftRpm = 7600.0;
    static constexpr double kRedLineRpm = 8000.0;

private:
    double targetSpeed(const Orders& orders) const;
    double pitRoadTarget() const;
    void changeSpeed(double target);
    void stand();
    CarStep move(const Orders& orders);
    void arriveInStall();
    void operate();
    void shift();
    void burn(double meters);
    void drawForm();

    const Track* m_track;
    Random m_random;
    double m_pace;
    double m_stallDistance;

    Place m_place = Place::OutOfWorld;
    bool m_stopPlanned = false;
    double m_distance = 0.0;
    double m_speed = 0.0;
    double m_acceleration = 0.0;
    double m_form = 1.0;         // pace of this lap
    double m_wobblePhase = 0.0;  // places the faster and slower parts of this lap
    double m_throttle = 0.0;
    double m_brake = 0.0;
    double m_clutch = 1.0;
    int m_gear = 0;
    int m_ticksOfShift = 0;
    double m_rpm = 0.0;
    double m_steering = 0.0;
    double m_fuel = kTank;
    double m_fuelPerHour = 0.0;
    double m_refuelTarget = 0.0;
    double m_metersDriven = 0.0;
};

}  // namespace simulator
