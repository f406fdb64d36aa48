#include "tools/simulator/variabletable.h"

namespace simulator {

namespace {

// Elements of each array: one per slot of the simulator.
constexpr int kSlots = 64;

/** The publicly visible data of a car. */
struct CarView {
    const World& world;
    const Entrant& entrant;

    const Car& car() const { return entrant.car(); }
    const LapTimer& timer() const { return entrant.timer(); }
    const Standing& standing() const { return world.standing(entrant.slot()); }
    double share() const { return car().lapDistPct(); }
};

using CarValue = double (*)(const CarView&);

double yes(bool is) {
    return is ? 1.0 : 0.0;
}

// The published surface type under a car.
enum Surface { kNotInWorld = -1, kInPitStall = 1, kApproachingPits = 2, kOnTrack = 3 };

Surface surfaceOf(const Car& car) {
    switch (car.place()) {
        case Place::OutOfWorld:
            return kNotInWorld;
        case Place::Garage:
        case Place::Stall:
            return kInPitStall;
        case Place::PitIn:
        case Place::PitOut:
            return kApproachingPits;
        case Place::Grid:
        case Place::Track:
            break;
    }
    return kOnTrack;
}

enum CarFlag : unsigned { kServiceable = 0x40000, kCheckeredFlag = 0x1, kGreenFlag = 0x4 };

double flagsOf(const CarView& view) {
    const bool over = view.world.weekend().state() == SessionState::Checkered;
    return kServiceable + (over ? kCheckeredFlag : kGreenFlag);
}

/** Adds the arrays. A car that has not joined has the value `absent`. */
class List {
public:
    explicit List(std::vector<Variable>& variables) : m_variables(&variables) {}

