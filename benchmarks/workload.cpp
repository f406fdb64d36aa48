#include "benchmarks/workload.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace bench {

namespace {

constexpr int kResultsDelayTicks = 60;
constexpr int kQuietChangeInterval = 40;  // ticks between two changes of a quiet array's element
constexpr double kTrackMetres = 5510.0;

struct Variable {
    const char* name;
    irsdk_VarType type;
    const char* unit;
};

// The variables that the recorder reads; the others have made-up names.
constexpr std::array kOwnClock{
    Variable{"SessionTime", irsdk_double, "s"},
    Variable{"SessionTick", irsdk_int, ""},
    Variable{"SessionNum", irsdk_int, ""},
    Variable{"SessionState", irsdk_int, "irsdk_SessionState"},
    Variable{"SessionTimeRemain", irsdk_double, "s"},
    Variable{"IsOnTrack", irsdk_bool, ""},
    Variable{"OnPitRoad", irsdk_bool, ""},
    Variable{"PlayerCarInPitStall", irsdk_bool, ""},
    Variable{"Lap", irsdk_int, ""},
    Variable{"LapCompleted", irsdk_int, ""},
    Variable{"LapDistPct", irsdk_float, "%"},
    Variable{"LapCurrentLapTime", irsdk_float, "s"},
    Variable{"LapLastLapTime", irsdk_float, "s"},
    Variable{"FuelLevel", irsdk_float, "l"},
    Variable{"ReplayPlaySpeed", irsdk_int, ""},
    Variable{"Speed", irsdk_float, "m/s"},
    Variable{"Yaw", irsdk_float, "rad"},
    Variable{"EnergyBatteryToMGU_KLap", irsdk_float, "%"},
    Variable{"EnergyMGU_KLapDeployPct", irsdk_float, "%"},
    Variable{"DisplayUnits", irsdk_int, ""},
    Variable{"PlayerCarSLFirstRPM", irsdk_float, "revs/min"},
};

constexpr std::array kCorners{"LF", "RF", "LR", "RR"};
constexpr std::array kCornerReadings{
    "tempCL",   "tempCM", "tempCR",     "tempL",     "tempM",      "tempR",         "wearL",
    "wearM",    "wearR",  "coldPress",  "brakeLine", "brakePress", "brakeTemp",     "shockDefl",
    "shockVel", "speed",  "rideHeight", "tyrePress", "tyresUsed",  "tyresAvailable"};
constexpr std::array kSystems{"Engine", "Chassis", "Pit",   "Brake", "Wind", "Air",
                              "Track",  "Session", "Steer", "Dash",  "Cam",  "Hybrid"};
constexpr std::array kSystemReadings{"Temp",   "Press",  "Level", "Rate", "Angle", "Count",
                                     "Torque", "Limit",  "Mode",  "Flag", "Power", "Load",
                                     "Bias",   "Offset", "State", "Raw",  "Delta"};

// The first 13 change in every tick.
constexpr std::array<Variable, kPerCarVariableCount> kPerCarVariables{{
    {"LapDistPct", irsdk_float, "%"},
    {"EstTime", irsdk_float, "s"},
    {"F2Time", irsdk_float, "s"},
    {"RPM", irsdk_float, "revs/min"},
    {"Steer", irsdk_float, "rad"},
    {"Speed", irsdk_float, "m/s"},
    {"LapCurrentLapTime", irsdk_float, "s"},
    {"GapAhead", irsdk_float, "s"},
    {"GapBehind", irsdk_float, "s"},
    {"Pitch", irsdk_float, "rad"},
    {"Roll", irsdk_float, "rad"},
    {"Throttle", irsdk_float, "%"},
    {"Brake", irsdk_float, "%"},
    {"Lap", irsdk_int, ""},
    {"LapCompleted", irsdk_int, ""},
    {"OnPitRoad", irsdk_bool, ""},
    {"LastLapTime", irsdk_float, "s"},
    {"BestLapTime", irsdk_float, "s"},
    {"BestLapNum", irsdk_int, ""},
    {"Position", irsdk_int, ""},
    {"ClassPosition", irsdk_int, ""},
    {"Class", irsdk_int, ""},
    {"Gear", irsdk_int, ""},
    {"TrackSurface", irsdk_int, "irsdk_TrkLoc"},
    {"TrackSurfaceMaterial", irsdk_int, "irsdk_TrkSurf"},
    {"SessionFlags", irsdk_bitField, "irsdk_Flags"},
    {"PaceFlags", irsdk_bitField, "irsdk_PaceFlags"},
    {"PaceLine", irsdk_int, ""},
    {"PaceRow", irsdk_int, ""},
    {"FastRepairsUsed", irsdk_int, ""},
    {"TireCompound", irsdk_int, ""},
    {"QualTireCompound", irsdk_int, ""},
    {"QualTireCompoundLocked", irsdk_bool, ""},
    {"P2P_Count", irsdk_int, ""},
    {"P2P_Status", irsdk_bool, ""},
    {"JokerLaps", irsdk_int, ""},
}};

template <std::size_t Size>
void copyText(char (&field)[Size], const std::string& text) {
    std::memcpy(field, text.data(), std::min(text.size(), Size));
}

template <typename Number>
void store(char* bytes, Number number) {
    std::memcpy(bytes, &number, sizeof number);
}

void storeAs(char* bytes, std::int32_t type, double number) {
    switch (type) {
        case irsdk_char:
        case irsdk_bool:
            store(bytes, static_cast<std::int8_t>(number));
            break;
        case irsdk_int:
        case irsdk_bitField:
            store(bytes, static_cast<std::int32_t>(number));
            break;
        case irsdk_float:
            store(bytes, static_cast<float>(number));
            break;
        default:
            store(bytes, number);
            break;
    }
}

/** Where an element lies in the snapshot. */
std::size_t placeOf(const irsdk_varHeader& entry, int element) {
    return static_cast<std::size_t>(entry.offset) +
           static_cast<std::size_t>(element) * irsdk_varTypeSize(entry.type);
}

double fraction(double laps) {
    return laps - std::floor(laps);
}

/** Builds a session text line by line. */
class TextBuilder {
public:
    void line(int indentation, const std::string& text) {
        m_text.append(static_cast<std::size_t>(indentation), ' ').append(text).append("\n");
    }
    template <typename... Arguments>
    void format(int indentation, const char* pattern, Arguments... arguments) {
        std::array<char, 256> buffer{};
        std::snprintf(buffer.data(), buffer.size(), pattern, arguments...);
        line(indentation, buffer.data());
    }
    [[nodiscard]] std::string take() { return std::move(m_text); }

private:
    std::string m_text;
};

void writeWeekend(TextBuilder& text) {
    text.line(0, "WeekendInfo:");
    for (const char* const line : {"TrackName: ring gp",
                                   "TrackID: 212",
                                   "TrackLength: 5.51 km",
                                   "TrackDisplayName: Grand Prix Ring",
                                   "TrackDisplayShortName: Ring",
                                   "TrackConfigName: Grand Prix",
                                   "TrackCity: Ringstadt",
                                   "TrackCountry: Nowhere",
                                   "TrackAltitude: 112.40 m",
                                   "TrackLatitude: 50.335 m",
                                   "TrackLongitude: 6.947 m",
                                   "TrackNorthOffset: 1.5012 rad",
                                   "TrackNumTurns: 17",
                                   "TrackPitSpeedLimit: 60.00 kph",
                                   "TrackType: road course",
                                   "TrackWeatherType: Static",
                                   "TrackSkies: Partly Cloudy",
                                   "TrackSurfaceTemp: 35.40 C",
                                   "TrackAirTemp: 21.70 C",
                                   "TrackAirPressure: 29.10 Hg",
                                   "TrackWindVel: 0.89 m/s",
                                   "TrackRelativeHumidity: 55 %",
                                   "SeriesID: 310",
                                   "SeasonID: 3412",
                                   "SessionID: 12345",
                                   "SubSessionID: 678",
                                   "LeagueID: 0",
                                   "Official: 1",
                                   "RaceWeek: 3",
                                   "EventType: Race",
                                   "Category: Road",
                                   "SimMode: full",
                                   "TeamRacing: 0",
                                   "MinDrivers: 1",
                                   "MaxDrivers: 1",
                                   "NumCarClasses: 3",
                                   "NumCarTypes: 9"}) {
        text.line(1, line);
    }
    text.line(1, "WeekendOptions:");
    for (const char* const line :
         {"NumStarters: 64", "StartingGrid: single file", "QualifyScoring: best lap",
          "CourseCautions: off", "StandingStart: 0", "Restarts: single file", "WeatherType: Static",
          "Skies: Partly Cloudy", "WindDirection: N", "WindSpeed: 3.22 km/h",
          "WeatherTemp: 25.56 C", "RelativeHumidity: 55 %", "TimeOfDay: 2.00 pm", "Unofficial: 0",
          "IncidentLimit: unlimited"}) {
        text.line(2, line);
    }
}

void writeSession(TextBuilder& text, int number, const char* type, const Results& results) {
    text.format(1, "- SessionNum: %d", number);
    text.line(3, "SessionLaps: 10");
    text.line(3, "SessionTime: 5400.0000 sec");
    text.format(3, "SessionType: %s", type);
    text.format(3, "SessionName: %s", type);
    text.line(3, "SessionTrackRubberState: moderate usage");
    text.line(3, "ResultsPositions:");
    for (int position = 1; position <= kCarCount; ++position) {
        const int car = (position * 29) % kCarCount;
        const CarResult& result = results[static_cast<std::size_t>(car)];
        // Of these, six follow the car's results.
        text.format(3, "- Position: %d", position);
        text.format(5, "ClassPosition: %d", position / 3);
        text.format(5, "CarIdx: %d", car);
        text.format(5, "Lap: %d", result.lapsComplete + 1);
        text.format(5, "Time: %.4f", result.lastTime * result.lapsComplete);
        text.format(5, "FastestLap: %d", result.lapsComplete);
        text.format(5, "FastestTime: %.4f", result.lastTime - 0.1);
        text.format(5, "LastTime: %.4f", result.lastTime);
        text.line(5, "LapsLed: 0");
        text.format(5, "LapsComplete: %d", result.lapsComplete);
        text.line(5, "JokerLapsComplete: 0");
        text.line(5, "Incidents: 0");
        text.line(5, "ReasonOutId: 0");
        text.line(5, "ReasonOutStr: Running");
    }
}

void writeDriver(TextBuilder& text, int car) {
    text.format(1, "- CarIdx: %d", car);
    text.format(3, "UserName: Driver Number %d", car);
    text.format(3, "AbbrevName: Driver. N%d", car);
    text.format(3, "Initials: D%d", car);
    text.format(3, "UserID: %d", 104200 + car);
    text.format(3, "TeamID: %d", car / 2);
    text.format(3, "TeamName: Team Number %d", car / 2);
    text.format(3, "CarNumber: %d", car + 1);
    text.format(3, "CarNumberRaw: %d", car + 1);
    text.format(3, "CarPath: prototype%d", car % 9);
    text.format(3, "CarClassID: %d", 2300 + car % 3);
    text.format(3, "CarID: %d", 120 + car % 9);
    text.line(3, "CarIsPaceCar: 0");
    text.line(3, "CarIsAI: 0");
    text.format(3, "CarScreenName: Prototype Mk %d", car % 9);
    text.format(3, "CarScreenNameShort: Proto %d", car % 9);
    text.format(3, "CarClassShortName: Class %d", car % 3);
    text.line(3, "CarClassRelSpeed: 0");
    text.line(3, "CarClassLicenseLevel: 0");
    text.line(3, "CarClassMaxFuelPct: 1.000 %");
    text.line(3, "CarClassWeightPenalty: 0.000 kg");
    text.line(3, "CarClassColor: 0xffffff");
    text.format(3, "IRating: %d", 1500 + car * 13);
    text.line(3, "LicLevel: 18");
    text.line(3, "LicSubLevel: 349");
    text.line(3, "LicString: A 3.49");
    text.line(3, "LicColor: 0x0153db");
    text.line(3, "IsSpectator: 0");
    text.line(3, "CarDesignStr: 0,000000,ED2129,2A3795");
    text.line(3, "HelmetDesignStr: 66,EEEEEE,000000,2A3795");
    text.line(3, "SuitDesignStr: 26,000000,EEEEEE,2A3795");
    text.line(3, "CarNumberDesignStr: 0,0,FFFFFF,777777,000000");
    text.format(3, "ClubName: Club %d", car % 12);
    text.line(3, "ClubID: 12");
    text.format(3, "DivisionName: Division %d", 1 + car % 10);
    text.line(3, "DivisionID: 1");
    text.line(3, "CurDriverIncidentCount: 0");
    text.line(3, "TeamIncidentCount: 0");
}

void writeDrivers(TextBuilder& text) {
    text.line(0, "DriverInfo:");
    text.format(1, "DriverCarIdx: %d", kOwnCar);
    for (const char* const line :
         {"DriverUserID: 104205", "PaceCarIdx: -1", "DriverHeadPosX: -0.446",
          "DriverCarIdleRPM: 1100.000", "DriverCarRedLine: 8200.000",
          "DriverCarFuelKgPerLtr: 0.750", "DriverCarFuelMaxLtr: 104.000",
          "DriverCarMaxFuelPct: 0.900", "DriverPitTrkPct: 0.930", "DriverSetupName: baseline"}) {
        text.line(1, line);
    }
    text.line(1, "Drivers:");
    for (int car = 0; car < kCarCount; ++car) {
        writeDriver(text, car);
    }
}

void writeRest(TextBuilder& text) {
    text.line(0, "CameraInfo:");
    text.line(1, "Groups:");
    for (int group = 1; group <= 20; ++group) {
        text.format(1, "- GroupNum: %d", group);
        text.format(3, "GroupName: Group %d", group);
        text.line(3, "Cameras:");
        for (int camera = 1; camera <= 6; ++camera) {
            text.format(3, "- CameraNum: %d", camera);
            text.format(5, "CameraName: Cam%d_%d", group, camera);
        }
    }
    text.line(0, "SplitTimeInfo:");
    text.line(1, "Sectors:");
    for (int sector = 0; sector < 4; ++sector) {
        text.format(1, "- SectorNum: %d", sector);
        text.format(3, "SectorStartPct: %.6f", sector * 0.25);
    }
    text.line(0, "CarSetup:");
    text.line(1, "UpdateCount: 1");
    text.line(1, "TiresAero:");
    text.line(2, "AeroCalculator:");
    text.line(3, "FrontRhAtSpeed: 28.0 mm");
    text.line(3, "DownforceBalance: 46.20%");
    text.line(1, "Chassis:");
    text.line(2, "Rear:");
    text.line(3, "FuelLevel: 60.0 L");
    text.line(3, "RearSpring: 150 N/mm");
}

}  // namespace

