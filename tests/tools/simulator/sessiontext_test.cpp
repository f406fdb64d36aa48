#include "tools/simulator/sessiontext.h"

#include "tests/tools/simulator/outlinereader.h"
#include "tests/tools/simulator/shorttrack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace simulator;

namespace {

void drive(World& world, double seconds) {
    for (Tick left = ticksOf(seconds); left > 0; --left) {
        world.advance();
    }
}

}  // namespace

TEST(SessionText, HasEveryPathThatALapIsFilledFrom) {
    World world(shortTrack(8));
    drive(world, 60.0);
    const OutlineReader text(sessionText(world, false));
    for (const char* path : {"WeekendInfo/TrackDisplayName",
                             "WeekendInfo/SessionID",
                             "WeekendInfo/SubSessionID",
                             "WeekendInfo/TrackConfigName",
                             "WeekendInfo/TrackDisplayShortName",
                             "WeekendInfo/TrackCity",
                             "WeekendInfo/TrackCountry",
                             "WeekendInfo/TrackNumTurns",
                             "WeekendInfo/TrackSkies",
                             "WeekendInfo/Official",
                             "WeekendInfo/Category",
                             "WeekendInfo/TrackLength",
                             "WeekendInfo/TrackSurfaceTemp",
                             "WeekendInfo/TrackAirTemp",
                             "WeekendInfo/WeekendOptions/WeatherTemp",
                             "WeekendInfo/TrackNorthOffset",
                             "WeekendInfo/SimMode",
                             "DriverInfo/DriverCarIdx",
                             "DriverInfo/DriverCarFuelMaxLtr",
                             "DriverInfo/DriverCarMaxFuelPct",
                             "DriverInfo/DriverCarFuelKgPerLtr",
                             "CarSetup/Chassis/Rear/FuelLevel",
                             "CarSetup/TiresAero/AeroCalculator/FrontRhAtSpeed",
                             "CarSetup/TiresAero/AeroBalanceCalc/FrontDownforce",
                             "SessionInfo/Sessions/0/SessionType",
                             "SplitTimeInfo/Sectors/1/SectorStartPct",
                             "CameraInfo/Groups/10/Cameras/24/CameraName",
                             "RadioInfo/Radios/0/Frequencies/6/FrequencyName"}) {
        EXPECT_TRUE(text.has(path)) << path;
    }
    EXPECT_EQ(text.value("DriverInfo/DriverCarIdx"), std::to_string(world.ownSlot()));
    EXPECT_EQ(text.value("WeekendInfo/TrackLength"), "1.01 km");
    EXPECT_EQ(text.value("WeekendInfo/SimMode"), "full");
    EXPECT_EQ(text.value("SessionInfo/Sessions/0/SessionType"), "Practice");
    EXPECT_EQ(text.value("CarSetup/Chassis/Rear/FuelLevel"), "55.8 L");
}

TEST(SessionText, HasAllKeysOfEachDriver) {
    World world(shortTrack(8));
    const OutlineReader text(sessionText(world, false));
    std::set<std::string> names;
    for (const Entrant& entrant : world.entrants()) {
        const std::string driver = "DriverInfo/Drivers/" + std::to_string(entrant.slot());
        for (const char* key : {"UserName", "CarScreenName", "TeamName", "AbbrevName", "IRating",
                                "LicString", "Initials", "UserID", "CarPath", "CarClassID", "CarID",
                                "CarClassShortName", "ClubName", "DivisionName", "LicColor"}) {
            const std::string path = driver + "/" + key;
            EXPECT_EQ(text.has(path), entrant.present()) << path;
        }
        if (entrant.present()) {
            EXPECT_TRUE(names.insert(text.value(driver + "/UserName")).second);
            EXPECT_EQ(text.value(driver + "/LicColor").rfind("0x", 0), 0U);
        }
    }
    EXPECT_EQ(names.size(), 7U);
}

TEST(SessionText, GivesTheResultsAsTheyStand) {
    World world(shortTrack(8));
    drive(world, 120.0);
    const OutlineReader text(sessionText(world, false));
    const auto& lines = world.results().back().lines();
    ASSERT_GE(lines.size(), 6U);
    for (std::size_t place = 0; place < lines.size(); ++place) {
        const std::string position =
            "SessionInfo/Sessions/0/ResultsPositions/" + std::to_string(place + 1);
        EXPECT_EQ(text.value(position + "/CarIdx"), std::to_string(lines[place].car));
        EXPECT_EQ(text.value(position + "/LapsComplete"),
                  std::to_string(lines[place].lapsComplete));
        EXPECT_EQ(std::stof(text.value(position + "/LastTime")),
                  static_cast<float>(lines[place].last));
    }
    EXPECT_TRUE(text.has("SessionInfo/Sessions/0/ResultsFastestLap"));
    EXPECT_TRUE(text.has("SessionInfo/Sessions/0/ResultsOfficial"));
}