    void add(const char* name, irsdk_VarType type, const char* unit, const char* description,
             double absent, CarValue value) {
        m_variables->push_back({.name = name,
                                .type = type,
                                .count = kSlots,
                                .unit = unit,
                                .description = description,
                                .value = [absent, value](const Scene& scene, int slot) {
                                    const auto& entrants = scene.world.entrants();
                                    const auto index = static_cast<std::size_t>(slot);
                                    if (index >= entrants.size() ||
                                        !entrants[index].car().inWorld()) {
                                        return absent;
                                    }
                                    return value({scene.world, entrants[index]});
                                }});
    }

private:
    std::vector<Variable>* m_variables;
};

void addProgress(List& list) {
    list.add("CarIdxLap", irsdk_int, "", "Laps started by car index", -1,
             [](const CarView& v) -> double { return v.timer().lap(); });
    list.add("CarIdxLapCompleted", irsdk_int, "", "Laps completed by car index", -1,
             [](const CarView& v) -> double { return v.timer().lapCompleted(); });
    list.add("CarIdxLapDistPct", irsdk_float, "%", "Share of the lap driven by car index", -1,
             [](const CarView& v) { return v.share(); });
    list.add("CarIdxTrackSurface", irsdk_int, "", "Ground below each car", kNotInWorld,
             [](const CarView& v) -> double { return surfaceOf(v.car()); });
    list.add("CarIdxOnPitRoad", irsdk_bool, "", "Between the cones of pit road by car index", 0,
             [](const CarView& v) { return yes(v.car().onPitRoad()); });
    list.add("CarIdxPosition", irsdk_int, "", "Place in the session by car index", 0,
             [](const CarView& v) -> double { return v.standing().position; });
    list.add("CarIdxClassPosition", irsdk_int, "", "Place within the class by car index", 0,
             [](const CarView& v) -> double { return v.standing().classPosition; });
    list.add("CarIdxClassId", irsdk_int, "", "Class of each car", -1,
             [](const CarView& v) -> double { return v.entrant.driver().model->classId; });
    list.add("CarIdxStintLaps", irsdk_int, "", "Laps since the last stop by car index", 0,
             [](const CarView& v) -> double { return v.entrant.lapsInStint(); });
    list.add("CarIdxPitStops", irsdk_int, "", "Stops in this session by car index", 0,
             [](const CarView& v) -> double { return v.entrant.pitStops(); });
    list.add("CarIdxIncidents", irsdk_int, "", "Incidents in this session by car index", 0,
             [](const CarView& v) -> double { return v.entrant.incidents(); });
    list.add("CarIdxGridSlot", irsdk_int, "", "Grid position by car index", 0,
             [](const CarView& v) -> double {
                 const auto& grid = v.world.grid();
                 for (std::size_t place = 0; place < grid.size(); ++place) {
                     if (grid[place] == v.entrant.slot()) {
                         return static_cast<double>(place + 1);
                     }
                 }
                 return 0.0;
             });
}

void addTimes(List& list) {
    list.add("CarIdxLastLapTime", irsdk_float, "s", "Last lap time by car index", -1,
             [](const CarView& v) { return v.timer().lastLapTime(); });
    list.add("CarIdxBestLapTime", irsdk_float, "s", "Best lap time by car index", -1,
             [](const CarView& v) { return v.timer().bestLapTime(); });
    list.add("CarIdxBestLapNum", irsdk_int, "", "Number of the best lap by car index", -1,
             [](const CarView& v) -> double { return v.timer().bestLap(); });
    list.add("CarIdxF2Time", irsdk_float, "s", "Time behind the leader, or best time, by car index",
             0, [](const CarView& v) {
                 return v.world.weekend().isRace() ? v.standing().behindLeader
                                                   : std::max(0.0, v.timer().bestLapTime());
             });
    list.add("CarIdxEstTime", irsdk_float, "s", "Estimated time from the line by car index", 0,
             [](const CarView& v) { return v.share() * v.world.track().lapTime(); });
    list.add("CarIdxGapAhead", irsdk_float, "s", "Time behind the next car by car index", 0,
             [](const CarView& v) { return v.standing().behindNext; });
    list.add("CarIdxLineTime", irsdk_double, "s", "Session time at the last line by car index", 0,
             [](const CarView& v) { return v.entrant.lineSeconds(); });
}

void addDriving(List& list) {
    list.add("CarIdxRPM", irsdk_float, "revs/min", "Engine speed by car index", 0,
             [](const CarView& v) { return v.car().rpm(); });
    list.add("CarIdxGear", irsdk_int, "", "Gear by car index, 0 is neutral", 0,
             [](const CarView& v) -> double { return v.car().gear(); });
    list.add("CarIdxSteer", irsdk_float, "rad", "Steering wheel angle by car index", 0,
             [](const CarView& v) { return v.car().steering(); });
    list.add("CarIdxHeading", irsdk_float, "rad", "Heading by car index", 0,
             [](const CarView& v) { return v.car().yaw(); });
    list.add("CarIdxSideAccel", irsdk_float, "m/s^2", "Acceleration across the car by car index", 0,
             [](const CarView& v) { return v.car().sideAcceleration(); });
    list.add("CarIdxBrakeLight", irsdk_bool, "", "Brake light lit by car index", 0,
             [](const CarView& v) { return yes(v.car().brake() > 0.05); });
    list.add("CarIdxHeadLights", irsdk_bool, "", "Head lights lit by car index", 0,
             [](const CarView& v) { return yes(v.world.weather().skies() == 3); });
    list.add("CarIdxPitLimiter", irsdk_bool, "", "Speed limiter set by car index", 0,
             [](const CarView& v) { return yes(v.car().onPitRoad()); });
    list.add("CarIdxEngineOn", irsdk_bool, "", "Engine running by car index", 0,
             [](const CarView& v) { return yes(v.car().engineRuns()); });
}

void addState(List& list) {
    list.add("CarIdxFlags", irsdk_bitField, "", "Flags shown to each car", 0, flagsOf);
    list.add("CarIdxPaceFlags", irsdk_bitField, "", "Pacing notes to each car", 0,
             [](const CarView& v) {
                 return yes(v.world.weekend().state() == SessionState::ParadeLaps);
             });
    list.add("CarIdxTyreCompound", irsdk_int, "", "Tyre compound by car index", -1,
             [](const CarView& v) -> double { return v.entrant.slot() % 2; });
    list.add("CarIdxStartTyreCompound", irsdk_int, "", "Tyre compound at the start by car index",
             -1, [](const CarView& v) -> double { return v.entrant.slot() % 2; });
    list.add("CarIdxRepairsUsed", irsdk_int, "", "Fast repairs used by car index", 0,
             [](const CarView&) { return 0.0; });
    list.add("CarIdxBoostCount", irsdk_int, "", "Pushes of the boost left by car index", 0,
             [](const CarView& v) -> double { return 12 - v.entrant.pitStops(); });
    list.add("CarIdxBoostActive", irsdk_bool, "", "Boost in use by car index", 0,
             [](const CarView& v) {
                 return yes(v.car().throttle() > 0.98 && v.car().gear() == Car::kGears);
             });
    list.add("CarIdxPaceLine", irsdk_int, "", "Line of the formation by car index, -1 when none",
             -1, [](const CarView& v) -> double {
                 return v.car().place() == Place::Grid ? v.entrant.slot() % 2 : -1;
             });
}

}  // namespace

void addPerCarVariables(std::vector<Variable>& variables) {
    List list(variables);
    addProgress(list);
    addTimes(list);
    addDriving(list);
    addState(list);
}

}  // namespace simulator