Workload::Workload(int ticksPerLap) : m_ticksPerLap(ticksPerLap) {
    addOwnVariables();
    addPerCarVariables();
    m_start.resize(static_cast<std::size_t>(m_bufferLength));
    for (std::size_t i = 0; i < m_table.size(); ++i) {
        const irsdk_varHeader& entry = m_table[i];
        for (int element = 0; element < entry.count; ++element) {
            storeAs(m_start.data() + placeOf(entry, element), entry.type,
                    entry.type == irsdk_bool ? 0.0 : static_cast<double>(i % 50) + 0.5);
        }
    }
}

void Workload::addVariable(const std::string& name, irsdk_VarType type, int count,
                           const std::string& unit) {
    const int size = std::max(static_cast<int>(irsdk_varTypeSize(type)), 1);
    irsdk_varHeader entry{};
    entry.type = type;
    entry.offset = (m_bufferLength + size - 1) / size * size;
    entry.count = count;
    copyText(entry.name, name);
    copyText(entry.desc, "What " + name + " tells of the car");
    copyText(entry.unit, unit);
    m_table.push_back(entry);
    m_bufferLength = entry.offset + count * size;
}

void Workload::addOwnVariables() {
    for (const Variable& own : kOwnClock) {
        addVariable(own.name, own.type, 1, own.unit);
    }
    for (const char* const corner : kCorners) {
        for (const char* const reading : kCornerReadings) {
            addVariable(std::string(corner) + reading, irsdk_float, 1, "kPa");
        }
    }
    // A shock is measured six times a tick.
    constexpr int kShockReadings = 6;
    for (const char* const corner : kCorners) {
        addVariable(std::string(corner) + "shockDefl_ST", irsdk_float, kShockReadings, "m");
    }
    constexpr std::array kTypes{irsdk_float, irsdk_float,  irsdk_float,    irsdk_int,
                                irsdk_bool,  irsdk_double, irsdk_bitField, irsdk_float};
    for (std::size_t i = 0; m_table.size() < kOwnVariableCount; ++i) {
        addVariable(std::string(kSystems[i % kSystems.size()]) +
                        kSystemReadings[i / kSystems.size() % kSystemReadings.size()],
                    kTypes[i % kTypes.size()], 1, "C");
    }
}

