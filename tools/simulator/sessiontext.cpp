#include "tools/simulator/sessiontext.h"

#include "tools/simulator/outlinewriter.h"
#include "tools/simulator/wave.h"

#include <algorithm>
#include <array>

namespace simulator {

namespace {

constexpr std::array<const char*, 4> kSkies = {"Clear", "Partly Cloudy", "Mostly Cloudy",
                                               "Overcast"};

std::string hexColor(int color) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "0x";
    for (int shift = 20; shift >= 0; shift -= 4) {
        text += kDigits[(color >> shift) & 0xF];
    }
    return text;
}

std::string quoted(const std::string& text) {
    std::string quoted(1, '"');
    quoted += text;
    quoted += '"';
    return quoted;
}

const char* eventType(SessionType type) {
    return type == SessionType::Testing ? "Test" : sessionTypeText(type);
}

std::string date(const Weekend& weekend) {
    const auto day = 1 + weekend.sessionId() % 28;
    return std::string(day < 10 ? "2026-05-0" : "2026-05-") + std::to_string(day);
}

const char* skies(const Weather& weather) {
    return kSkies[static_cast<std::size_t>(weather.skies())];
}

void writeWeekendOptions(OutlineWriter& out, const World& world) {
    const Weather& weather = world.weather();
    out.section("WeekendOptions");
    out.value("NumStarters", static_cast<int>(world.entrants().size()));
    out.value("StartingGrid", "2x2 inline pole on left");
    out.value("QualifyScoring", "best lap");
    out.value("CourseCautions", "off");
    out.value("StandingStart", 0);
    out.value("ShortParadeLap", 0);
    out.value("Restarts", "single file");
    out.value("WeatherType", "Specified");
    out.value("Skies", skies(weather));
    out.value("WindDirection", "NW");
    out.value("WindSpeed", 10.8, 2, "km/h");
    out.value("WeatherTemp", 22.5, 2, "C");
    out.value("RelativeHumidity", 55.0, 0, "%");
    out.value("FogLevel", 2.0, 0, "%");
    out.value("TimeOfDay", "1:30 pm");
    out.value("Date", date(world.weekend()));
    out.value("Unofficial", 0);
    out.value("CommercialMode", "consumer");
    out.value("NightMode", "variable");
    out.value("IsFixedSetup", 0);
    out.value("StrictLapsChecking", "default");
    out.value("HasOpenRegistration", 1);
    out.value("HardcoreLevel", 1);
    out.value("NumJokerLaps", 0);
    out.value("IncidentLimit", "unlimited");
    out.value("FastRepairsLimit", 1);
    out.close();
}

void writeWeekendInfo(OutlineWriter& out, const World& world, bool replay) {
    const TrackDescription& track = world.track().description();
    const Weekend& weekend = world.weekend();
    const Weather& weather = world.weather();
    out.section("WeekendInfo");
    out.value("TrackName", track.internalName);
    out.value("TrackID", track.id);
    out.value("TrackLength", track.lengthMeters / 1000.0, 2, "km");
    out.value("TrackDisplayName", track.displayName);
    out.value("TrackDisplayShortName", track.shortName);
    out.value("TrackConfigName", track.configName);
    out.value("TrackCity", track.city);
    out.value("TrackCountry", track.country);
    out.value("TrackAltitude", track.altitudeMeters, 2, "m");
    out.value("TrackNorthOffset", track.northOffsetRadians, 4, "rad");
    out.value("TrackNumTurns", static_cast<int>(track.corners.size()));
    out.value("TrackPitSpeedLimit", track.pitLimitMetersPerS * 3.6, 2, "kph");
    out.value("TrackType", "road course");
    out.value("TrackSkies", skies(weather));
    out.value("TrackSurfaceTemp", weather.track(), 2, "C");
    out.value("TrackAirTemp", weather.air(), 2, "C");
    out.value("TrackAirPressure", weather.pressure() / 3386.39, 2, "Hg");
    out.value("TrackWindVel", weather.wind(), 2, "m/s");
    out.value("TrackWindDir", weather.windDirection(), 2, "rad");
    out.value("TrackRelativeHumidity", weather.humidity() * 100.0, 0, "%");
    out.value("TrackFogLevel", weather.fog() * 100.0, 0, "%");
    out.value("TrackCleanup", 0);
    out.value("SeriesID", 0);
    out.value("SeasonID", 0);
    out.value("SessionID", static_cast<long long>(weekend.sessionId()));
    out.value("SubSessionID", static_cast<long long>(weekend.subSessionId()));
    out.value("LeagueID", 0);
    out.value("Official", weekend.plan().type == SessionType::Testing ? 0 : 1);
    out.value("RaceWeek", 3);
    out.value("EventType", eventType(weekend.plan().type));
    out.value("Category", "Road");
    out.value("SimMode", replay ? "replay" : "full");
    out.value("TeamRacing", 0);
    out.value("MinDrivers", 0);
    out.value("MaxDrivers", 0);
    out.value("NumCarClasses", 2);
    out.value("NumCarTypes", 4);
    out.value("UpdateTime", world.sessionSeconds(), 2, "s");
    writeWeekendOptions(out, world);
    out.close();
}

void writeResultLine(OutlineWriter& out, const World& world, const ResultLine& line, int place,
                     bool isRace, double leaderTotal) {
    const auto& entrant = world.entrants()[static_cast<std::size_t>(line.car)];
    out.entry("Position", place);
    out.value("ClassPosition", place - 1);
    out.value("CarIdx", line.car);
    out.value("Lap", line.lapsComplete + 1);
    out.value("Time", isRace ? line.total - leaderTotal : line.fastest, 4);
    out.value("FastestLap", line.fastestLap);
    out.value("FastestTime", line.fastest, 4);
    out.value("LastTime", line.last, 4);
    out.value("LapsLed", 0);
    out.value("LapsComplete", line.lapsComplete);
    out.value("LapsDriven", line.lapsComplete, 3);
    out.value("Incidents", line.incidents);
    out.value("ReasonOut", entrant.present() ? "Running" : "Disconnected");
    out.close();
}

void writeFastestLap(OutlineWriter& out, const Results& results) {
    const ResultLine* fastest = nullptr;
    for (const ResultLine& line : results.lines()) {
        if (line.fastest > 0.0 && (fastest == nullptr || line.fastest < fastest->fastest)) {
            fastest = &line;
        }
    }
    out.section("ResultsFastestLap");
    out.entry("CarIdx", fastest == nullptr ? 255 : fastest->car);
    out.value("FastestLap", fastest == nullptr ? 0 : fastest->fastestLap);
    out.value("FastestTime", fastest == nullptr ? -1.0 : fastest->fastest, 4);
    out.close();
    out.close();
}

void writeSession(OutlineWriter& out, const World& world, int number, const SessionPlan& plan) {
    const bool isRace = plan.type == SessionType::Race;
    out.entry("SessionNum", number);
    out.value("SessionLaps", plan.laps ? std::to_string(*plan.laps) : std::string("unlimited"));
    if (plan.seconds) {
        out.value("SessionTime", *plan.seconds, 4, "sec");
    } else {
        out.value("SessionTime", "unlimited");
    }
    out.value("SessionNumLapsToAvg", 0);
    out.value("SessionType", sessionTypeText(plan.type));
    out.value("SessionTrackRubberState", "moderate usage");
    out.value("SessionName", isRace ? "RACE" : "OPEN");
    out.value("SessionSkipped", 0);
    const auto& all = world.results();
    const auto index = static_cast<std::size_t>(number);
    if (index >= all.size() || all[index].lines().empty()) {
        out.emptySection("ResultsPositions");
        out.value("ResultsOfficial", 0);
        out.close();
        return;
    }
    const std::vector<ResultLine>& lines = all[index].lines();
    out.section("ResultsPositions");
    for (std::size_t place = 0; place < lines.size(); ++place) {
        writeResultLine(out, world, lines[place], static_cast<int>(place) + 1, isRace,
                        lines.front().total);
    }
    out.close();
    writeFastestLap(out, all[index]);
    out.value("ResultsAverageLapTime", world.track().lapTime(), 4);
    out.value("ResultsNumLeadChanges", 0);
    out.value("ResultsLapsComplete", lines.front().lapsComplete);
    out.value("ResultsOfficial", index + 1 < all.size() ? 1 : 0);
    out.close();
}

void writeSessionInfo(OutlineWriter& out, const World& world) {
    const auto& plans = world.weekend().plans();
    out.section("SessionInfo");
    out.value("NumSessions", static_cast<int>(plans.size()));
    out.section("Sessions");
    for (std::size_t number = 0; number < plans.size(); ++number) {
        writeSession(out, world, static_cast<int>(number), plans[number]);
    }
    out.close();
    out.close();
}

void writeQualifyResults(OutlineWriter& out, const World& world) {
    constexpr std::size_t kQualifying = 1;
    const bool known =
        world.results().size() > kQualifying + 1 && !world.results()[kQualifying].lines().empty();
    if (!known) {
        return;
    }
    out.section("QualifyResultsInfo");
    out.section("Results");
    int place = 0;
    for (const ResultLine& line : world.results()[kQualifying].lines()) {
        out.entry("Position", place);
        out.value("ClassPosition", place);
        out.value("CarIdx", line.car);
        out.value("FastestLap", line.fastestLap);
        out.value("FastestTime", line.fastest, 4);
        out.close();
        ++place;
    }
    out.close();
    out.close();
}

void writeCameras(OutlineWriter& out) {
    constexpr std::array<const char*, 20> kGroups = {
        "Nose",    "Gearbox", "Roll Bar", "LF Susp",   "LR Susp",    "Gyro",      "RF Susp",
        "RR Susp", "Cockpit", "Scenic",   "TV1",       "TV2",        "TV3",       "Pit Lane",
        "Blimp",   "Chopper", "Chase",    "Far Chase", "Rear Chase", "Pit Lane 2"};
    constexpr std::size_t kFirstTrackside = 9;
    constexpr int kTracksideCameras = 24;
    out.section("CameraInfo");
    out.section("Groups");
    for (std::size_t group = 0; group < kGroups.size(); ++group) {
        const bool trackside = group >= kFirstTrackside && group <= kFirstTrackside + 4;
        out.entry("GroupNum", static_cast<int>(group) + 1);
        out.value("GroupName", kGroups[group]);
        out.value("IsScenic", trackside && group == kFirstTrackside ? 1 : 0);
        out.section("Cameras");
        for (int camera = 1; camera <= (trackside ? kTracksideCameras : 1); ++camera) {
            out.entry("CameraNum", camera);
            out.value("CameraName", std::string(trackside ? "Cam" : "Car") +
                                        std::string(kGroups[group]) + "_" + std::to_string(camera));
            out.close();
        }
        out.close();
        out.close();
    }
    out.close();
    out.close();
}

void writeRadios(OutlineWriter& out) {
    constexpr std::array<const char*, 7> kFrequencies = {
        "@ALLTEAMS", "@DRIVERS", "@TEAM", "@CLUB", "@ADMIN", "@RACECONTROL", "@PRIVATE"};
    out.section("RadioInfo");
    out.value("SelectedRadioNum", 0);
    out.section("Radios");
    out.entry("RadioNum", 0);
    out.value("HopCount", 2);
    out.value("NumFrequencies", static_cast<int>(kFrequencies.size()));
    out.value("TunedToFrequencyNum", 0);
    out.value("ScanningIsOn", 1);
    out.section("Frequencies");
    for (std::size_t number = 0; number < kFrequencies.size(); ++number) {
        out.entry("FrequencyNum", static_cast<int>(number));
        out.value("FrequencyName", quoted(kFrequencies[number]));
        out.value("Priority", 12 + static_cast<int>(number) * 3);
        out.value("CarIdx", -1);
        out.value("EntryIdx", -1);
        out.value("ClubID", 0);
        out.value("CanScan", 1);
        out.value("CanSquawk", 1);
        out.value("Muted", 0);
        out.value("IsMutable", 1);
        out.value("IsDeletable", 0);
        out.close();
    }
    out.close();
    out.close();
    out.close();
    out.close();
}

void writeDriver(OutlineWriter& out, const World& world, const Entrant& entrant) {
    const Driver& driver = entrant.driver();
    const CarModel& model = *driver.model;
    out.entry("CarIdx", entrant.slot());
    out.value("UserName", driver.userName);
    out.value("AbbrevName", driver.abbreviation);
    out.value("Initials", driver.initials);
    out.value("UserID", driver.userId);
    out.value("TeamID", driver.teamId);
    out.value("TeamName", driver.teamName);
    out.value("CarNumber", quoted(std::to_string(driver.number)));
    out.value("CarNumberRaw", driver.number);
    out.value("CarPath", model.path);
    out.value("CarClassID", model.classId);
    out.value("CarID", model.id);
    out.value("CarIsPaceCar", 0);
    out.value("CarIsAI", 0);
    out.value("CarScreenName", model.screenName);
    out.value("CarScreenNameShort", model.screenNameShort);
    out.value("CarClassShortName", model.className);
    out.value("CarClassRelSpeed", static_cast<int>(model.pace * 100.0));
    out.value("CarClassLicenseLevel", 0);
    out.value("CarClassMaxFuelPct", 1.0, 3, "%");
    out.value("CarClassWeightPenalty", 0.0, 3, "kg");
    out.value("CarClassPowerAdjust", 0.0, 3, "%");
    out.value("CarClassColor", hexColor(model.classColor));
    out.value("CarClassEstLapTime", world.track().lapTime() * model.estimatedLapFactor, 4);
    out.value("IRating", driver.rating);
    out.value("LicLevel", driver.licenceLevel);
    out.value("LicString", driver.licence);
    out.value("LicColor", hexColor(driver.licenceColor));
    out.value("IsSpectator", 0);
    out.value("CarDesignStr", std::string("12,") + hexColor(model.classColor).substr(2) + "," +
                                  hexColor(driver.licenceColor).substr(2) + ",ffffff");
    out.value("HelmetDesignStr",
              std::string("7,ffffff,") + hexColor(driver.licenceColor).substr(2) + ",000000");
    out.value("SuitDesignStr",
              std::string("3,") + hexColor(model.classColor).substr(2) + ",000000,ffffff");
    out.value("ClubName", driver.club);
    out.value("ClubID", 40 + driver.userId % 9);
    out.value("DivisionName", driver.division);
    out.value("DivisionID", driver.userId % 10);
    out.value("CurDriverIncidentCount", entrant.incidents());
    out.value("TeamIncidentCount", entrant.incidents());
    out.close();
}

void writeDriverInfo(OutlineWriter& out, const World& world) {
    const Entrant& own = world.own();
    out.section("DriverInfo");
    out.value("DriverCarIdx", world.ownSlot());
    out.value("DriverUserID", own.driver().userId);
    out.value("PaceCarIdx", -1);
    out.value("DriverHeadPosX", -0.42, 3);
    out.value("DriverHeadPosY", 0.36, 3);
    out.value("DriverHeadPosZ", 0.59, 3);
    out.value("DriverCarIsElectric", 0);
    out.value("DriverCarIdleRPM", Car::kIdleRpm, 3);
    out.value("DriverCarRedLine", Car::kRedLineRpm, 3);
    out.value("DriverCarEngCylinderCount", 6);
    out.value("DriverCarFuelKgPerLtr", Car::kFuelKgPerLiter, 3);
    out.value("DriverCarFuelMaxLtr", Car::kTank, 3);
    out.value("DriverCarMaxFuelPct", 1.0, 3);
    out.value("DriverCarGearNumForward", Car::kGears);
    out.value("DriverCarGearNeutral", 1);
    out.value("DriverCarGearReverse", 1);
    out.value("DriverCarSLFirstRPM", 6600.0, 3);
    out.value("DriverCarSLShiftRPM", Car::kShiftRpm, 3);
    out.value("DriverCarSLBlinkRPM", Car::kRedLineRpm, 3);
    out.value("DriverCarVersion", "2026.05.11.02");
    out.value("DriverPitTrkPct",
              world.track().stall(own.slot(), static_cast<int>(world.entrants().size())) /
                  world.track().length(),
              6);
    out.value("DriverCarEstLapTime",
              world.track().lapTime() * own.driver().model->estimatedLapFactor, 4);
    out.value("DriverSetupName", "baseline.sto");
    out.value("DriverSetupIsModified", 0);
    out.value("DriverSetupLoadTypeName", "user");
    out.value("DriverSetupPassedTech", 1);
    out.value("DriverIncidentCount", own.incidents());
    out.section("Drivers");
    for (const Entrant& entrant : world.entrants()) {
        if (entrant.present()) {
            writeDriver(out, world, entrant);
        }
    }
    out.close();
    out.close();
}

void writeSplitTimes(OutlineWriter& out) {
    constexpr std::array<double, 4> kStarts = {0.0, 0.277431, 0.513926, 0.748118};
    out.section("SplitTimeInfo");
    out.section("Sectors");
    for (std::size_t number = 0; number < kStarts.size(); ++number) {
        out.entry("SectorNum", static_cast<int>(number));
        out.value("SectorStartPct", kStarts[number], 6);
        out.close();
    }
    out.close();
    out.close();
}

void writeTyre(OutlineWriter& out, const char* name, const Wheel& wheel) {
    out.section(name);
    out.value("StartingPressure", wheel.coldPressure, 1, "kPa");
    out.value("LastHotPressure", wheel.pressure, 1, "kPa");
    out.value("LastTempsOMI", fixedText(wheel.carcass[2], 0) + "C, " +
                                  fixedText(wheel.carcass[1], 0) + "C, " +
                                  fixedText(wheel.carcass[0], 0) + "C");
    out.value("TreadRemaining", fixedText(wheel.tread[2] * 100.0, 0) + "%, " +
                                    fixedText(wheel.tread[1] * 100.0, 0) + "%, " +
                                    fixedText(wheel.tread[0] * 100.0, 0) + "%");
    out.close();
}

void writeTyresAndAero(OutlineWriter& out, const CarSystems& systems) {
    out.section("TiresAero");
    writeTyre(out, "LeftFront", systems.wheel(kLeftFront));
    writeTyre(out, "LeftRear", systems.wheel(kLeftRear));
    writeTyre(out, "RightFront", systems.wheel(kRightFront));
    writeTyre(out, "RightRear", systems.wheel(kRightRear));
    out.section("AeroBalanceCalc");
    out.value("FrontRhAtSpeed", 48.0, 1, "mm");
    out.value("RearRhAtSpeed", 66.0, 1, "mm");
    out.value("WingSetting", 6.0, 0, "degrees");
    out.value("FrontDownforce", 41.27, 2, "%");
    out.close();
    out.section("AeroCalculator");
    out.value("FrontRhAtSpeed", 48.0, 1, "mm");
    out.value("RearRhAtSpeed", 66.0, 1, "mm");
    out.value("DownforceBalance", 41.27, 2, "%");
    out.value("LD", 3.512, 3);
    out.close();
    out.close();
}

void writeSuspension(OutlineWriter& out, const char* name, double height) {
    out.section(name);
    out.value("CornerWeight", 3241.0, 0, "N");
    out.value("RideHeight", height, 1, "mm");
    out.value("SpringRate", 160.0, 0, "N/mm");
    out.value("BumpStiffness", 6.0, 0, "clicks");
    out.value("ReboundStiffness", 8.0, 0, "clicks");
    out.value("Camber", -3.2, 1, "deg");
    out.close();
}

void writeCarSetup(OutlineWriter& out, const World& world) {
    out.section("CarSetup");
    out.value("UpdateCount", world.own().pitStops() + 1);
    writeTyresAndAero(out, world.ownSystems());
    out.section("Chassis");
    out.section("Front");
    out.value("ArbBlades", 3);
    out.value("ToeIn", -0.8, 1, "mm");
    out.value("CrossWeight", 50.0, 1, "%");
    out.value("BrakePressureBias", 54.5, 1, "%");
    out.close();
    writeSuspension(out, "LeftFront", 62.0);
    writeSuspension(out, "LeftRear", 78.0);
    writeSuspension(out, "RightFront", 62.1);
    writeSuspension(out, "RightRear", 78.2);
    out.section("Rear");
    out.value("FuelLevel", 0.9 * Car::kTank, 1, "L");
    out.value("ArbBlades", 2);
    out.value("WingSetting", 6.0, 0, "degrees");
    out.close();
    out.close();
    out.section("DriveBrake");
    out.section("Engine");
    out.value("EngineMapSetting", "2 (MAP)");
    out.value("TractionControlSetting", "4 (TC)");
    out.close();
    out.close();
    out.close();
}

}  // namespace

std::string sessionText(const World& world, bool replay) {
    OutlineWriter out;
    out.bare("---");
    writeWeekendInfo(out, world, replay);
    out.bare("");
    writeSessionInfo(out, world);
    out.bare("");
    writeQualifyResults(out, world);
    out.bare("");
    writeCameras(out);
    out.bare("");
    writeRadios(out);
    out.bare("");
    writeDriverInfo(out, world);
    out.bare("");
    writeSplitTimes(out);
    out.bare("");
    writeCarSetup(out, world);
    out.bare("...");
    return out.take();
}

}  // namespace simulator