TEST(SessionText, ListsAllSessionsOfAWeekendAndTheirResults) {
    Options weekend = shortTrack(8, SessionChoice::Weekend);
    weekend.sessionLength = 90.0;
    World world(weekend);
    while (world.weekend().number() < 3) {
        world.advance();
    }
    drive(world, 120.0);
    const OutlineReader text(sessionText(world, false));
    EXPECT_EQ(text.value("SessionInfo/Sessions/0/SessionType"), "Practice");
    EXPECT_EQ(text.value("SessionInfo/Sessions/1/SessionType"), "Qualify");
    EXPECT_EQ(text.value("SessionInfo/Sessions/2/SessionType"), "Warmup");
    EXPECT_EQ(text.value("SessionInfo/Sessions/3/SessionType"), "Race");
    for (int number = 0; number < 4; ++number) {
        EXPECT_TRUE(text.has("SessionInfo/Sessions/" + std::to_string(number) +
                             "/ResultsPositions/1/CarIdx"))
            << number;
    }
    EXPECT_TRUE(text.has("QualifyResultsInfo/Results/0/CarIdx"));
    EXPECT_TRUE(text.has("DriverInfo/DriverCarIdx"));
}

TEST(SessionText, NamesEachKindOfSession) {
    const std::pair<SessionChoice, const char*> kinds[] = {
        {SessionChoice::Testing, "Offline testing"},
        {SessionChoice::Practice, "Practice"},
        {SessionChoice::Qualify, "Qualify"},
        {SessionChoice::Race, "Race"}};
    for (const auto& [choice, name] : kinds) {
        const World world(shortTrack(2, choice));
        EXPECT_EQ(
            OutlineReader(sessionText(world, false)).value("SessionInfo/Sessions/0/SessionType"),
            name);
    }
}

TEST(SessionText, SaysWhenItIsAReplay) {
    const World world(shortTrack(2));
    EXPECT_EQ(OutlineReader(sessionText(world, true)).value("WeekendInfo/SimMode"), "replay");
}

TEST(SessionText, DropsADriverWhoHasLeftButKeepsTheResult) {
    World world(shortTrack(8));
    drive(world, 120.0);
    const auto gone = std::find_if(world.entrants().begin(), world.entrants().end(),
                                   [](const Entrant& each) { return !each.present(); });
    ASSERT_NE(gone, world.entrants().end());
    const OutlineReader text(sessionText(world, false));
    EXPECT_FALSE(text.has("DriverInfo/Drivers/" + std::to_string(gone->slot())));
    EXPECT_GT(world.results().back().position(gone->slot()), 0);
}

TEST(SessionText, IsOfRealisticSizeInLatin1WithUnixLineEnds) {
    World world(shortTrack(60));
    drive(world, 120.0);
    const std::string text = sessionText(world, false);
    EXPECT_GT(text.size(), 60000U);
    EXPECT_LT(text.size(), 150000U);
    EXPECT_EQ(text.rfind("---\n", 0), 0U);
    EXPECT_EQ(text.substr(text.size() - 4), "...\n");
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_EQ(text.find('\t'), std::string::npos);
    EXPECT_EQ(text.find('\0'), std::string::npos);
    EXPECT_NE(text.find("Bj\xF6rn"), std::string::npos);
}

TEST(SessionText, IndentsOneColumnALevel) {
    World world(shortTrack(3));
    const std::string text = sessionText(world, false);
    EXPECT_NE(text.find("\nDriverInfo:\n DriverCarIdx: "), std::string::npos);
    EXPECT_NE(text.find("\n Drivers:\n - CarIdx: 0\n   UserName: "), std::string::npos);
    EXPECT_NE(text.find("\n WeekendOptions:\n  NumStarters: 3\n"), std::string::npos);
    EXPECT_NE(text.find("\n Sessions:\n - SessionNum: 0\n   SessionLaps: "), std::string::npos);
}