void Workload::addPerCarVariables() {
    for (const Variable& perCar : kPerCarVariables) {
        addVariable(std::string(kPerCarPrefix) + perCar.name, perCar.type, kCarCount, perCar.unit);
    }
}

const irsdk_varHeader& Workload::variable(const std::string& name) const {
    return *std::find_if(m_table.begin(), m_table.end(), [&name](const irsdk_varHeader& entry) {
        return name.compare(0, IRSDK_MAX_STRING, entry.name) == 0;
    });
}

irsdk_header Workload::header() const {
    irsdk_header result{};
    result.numVars = static_cast<std::int32_t>(m_table.size());
    result.bufferLength = m_bufferLength;
    return result;
}

double Workload::ticksPerLap(int car) const {
    constexpr double kSlowerByCar = 0.0007;
    return m_ticksPerLap * (1.0 + kSlowerByCar * car);
}

double Workload::distance(int car, double tick) const {
    constexpr double kStartLine = 0.03;
    constexpr double kGridGap = 0.0004;
    return kStartLine - kGridGap * car + tick / ticksPerLap(car);
}

std::vector<char> Workload::snapshot(int tick) const {
    std::vector<char> result(m_start.size());
    fill(result.data(), tick);
    return result;
}

void Workload::fill(char* snapshot, int tick) const {
    std::memcpy(snapshot, m_start.data(), m_start.size());
    // Two of three readings of the own car move in every tick.
    for (std::size_t i = kOwnClock.size(); i < kOwnVariableCount; ++i) {
        const irsdk_varHeader& entry = m_table[i];
        if (entry.type != irsdk_bool && i % 3 != 0) {
            storeAs(snapshot + entry.offset, entry.type,
                    100.0 * std::sin(0.01 * tick + static_cast<double>(i)));
        }
    }
    fillOwnClock(snapshot, tick);
    for (int i = 0; i < kPerCarVariableCount; ++i) {
        const irsdk_varHeader& entry = m_table[kOwnVariableCount + static_cast<std::size_t>(i)];
        for (int car = 0; car < kCarCount; ++car) {
            char* const bytes = snapshot + placeOf(entry, car);
            const double laps = distance(car, tick);
            if (i == 0) {
                storeAs(bytes, entry.type, fraction(laps));
            } else if (i < kChangingPerCarVariableCount) {
                storeAs(bytes, entry.type, 100.0 * std::sin(40.0 * laps + i));
            } else if (i == kChangingPerCarVariableCount) {
                storeAs(bytes, entry.type, std::floor(laps) + 1.0);
            } else if (i == kChangingPerCarVariableCount + 1) {
                storeAs(bytes, entry.type, std::floor(laps));
            } else if (entry.type == irsdk_int) {
                const int quiet = (tick / kQuietChangeInterval + car * i) / kCarCount;
                storeAs(bytes, entry.type, quiet);
            }
        }
    }
}

