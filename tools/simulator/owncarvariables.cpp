#include "tools/simulator/performance.h"
#include "tools/simulator/variabletable.h"
#include "tools/simulator/wave.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace simulator {

namespace {

constexpr double kGravity = 9.81;
constexpr double kGramsPerKilogram = 1000.0;

/** A variable with one element and the source of its value. */
struct Row {
    const char* name;
    irsdk_VarType type;
    const char* unit;
    const char* description;
    double (*value)(const Scene&);
};

const World& worldOf(const Scene& s) {
    return s.world;
}
const Car& carOf(const Scene& s) {
    return s.world.own().car();
}
const LapTimer& timerOf(const Scene& s) {
    return s.world.own().timer();
}
const CarSystems& systemsOf(const Scene& s) {
    return s.world.ownSystems();
}
const Weather& weatherOf(const Scene& s) {
    return s.world.weather();
}
const Weekend& weekendOf(const Scene& s) {
    return s.world.weekend();
}
double yes(bool is) {
    return is ? 1.0 : 0.0;
}
bool driven(const Scene& s) {
    return carOf(s).engineRuns();
}
/** At least 0: a car that has not passed the line yet has -1 completed laps. */
double lapsOfTheLeader(const Scene& s) {
    int laps = 0;
    for (const Entrant& entrant : worldOf(s).entrants()) {
        laps = std::max(laps, entrant.timer().lapCompleted());
    }
    return laps;
}
double lapSeconds(const Scene& s) {
    return timerOf(s).currentLapTime(worldOf(s).sessionSeconds());
}
double northwards(const Scene& s) {
    return carOf(s).speed() * waveCos(carOf(s).yaw() / (2.0 * kPi));
}
double leftwards(const Scene& s) {
    return carOf(s).speed() * wave(carOf(s).yaw() / (2.0 * kPi));
}
double shareOfLap(const Scene& s) {
    return std::max(0.0, carOf(s).lapDistPct());
}

// Time of the best lap up to the car's position, assuming a constant speed.
double behindBest(const Scene& s) {
    const double best = timerOf(s).bestLapTime();
    return best < 0.0 || lapSeconds(s) <= 0.0 ? 0.0 : lapSeconds(s) - best * shareOfLap(s);
}

// A load of the machine from 0 to 1 that oscillates around `middle`.
double machineLoad(const Scene& s, double middle) {
    return middle + 0.1 * wave(worldOf(s).sessionSeconds() / 17.0) +
           0.02 * wave(worldOf(s).sessionSeconds() * 3.1);
}

enum SessionFlag : unsigned {
    kCheckered = 0x1,
    kGreen = 0x4,
    kStartHidden = 0x10000000,
    kStartReady = 0x20000000,
    kStartGo = 0x80000000
};

double sessionFlags(const Scene& s) {
    switch (weekendOf(s).state()) {
        case SessionState::GetInCar:
        case SessionState::Warmup:
            return kStartHidden;
        case SessionState::ParadeLaps:
            return kStartReady;
        case SessionState::Racing:
            return static_cast<double>(kGreen | kStartGo);
        case SessionState::Checkered:
        case SessionState::CoolDown:
            break;
    }
    return kCheckered;
}

enum EngineWarning : unsigned {
    kWaterHot = 0x1,
    kLowFuelPressure = 0x2,
    kStalled = 0x8,
    kPitLimiter = 0x10,
    kRevLimiter = 0x20
};

double engineWarnings(const Scene& s) {
    unsigned warnings = 0;
    if (!driven(s)) {
        warnings |= kStalled | kLowFuelPressure;
    }
    if (driven(s) && carOf(s).onPitRoad()) {
        warnings |= kPitLimiter;
    }
    if (carOf(s).rpm() > Car::kShiftRpm) {
        warnings |= kRevLimiter;
    }
    if (systemsOf(s).waterTemperature() > 110.0) {
        warnings |= kWaterHot;
    }
    return warnings;
}

constexpr std::array kSessionRows = {
    Row{"SessionTime", irsdk_double, "s", "Seconds since the session started",
        [](const Scene& s) { return worldOf(s).sessionSeconds(); }},
    Row{"SessionTick", irsdk_int, "", "Number of this update",
        [](const Scene& s) -> double { return static_cast<double>(worldOf(s).tick()); }},
    Row{"SessionNum", irsdk_int, "", "Number of the session in its weekend",
        [](const Scene& s) -> double { return weekendOf(s).number(); }},
    Row{"SessionState", irsdk_int, "", "State of the session, 1 to 6",
        [](const Scene& s) { return static_cast<double>(weekendOf(s).state()); }},
    Row{"SessionUniqueID", irsdk_int, "", "Number of the session over all weekends",
        [](const Scene& s) -> double { return weekendOf(s).uniqueId(); }},
    Row{"SessionFlags", irsdk_bitField, "", "Flags shown", sessionFlags},
    Row{"SessionTimeRemain", irsdk_double, "s", "Seconds left in the session",
        [](const Scene& s) { return weekendOf(s).remainingSeconds(worldOf(s).tick()); }},
    Row{"SessionTimeTotal", irsdk_double, "s", "Seconds that the session is planned for",
        [](const Scene& s) { return weekendOf(s).plan().seconds.value_or(Weekend::kNoTimeLimit); }},
    Row{"SessionLapsRemain", irsdk_int, "", "Laps left in the session",
        [](const Scene& s) -> double {
            return weekendOf(s).remainingLaps(std::max(0, timerOf(s).lapCompleted()));
        }},
    Row{"SessionLapsTotal", irsdk_int, "", "Laps that the session is planned for",
        [](const Scene& s) -> double {
            return weekendOf(s).plan().laps.value_or(Weekend::kNoLapLimit);
        }},
    Row{"SessionTimeOfDay", irsdk_float, "s", "Seconds since midnight on the track",
        [](const Scene& s) { return 13.5 * 3600.0 + secondsOf(worldOf(s).tick()); }},
    Row{"JokerLap", irsdk_bool, "", "The lap counts as a joker lap",
        [](const Scene&) { return 0.0; }},
    Row{"PitsOpen", irsdk_bool, "", "Pit road may be entered",
        [](const Scene& s) { return yes(weekendOf(s).pitsOpen()); }},
    Row{"StartMode", irsdk_int, "", "Kind of start, 1 while in formation",
        [](const Scene& s) { return yes(weekendOf(s).state() == SessionState::ParadeLaps); }},
    Row{"RadioSpeaker", irsdk_int, "", "Car that speaks on the radio, -1 when none",
        [](const Scene&) { return -1.0; }},
    Row{"ScreenUnits", irsdk_int, "", "Units on the screen, 1 is metric",
        [](const Scene&) { return 1.0; }},
};

constexpr std::array kPlayRows = {
    Row{"ReplayRuns", irsdk_bool, "", "A replay is being played",
        [](const Scene& s) { return yes(s.playback.isReplay() && s.playback.speed() != 0); }},
    Row{"ReplayFrame", irsdk_int, "", "Frame of the replay",
        [](const Scene& s) -> double { return static_cast<double>(worldOf(s).tick()); }},
    Row{"ReplayPlaySpeed", irsdk_int, "", "Speed of the replay, 1 is normal",
        [](const Scene& s) -> double { return s.playback.speed(); }},
    Row{"ReplaySlow", irsdk_bool, "", "The replay runs slower than normal",
        [](const Scene&) { return 0.0; }},
    Row{"ReplayClock", irsdk_double, "s", "Session time of the replay",
        [](const Scene& s) { return worldOf(s).sessionSeconds(); }},
    Row{"ReplaySession", irsdk_int, "", "Session number of the replay",
        [](const Scene& s) -> double { return weekendOf(s).number(); }},
    Row{"CameraCar", irsdk_int, "", "Car that the camera follows",
        [](const Scene& s) -> double { return worldOf(s).ownSlot(); }},
    Row{"CameraGroup", irsdk_int, "", "Group of the camera",
        [](const Scene& s) { return driven(s) ? 1.0 : 9.0; }},
    Row{"CameraNumber", irsdk_int, "", "Camera in its group", [](const Scene&) { return 1.0; }},
    Row{"CameraState", irsdk_bitField, "", "State of the camera system",
        [](const Scene& s) { return driven(s) ? 16.0 : 20.0; }},
    Row{"PicturesPerSecond", irsdk_float, "fps", "Pictures in a second",
        [](const Scene& s) { return 142.0 - 40.0 * machineLoad(s, 0.4); }},
    Row{"LoadMainThread", irsdk_float, "%", "Load of the main thread",
        [](const Scene& s) { return machineLoad(s, 0.42); }},
    Row{"LoadOtherThreads", irsdk_float, "%", "Load of the other threads",
        [](const Scene& s) { return machineLoad(s, 0.21); }},
    Row{"LoadGraphics", irsdk_float, "%", "Load of the graphics card",
        [](const Scene& s) { return machineLoad(s, 0.63); }},
    Row{"NetworkDelay", irsdk_float, "s", "Delay of the network",
        [](const Scene& s) { return 0.031 + 0.01 * machineLoad(s, 0.2); }},
    Row{"NetworkQuality", irsdk_float, "%", "Share of packets that arrive",
        [](const Scene& s) { return 1.0 - 0.01 * machineLoad(s, 0.2); }},
    Row{"PageFaults", irsdk_float, "", "Page faults in a second",
        [](const Scene& s) { return std::floor(8.0 * machineLoad(s, 0.3)); }},
};

constexpr std::array kLapRows = {
    Row{"Lap", irsdk_int, "", "Laps started",
        [](const Scene& s) -> double { return timerOf(s).lap(); }},
    Row{"LapCompleted", irsdk_int, "", "Laps completed",
        [](const Scene& s) -> double { return timerOf(s).lapCompleted(); }},
    Row{"LapDist", irsdk_float, "m", "Metres from the line",
        [](const Scene& s) { return shareOfLap(s) * worldOf(s).track().length(); }},
    Row{"LapDistPct", irsdk_float, "%", "Share of the lap driven",
        [](const Scene& s) { return carOf(s).lapDistPct(); }},
    Row{"LapCurrentLapTime", irsdk_float, "s", "Time of the running lap", lapSeconds},
    Row{"LapLastLapTime", irsdk_float, "s", "Time of the last lap",
        [](const Scene& s) { return timerOf(s).lastLapTime(); }},
    Row{"LapBestLapTime", irsdk_float, "s", "Time of the best lap",
        [](const Scene& s) { return timerOf(s).bestLapTime(); }},
    Row{"LapBestLapNum", irsdk_int, "", "Number of the best lap",
        [](const Scene& s) -> double { return timerOf(s).bestLap(); }},
    Row{"DeltaBestLap", irsdk_float, "s", "Time behind the best lap", behindBest},
    Row{"DeltaBestLapValid", irsdk_bool, "", "The time behind the best lap can be told",
        [](const Scene& s) { return yes(timerOf(s).bestLapTime() > 0.0 && lapSeconds(s) > 0.0); }},
    Row{"DeltaBestLapChange", irsdk_float, "s/s", "Change of the time behind the best lap",
        [](const Scene& s) { return 0.01 * behindBest(s); }},
    Row{"DeltaLastLap", irsdk_float, "s", "Time behind the last lap",
        [](const Scene& s) {
            const double last = timerOf(s).lastLapTime();
            return last < 0.0 ? 0.0 : lapSeconds(s) - last * shareOfLap(s);
        }},
    Row{"RaceLaps", irsdk_int, "", "Laps completed by the leader",
        [](const Scene& s) -> double { return lapsOfTheLeader(s); }},
    Row{"PlayerSlot", irsdk_int, "", "Slot of the own car",
        [](const Scene& s) -> double { return worldOf(s).ownSlot(); }},
    Row{"PlayerPosition", irsdk_int, "", "Place of the own car",
        [](const Scene& s) -> double {
            return worldOf(s).standing(worldOf(s).ownSlot()).position;
        }},
    Row{"PlayerClassPosition", irsdk_int, "", "Place of the own car in its class",
        [](const Scene& s) -> double {
            return worldOf(s).standing(worldOf(s).ownSlot()).classPosition;
        }},
    Row{"PlayerClass", irsdk_int, "", "Class of the own car",
        [](const Scene& s) -> double { return worldOf(s).own().driver().model->classId; }},
    Row{"PlayerIncidents", irsdk_int, "", "Incidents of the own car",
        [](const Scene& s) -> double { return worldOf(s).own().incidents(); }},
    Row{"PlayerTowTime", irsdk_float, "s", "Time that towing still takes",
        [](const Scene&) { return 0.0; }},
    Row{"PlayerExtraWeight", irsdk_float, "kg", "Extra weight by the rules",
        [](const Scene&) { return 0.0; }},
    Row{"PlayerSurface", irsdk_int, "", "Ground below the own car",
        [](const Scene& s) {
            const Car& car = carOf(s);
            return !car.inWorld() ? -1.0 : (car.inStall() ? 1.0 : (car.onPitRoad() ? 2.0 : 3.0));
        }},
    Row{"PlayerCarInPitStall", irsdk_bool, "", "The own car stands in its stall",
        [](const Scene& s) { return yes(carOf(s).inStall()); }},
    Row{"IsOnTrack", irsdk_bool, "", "The driver sits in the car and drives",
        [](const Scene& s) { return yes(driven(s)); }},
    Row{"CarIsOut", irsdk_bool, "", "The car is on the track",
        [](const Scene& s) { return yes(driven(s)); }},
    Row{"InGarage", irsdk_bool, "", "The car is in the garage",
        [](const Scene& s) { return yes(carOf(s).place() == Place::Garage); }},
    Row{"OnPitRoad", irsdk_bool, "", "Between the cones of pit road",
        [](const Scene& s) { return yes(carOf(s).onPitRoad()); }},
    Row{"PitCrewActive", irsdk_bool, "", "The crew is at work",
        [](const Scene& s) { return yes(carOf(s).place() == Place::Stall); }},
    Row{"StintLaps", irsdk_int, "", "Laps since the last stop",
        [](const Scene& s) -> double { return worldOf(s).own().lapsInStint(); }},
    Row{"PitStops", irsdk_int, "", "Stops in this session",
        [](const Scene& s) -> double { return worldOf(s).own().pitStops(); }},
};

constexpr std::array kMotionRows = {
    Row{"Speed", irsdk_float, "m/s", "Speed over ground",
        [](const Scene& s) { return carOf(s).speed(); }},
    Row{"LongAccel", irsdk_float, "m/s^2", "Acceleration along the car",
        [](const Scene& s) { return carOf(s).acceleration(); }},
    Row{"LatAccel", irsdk_float, "m/s^2", "Acceleration across the car",
        [](const Scene& s) { return carOf(s).sideAcceleration(); }},
    Row{"VertAccel", irsdk_float, "m/s^2", "Vertical acceleration",
        [](const Scene& s) { return systemsOf(s).verticalAcceleration(); }},
    Row{"Yaw", irsdk_float, "rad", "Heading of the car",
        [](const Scene& s) { return carOf(s).yaw(); }},
    Row{"YawNorth", irsdk_float, "rad", "Heading of the car to north",
        [](const Scene& s) {
            return wrappedAngle(carOf(s).yaw() -
                                worldOf(s).track().description().northOffsetRadians);
        }},
    Row{"Pitch", irsdk_float, "rad", "Nose up or down",
        [](const Scene& s) { return systemsOf(s).pitch(); }},
    Row{"Roll", irsdk_float, "rad", "Lean to the side",
        [](const Scene& s) { return systemsOf(s).roll(); }},
    Row{"YawRate", irsdk_float, "rad/s", "Turn rate",
        [](const Scene& s) { return carOf(s).yawRate(); }},
    Row{"PitchRate", irsdk_float, "rad/s", "Change of pitch",
        [](const Scene& s) { return -0.004 * carOf(s).acceleration(); }},
    Row{"RollRate", irsdk_float, "rad/s", "Change of roll",
        [](const Scene& s) { return 0.003 * carOf(s).sideAcceleration(); }},
    Row{"VelocityX", irsdk_float, "m/s", "Speed along the car",
        [](const Scene& s) { return carOf(s).speed(); }},
    Row{"VelocityY", irsdk_float, "m/s", "Speed across the car",
        [](const Scene& s) { return 0.0009 * carOf(s).sideAcceleration() * carOf(s).speed(); }},
    Row{"VelocityZ", irsdk_float, "m/s", "Vertical speed",
        [](const Scene& s) {
            return carOf(s).speed() * worldOf(s).track().slope(carOf(s).distance());
        }},
    Row{"SpeedNorth", irsdk_float, "m/s", "Speed to the north", northwards},
    Row{"SpeedWest", irsdk_float, "m/s", "Speed to the west", leftwards},
    Row{"Latitude", irsdk_double, "deg", "Latitude",
        [](const Scene& s) { return 47.2197 + 0.006 * wave(shareOfLap(s)); }},
    Row{"Longitude", irsdk_double, "deg", "Longitude",
        [](const Scene& s) { return 14.7646 + 0.009 * waveCos(shareOfLap(s)); }},
    Row{"Altitude", irsdk_float, "m", "Height above the sea",
        [](const Scene& s) {
            return worldOf(s).track().description().altitudeMeters +
                   worldOf(s).track().height(carOf(s).distance());
        }},
    Row{"Odometer", irsdk_double, "m", "Metres driven in this run",
        [](const Scene& s) { return carOf(s).metersDriven(); }},
    Row{"TrackCurvature", irsdk_float, "1/m", "Turn of the road per metre",
        [](const Scene& s) { return worldOf(s).track().curvature(carOf(s).distance()); }},
    Row{"TrackSlope", irsdk_float, "", "Rise of the road per metre",
        [](const Scene& s) { return worldOf(s).track().slope(carOf(s).distance()); }},
    Row{"DragForce", irsdk_float, "N", "Drag of the air",
        [](const Scene& s) { return 1290.0 * drag(carOf(s).speed()); }},
    Row{"DownForce", irsdk_float, "N", "Load from the wings",
        [](const Scene& s) { return 1.68 * carOf(s).speed() * carOf(s).speed(); }},
    Row{"GForce", irsdk_float, "", "Total acceleration in multiples of gravity",
        [](const Scene& s) {
            const double along = carOf(s).acceleration();
            const double across = carOf(s).sideAcceleration();
            return std::sqrt(along * along + across * across) / kGravity;
        }},
};

constexpr std::array kControlRows = {
    Row{"Throttle", irsdk_float, "%", "Throttle pedal, 1 is full",
        [](const Scene& s) { return carOf(s).throttle(); }},
    Row{"ThrottlePedal", irsdk_float, "%", "Throttle pedal before any help",
        [](const Scene& s) { return std::min(1.0, carOf(s).throttle() * 1.01); }},
    Row{"Brake", irsdk_float, "%", "Brake pedal, 1 is full",
        [](const Scene& s) { return carOf(s).brake(); }},
    Row{"BrakePedal", irsdk_float, "%", "Brake pedal before any help",
        [](const Scene& s) { return std::min(1.0, carOf(s).brake() * 1.02); }},
    Row{"Clutch", irsdk_float, "%", "Clutch, 0 is open and 1 closed",
        [](const Scene& s) { return carOf(s).clutch(); }},
    Row{"ClutchPedal", irsdk_float, "%", "Clutch before any help",
        [](const Scene& s) { return carOf(s).clutch(); }},
    Row{"HandBrake", irsdk_float, "%", "Hand brake", [](const Scene&) { return 0.0; }},
    Row{"AntiLockActive", irsdk_bool, "", "The brakes are being released against locking",
        [](const Scene& s) { return yes(carOf(s).brake() > 0.97); }},
    Row{"TractionControlActive", irsdk_bool, "", "The engine is held back against spinning",
        [](const Scene& s) { return yes(carOf(s).throttle() > 0.9 && carOf(s).gear() == 1); }},
    Row{"Gear", irsdk_int, "", "Gear, 0 is neutral",
        [](const Scene& s) -> double { return carOf(s).gear(); }},
    Row{"RPM", irsdk_float, "revs/min", "Engine speed",
        [](const Scene& s) { return carOf(s).rpm(); }},
    Row{"ShiftLightsFirst", irsdk_float, "revs/min", "Shift lights begin",
        [](const Scene&) { return 6600.0; }},
    Row{"ShiftLightsShift", irsdk_float, "revs/min", "Shift lights say shift",
        [](const Scene&) { return Car::kShiftRpm; }},
    Row{"ShiftLightsBlink", irsdk_float, "revs/min", "Shift lights blink",
        [](const Scene&) { return Car::kRedLineRpm; }},
    Row{"ShiftLightsPct", irsdk_float, "%", "Shift lights lit",
        [](const Scene& s) { return std::clamp((carOf(s).rpm() - 6600.0) / 1000.0, 0.0, 1.0); }},
    Row{"SteeringWheelAngle", irsdk_float, "rad", "Steering wheel angle",
        [](const Scene& s) { return carOf(s).steering(); }},
    Row{"SteeringAngleLimit", irsdk_float, "rad", "Steering wheel angle to its stop",
        [](const Scene&) { return 7.85; }},
    Row{"SteeringTorque", irsdk_float, "N*m", "Steering torque",
        [](const Scene& s) { return systemsOf(s).steeringTorque(); }},
    Row{"SteeringTorquePct", irsdk_float, "%", "Steering torque, 1 is the most",
        [](const Scene& s) {
            return std::min(1.0, std::abs(systemsOf(s).steeringTorque()) / 30.0);
        }},
    Row{"SteeringTorqueLimit", irsdk_float, "%", "Share at which the torque is cut off",
        [](const Scene&) { return 0.95; }},
    Row{"SteeringForces", irsdk_bool, "", "The wheel gives forces",
        [](const Scene&) { return 1.0; }},
    Row{"BrakeBalance", irsdk_float, "%", "Brake balance to the front",
        [](const Scene&) { return 54.5; }},
    Row{"TractionControlSetting", irsdk_float, "", "Setting of traction control",
        [](const Scene&) { return 4.0; }},
    Row{"AntiLockSetting", irsdk_float, "", "Setting of the anti-lock brakes",
        [](const Scene&) { return 3.0; }},
    Row{"Starter", irsdk_bool, "", "The starter is pressed", [](const Scene&) { return 0.0; }},
    Row{"PitLimiter", irsdk_bool, "", "The speed limiter is set",
        [](const Scene& s) { return yes(driven(s) && carOf(s).onPitRoad()); }},
    Row{"DriverMark", irsdk_bool, "", "The driver marks this spot",
        [](const Scene& s) { return yes(worldOf(s).tick() % 3600 < 6); }},
    Row{"RadioButton", irsdk_bool, "", "The radio button is pressed",
        [](const Scene&) { return 0.0; }},
};

constexpr std::array kEngineRows = {
    Row{"WaterTemp", irsdk_float, "C", "Coolant temperature",
        [](const Scene& s) { return systemsOf(s).waterTemperature(); }},
    Row{"WaterLevel", irsdk_float, "l", "Coolant", [](const Scene&) { return 8.4; }},
    Row{"OilTemp", irsdk_float, "C", "Oil temperature",
        [](const Scene& s) { return systemsOf(s).oilTemperature(); }},
    Row{"OilPressure", irsdk_float, "bar", "Oil pressure",
        [](const Scene& s) { return systemsOf(s).oilPressure(); }},
    Row{"OilLevel", irsdk_float, "l", "Oil",
        [](const Scene& s) { return 6.2 - 1e-7 * carOf(s).metersDriven(); }},
    Row{"FuelPressure", irsdk_float, "bar", "Fuel pressure",
        [](const Scene& s) { return systemsOf(s).fuelPressure(); }},
    Row{"FuelLevel", irsdk_float, "l", "Fuel in the tank",
        [](const Scene& s) { return carOf(s).fuel(); }},
    Row{"FuelLevelPct", irsdk_float, "%", "Share of the tank that is filled",
        [](const Scene& s) { return carOf(s).fuel() / Car::kTank; }},
    Row{"FuelPerHour", irsdk_float, "kg/h", "Fuel used",
        [](const Scene& s) { return carOf(s).fuelUsedPerHour(); }},
    Row{"ManifoldPressure", irsdk_float, "bar", "Manifold pressure",
        [](const Scene& s) { return systemsOf(s).manifoldPressure(); }},
    Row{"Voltage", irsdk_float, "V", "Voltage",
        [](const Scene& s) { return systemsOf(s).voltage(); }},
    Row{"EngineWarnings", irsdk_bitField, "", "Warnings of the engine", engineWarnings},
    Row{"EngineRunning", irsdk_bool, "", "The engine runs",
        [](const Scene& s) { return yes(driven(s)); }},
    Row{"EnginePower", irsdk_float, "W", "Power of the engine",
        [](const Scene& s) {
            return 380000.0 * carOf(s).throttle() * carOf(s).rpm() / Car::kRedLineRpm;
        }},
    Row{"EngineTorque", irsdk_float, "N*m", "Torque of the engine",
        [](const Scene& s) { return 520.0 * carOf(s).throttle(); }},
    Row{"EngineMapping", irsdk_int, "", "Setting of the engine", [](const Scene&) { return 2.0; }},
    Row{"AirFlow", irsdk_float, "g/s", "Air that the engine takes",
        [](const Scene& s) {
            return kGramsPerKilogram * weatherOf(s).density() * 2.1e-5 * carOf(s).rpm() *
                   systemsOf(s).manifoldPressure();
        }},
    Row{"BatteryEnergy", irsdk_float, "J", "Energy in the battery",
        [](const Scene& s) { return systemsOf(s).batteryEnergy(); }},
    Row{"BatteryEnergyPct", irsdk_float, "%", "Share of the battery that is charged",
        [](const Scene& s) { return systemsOf(s).batteryEnergy() / CarSystems::kBatteryCapacity; }},
    Row{"EnergyBatteryToMGU_KLap", irsdk_float, "J", "Energy to the motor in this lap",
        [](const Scene& s) { return systemsOf(s).deployedThisLap(); }},
    Row{"EnergyMGU_KLapDeployPct", irsdk_float, "%", "Share of the lap's energy that was used",
        [](const Scene& s) {
            return std::min(1.0, systemsOf(s).deployedThisLap() / CarSystems::kDeployPerLapLimit);
        }},
    Row{"EnergyRecoveredLap", irsdk_float, "J", "Energy from the motor in this lap",
        [](const Scene& s) { return systemsOf(s).recoveredThisLap(); }},
    Row{"MotorPower", irsdk_float, "W", "Power of the motor",
        [](const Scene& s) { return systemsOf(s).motorPower(); }},
    Row{"MotorTorque", irsdk_float, "N*m", "Torque of the motor",
        [](const Scene& s) { return systemsOf(s).motorTorque(); }},
    Row{"StopOrders", irsdk_bitField, "", "Work ordered for the next stop",
        [](const Scene&) { return 31.0; }},
    Row{"StopFuel", irsdk_float, "l", "Fuel ordered for the next stop",
        [](const Scene& s) { return std::max(0.0, 0.9 * Car::kTank - carOf(s).fuel()); }},
    Row{"StopPressureLF", irsdk_float, "kPa", "Pressure ordered, left front",
        [](const Scene& s) { return systemsOf(s).wheel(kLeftFront).coldPressure; }},
    Row{"StopPressureRF", irsdk_float, "kPa", "Pressure ordered, right front",
        [](const Scene& s) { return systemsOf(s).wheel(kRightFront).coldPressure; }},
    Row{"StopPressureLR", irsdk_float, "kPa", "Pressure ordered, left rear",
        [](const Scene& s) { return systemsOf(s).wheel(kLeftRear).coldPressure; }},
    Row{"StopPressureRR", irsdk_float, "kPa", "Pressure ordered, right rear",
        [](const Scene& s) { return systemsOf(s).wheel(kRightRear).coldPressure; }},
    Row{"RepairTime", irsdk_float, "s", "Repairs that must be done",
        [](const Scene&) { return 0.0; }},
    Row{"OptionalRepairTime", irsdk_float, "s", "Repairs that may be done",
        [](const Scene&) { return 0.0; }},
    Row{"RepairsLeft", irsdk_int, "", "Fast repairs left", [](const Scene&) { return 1.0; }},
    Row{"TyreSetsUsed", irsdk_int, "", "Sets of tyres used",
        [](const Scene& s) -> double { return worldOf(s).own().pitStops() + 1; }},
    Row{"TyreCompound", irsdk_int, "", "Tyre compound of the own car",
        [](const Scene& s) -> double { return worldOf(s).ownSlot() % 2; }},
};

constexpr std::array kWeatherRows = {
    Row{"AirTemp", irsdk_float, "C", "Temperature of the air",
        [](const Scene& s) { return weatherOf(s).air(); }},
    Row{"TrackTemp", irsdk_float, "C", "Temperature of the track",
        [](const Scene& s) { return weatherOf(s).track(); }},
    Row{"TrackTempCrew", irsdk_float, "C", "Temperature of the track at pit road",
        [](const Scene& s) { return weatherOf(s).track() - 0.8; }},
    Row{"AirDensity", irsdk_float, "kg/m^3", "Density of the air",
        [](const Scene& s) { return weatherOf(s).density(); }},
    Row{"AirPressure", irsdk_float, "Pa", "Pressure of the air",
        [](const Scene& s) { return weatherOf(s).pressure(); }},
    Row{"RelativeHumidity", irsdk_float, "%", "Humidity of the air",
        [](const Scene& s) { return weatherOf(s).humidity(); }},
    Row{"WindSpeed", irsdk_float, "m/s", "Speed of the wind",
        [](const Scene& s) { return weatherOf(s).wind(); }},
    Row{"WindDirection", irsdk_float, "rad", "Direction of the wind",
        [](const Scene& s) { return weatherOf(s).windDirection(); }},
    Row{"Fog", irsdk_float, "%", "Fog", [](const Scene& s) { return weatherOf(s).fog(); }},
    Row{"Skies", irsdk_int, "", "Clouds, 0 clear to 3 overcast",
        [](const Scene& s) -> double { return weatherOf(s).skies(); }},
    Row{"SunHeight", irsdk_float, "rad", "Height of the sun",
        [](const Scene& s) { return weatherOf(s).sunHeight(); }},
    Row{"SunDirection", irsdk_float, "rad", "Direction of the sun",
        [](const Scene& s) { return wrappedAngle(3.4 + secondsOf(worldOf(s).tick()) / 13750.0); }},
    Row{"Precipitation", irsdk_float, "%", "Rain", [](const Scene&) { return 0.0; }},
    Row{"TrackWetness", irsdk_int, "", "Water on the track, 1 is dry",
        [](const Scene&) { return 1.0; }},
    Row{"WetTyresAllowed", irsdk_bool, "", "Wet tyres are allowed",
        [](const Scene&) { return 0.0; }},
    Row{"HeadWind", irsdk_float, "m/s", "Wind against the car",
        [](const Scene& s) {
            const double angle = weatherOf(s).windDirection() - carOf(s).yaw();
            return weatherOf(s).wind() * waveCos(angle / (2.0 * kPi));
        }},
    Row{"CrossWind", irsdk_float, "m/s", "Wind from the side",
        [](const Scene& s) {
            const double angle = weatherOf(s).windDirection() - carOf(s).yaw();
            return weatherOf(s).wind() * wave(angle / (2.0 * kPi));
        }},
    Row{"SkiesLetter", irsdk_char, "", "Clouds as a letter",
        [](const Scene& s) -> double {
            constexpr std::string_view kLetters = "CPMO";
            return kLetters[static_cast<std::size_t>(weatherOf(s).skies())];
        }},
};

void add(std::vector<Variable>& variables, const Row& row) {
    variables.push_back(
        {.name = row.name,
         .type = row.type,
         .count = 1,
         .unit = row.unit,
         .description = row.description,
         .value = [value = row.value](const Scene& scene, int) { return value(scene); }});
}

template <typename Rows>
void addAll(std::vector<Variable>& variables, const Rows& rows) {
    for (const Row& row : rows) {
        add(variables, row);
    }
}

void addTrackCode(std::vector<Variable>& variables) {
    constexpr int kLetters = 16;
    variables.push_back({.name = "TrackCode",
                         .type = irsdk_char,
                         .count = kLetters,
                         .unit = "",
                         .description = "Short name of the track, padded with zeros",
                         .value = [](const Scene& scene, int letter) -> double {
                             const std::string& name = scene.world.track().description().shortName;
                             const auto index = static_cast<std::size_t>(letter);
                             return index < name.size() ? name[index] : 0;
                         }});
}

}  // namespace

void addOwnCarVariables(std::vector<Variable>& variables) {
    addAll(variables, kSessionRows);
    addAll(variables, kPlayRows);
    addAll(variables, kLapRows);
    addAll(variables, kMotionRows);
    addAll(variables, kControlRows);
    addAll(variables, kEngineRows);
    addAll(variables, kWeatherRows);
    addTrackCode(variables);
}

}  // namespace simulator