void Workload::fillOwnClock(char* snapshot, int tick) const {
    const double laps = distance(kOwnCar, tick);
    const double lapSeconds = ticksPerLap(kOwnCar) / kTicksPerSecond;
    const auto set = [this, snapshot](const std::string& name, double number) {
        const irsdk_varHeader& entry = variable(name);
        storeAs(snapshot + entry.offset, entry.type, number);
    };
    constexpr double kSessionStateRacing = 4.0;
    set("SessionTime", 100.0 + tick / kTicksPerSecond);
    set("SessionTick", 6000.0 + tick);
    set("SessionNum", 2.0);
    set("SessionState", kSessionStateRacing);
    set("SessionTimeRemain", 5400.0 - tick / kTicksPerSecond);
    set("IsOnTrack", 1.0);
    set("OnPitRoad", 0.0);
    set("PlayerCarInPitStall", 0.0);
    set("Lap", std::floor(laps) + 1.0);
    set("LapCompleted", std::floor(laps));
    set("LapDistPct", fraction(laps));
    set("LapCurrentLapTime", fraction(laps) * lapSeconds);
    set("LapLastLapTime", laps < 1.0 ? -1.0 : lapSeconds);
    set("FuelLevel", 90.0 - laps * 2.5);
    set("ReplayPlaySpeed", 1.0);
    set("Speed", kTrackMetres / lapSeconds);
    set("Yaw", std::sin(laps * 6.28));
    set("EnergyBatteryToMGU_KLap", fraction(laps));
    set("EnergyMGU_KLapDeployPct", fraction(laps));
}

Results Workload::results(int tick) const {
    Results results;
    for (int car = 0; car < kCarCount; ++car) {
        CarResult& result = results[static_cast<std::size_t>(car)];
        result.lapsComplete =
            std::max(0, static_cast<int>(std::floor(distance(car, tick - kResultsDelayTicks))));
        if (result.lapsComplete > 0) {
            result.lastTime = ticksPerLap(car) / kTicksPerSecond + 0.001 * result.lapsComplete;
        }
    }
    return results;
}

std::string Workload::sessionText(const Results& results) const {
    TextBuilder text;
    text.line(0, "---");
    writeWeekend(text);
    text.line(0, "SessionInfo:");
    text.line(1, "Sessions:");
    const Results none{};
    writeSession(text, 0, "Practice", none);
    writeSession(text, 1, "Qualify", none);
    writeSession(text, 2, "Race", results);
    writeDrivers(text);
    writeRest(text);
    text.line(0, "...");
    return text.take();
}

}  // namespace bench
