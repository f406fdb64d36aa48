#include "tools/simulator/variabletable.h"

#include "tests/tools/simulator/shorttrack.h"
#include "tools/simulator/checksum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

using namespace simulator;

namespace {

/** A world and the snapshots that a table makes of it. */
class Published {
public:
    explicit Published(const Options& options = {})
        : world(options),
          playback(options.replay, world.track().lapTime(), Random(1)),
          table(options),
          buffer(table.bufferLength()) {}

    void advance(int ticks) {
        for (; ticks > 0; --ticks) {
            world.advance();
        }
        table.write({world, playback}, buffer);
    }

    template <typename Element>
    Element value(const std::string& name, int element = 0) const {
        const Variable* variable = table.find(name);
        EXPECT_NE(variable, nullptr) << name;
        Element read{};
        if (variable != nullptr) {
            std::memcpy(&read,
                        buffer.data() + variable->offset +
                            static_cast<std::size_t>(element) * sizeof(Element),
                        sizeof read);
        }
        return read;
    }

    World world;
    Playback playback;
    VariableTable table;
    std::vector<std::byte> buffer;
};

}  // namespace

TEST(VariableTable, IsPublishedWithTheFactsOfItsVariables) {
    const Published published;
    const std::vector<irsdk_varHeader> headers = published.table.headers();
    ASSERT_EQ(headers.size(), published.table.variables().size());
    for (std::size_t index = 0; index < headers.size(); ++index) {
        const irsdk_varHeader& entry = headers[index];
        const Variable& variable = published.table.variables()[index];
        EXPECT_EQ(entry.type, variable.type);
        EXPECT_EQ(entry.offset, static_cast<int>(variable.offset));
        EXPECT_EQ(entry.count, variable.count);
        EXPECT_EQ(entry.countAsTime != 0, variable.countAsTime);
        EXPECT_EQ(variable.name, entry.name);
        EXPECT_EQ(variable.unit, entry.unit);
        EXPECT_EQ(variable.description, entry.desc);
    }
}

TEST(VariableTable, HasAbout300VariablesOfAllSixTypes) {
    const VariableTable table{Options()};
    EXPECT_GE(table.variables().size(), 295U);
    EXPECT_LE(table.variables().size(), 310U);
    std::map<irsdk_VarType, int> types;
    for (const Variable& variable : table.variables()) {
        ++types[variable.type];
    }
    for (const irsdk_VarType type :
         {irsdk_char, irsdk_bool, irsdk_int, irsdk_bitField, irsdk_float, irsdk_double}) {
        EXPECT_GT(types[type], 1) << type;
    }
}

TEST(VariableTable, Has36PerCarArraysOf64) {
    const VariableTable table{Options()};
    int arrays = 0;
    for (const Variable& variable : table.variables()) {
        if (variable.name.rfind("CarIdx", 0) == 0) {
            ++arrays;
            EXPECT_EQ(variable.count, 64) << variable.name;
        } else {
            EXPECT_LT(variable.count, 64) << variable.name;
        }
    }
    EXPECT_EQ(arrays, 36);
}

TEST(VariableTable, HasEveryNameThatALapRecorderReads) {
    const VariableTable table{Options()};
    for (const char* name : {"Lap",
                             "LapCompleted",
                             "LapDistPct",
                             "LapDist",
                             "LapCurrentLapTime",
                             "LapLastLapTime",
                             "LapBestLapTime",
                             "IsOnTrack",
                             "OnPitRoad",
                             "PlayerCarInPitStall",
                             "SessionNum",
                             "SessionState",
                             "SessionTime",
                             "SessionTimeRemain",
                             "SessionTick",
                             "SessionUniqueID",
                             "ReplayPlaySpeed",
                             "Speed",
                             "Throttle",
                             "Brake",
                             "Clutch",
                             "Gear",
                             "RPM",
                             "SteeringWheelAngle",
                             "Yaw",
                             "FuelLevel",
                             "FuelLevelPct",
                             "EnergyBatteryToMGU_KLap",
                             "EnergyMGU_KLapDeployPct",
                             "CarIdxLap",
                             "CarIdxLapCompleted",
                             "CarIdxLapDistPct",
                             "CarIdxOnPitRoad",
                             "CarIdxLastLapTime",
                             "CarIdxTrackSurface",
                             "CarIdxPosition",
                             "CarIdxF2Time",
                             "CarIdxRPM",
                             "CarIdxGear",
                             "CarIdxSteer",
                             "CarIdxEstTime"}) {
        EXPECT_NE(table.find(name), nullptr) << name;
    }
    EXPECT_EQ(table.find("FuelLevelPct")->unit, "%");
    EXPECT_EQ(table.find("NoSuchName"), nullptr);
}

TEST(VariableTable, GivesEachVariableAUniqueNameThatFits) {
    const VariableTable table{Options()};
    std::set<std::string> names;
    for (const Variable& variable : table.variables()) {
        EXPECT_TRUE(names.insert(variable.name).second) << variable.name;
        EXPECT_LE(variable.name.size(), IRSDK_MAX_STRING) << variable.name;
        EXPECT_LT(variable.description.size(), IRSDK_MAX_DESC) << variable.name;
        EXPECT_FALSE(variable.description.empty()) << variable.name;
        EXPECT_LT(variable.unit.size(), IRSDK_MAX_STRING) << variable.name;
    }
}

TEST(VariableTable, LaysOutElementsWithoutOverlap) {
    Options options;
    options.padBuffer = 100;
    const VariableTable table(options);
    std::size_t end = 100;
    for (const Variable& variable : table.variables()) {
        const std::size_t size = irsdk_varTypeSize(variable.type);
        ASSERT_GT(size, 0U);
        EXPECT_EQ(variable.offset % size, 0U);
        EXPECT_GE(variable.offset, end);
        end = variable.offset + size * static_cast<std::size_t>(variable.count);
    }
    EXPECT_GE(table.bufferLength(), end);
    EXPECT_EQ(table.bufferLength() % 16, 0U);
    EXPECT_GT(table.bufferLength(), VariableTable{Options()}.bufferLength());
}

TEST(VariableTable, AppendsExtraVariablesAfterTheOthers) {
    Options options;
    options.extraVariables = 12;
    const VariableTable usual{Options()};
    const VariableTable longer(options);
    ASSERT_EQ(longer.variables().size(), usual.variables().size() + 12);
    for (std::size_t index = 0; index < usual.variables().size(); ++index) {
        EXPECT_EQ(longer.variables()[index].name, usual.variables()[index].name);
    }
}

TEST(VariableTable, PutsTheTableInAnotherOrderWhenAsked) {
    Options options;
    options.shuffleVariables = true;
    const VariableTable usual{Options()};
    const VariableTable shuffled(options);
    ASSERT_EQ(shuffled.variables().size(), usual.variables().size());
    std::size_t moved = 0;
    for (std::size_t index = 0; index < usual.variables().size(); ++index) {
        moved += shuffled.variables()[index].name != usual.variables()[index].name ? 1U : 0U;
        EXPECT_NE(shuffled.find(usual.variables()[index].name), nullptr);
    }
    EXPECT_GT(moved, usual.variables().size() / 2);
}

TEST(VariableTable, WritesAChecksumThatAnyOtherByteChanges) {
    Published published(shortTrack());
    published.advance(500);
    const auto offset = published.table.find(kChecksumName)->offset;
    const auto checksum = published.value<std::int32_t>(kChecksumName);
    EXPECT_EQ(snapshotChecksum(published.buffer, offset), checksum);
    for (const std::size_t at : {std::size_t{0}, offset - 1, published.buffer.size() - 1}) {
        published.buffer[at] ^= std::byte{1};
        EXPECT_NE(snapshotChecksum(published.buffer, offset), checksum) << at;
        published.buffer[at] ^= std::byte{1};
    }
    published.buffer[offset] ^= std::byte{1};
    EXPECT_EQ(snapshotChecksum(published.buffer, offset), checksum);
}

TEST(VariableTable, PublishesMinusOneForCarsThatAreNotThere) {
    Published published(shortTrack());
    published.advance(1);
    for (int slot = 6; slot < 64; ++slot) {
        EXPECT_EQ(published.value<float>("CarIdxLapDistPct", slot), -1.0F);
        EXPECT_EQ(published.value<std::int32_t>("CarIdxTrackSurface", slot), -1);
        EXPECT_EQ(published.value<std::uint8_t>("CarIdxOnPitRoad", slot), 0);
    }
    EXPECT_GE(published.value<float>("CarIdxLapDistPct", published.world.ownSlot()), 0.0F);
}

TEST(VariableTable, PublishesADriverWhoHasNotJoinedAsNotThere) {
    Published published(shortTrack());
    published.advance(1);
    int absent = 0;
    for (const Entrant& entrant : published.world.entrants()) {
        if (!entrant.present()) {
            ++absent;
            EXPECT_EQ(published.value<std::int32_t>("CarIdxLap", entrant.slot()), -1);
            EXPECT_EQ(published.value<std::int32_t>("CarIdxClassId", entrant.slot()), -1);
        }
    }
    EXPECT_EQ(absent, 1);
}

TEST(VariableTable, PublishesTheOwnCarTheSameInBothPlaces) {
    Published published(shortTrack());
    for (int step = 0; step < 100; ++step) {
        published.advance(60);
        const int own = published.world.ownSlot();
        EXPECT_EQ(published.value<float>("LapDistPct"),
                  published.value<float>("CarIdxLapDistPct", own));
        EXPECT_EQ(published.value<std::int32_t>("Lap"),
                  published.value<std::int32_t>("CarIdxLap", own));
        EXPECT_EQ(published.value<float>("LapLastLapTime"),
                  published.value<float>("CarIdxLastLapTime", own));
        EXPECT_EQ(published.value<std::uint8_t>("OnPitRoad"),
                  published.value<std::uint8_t>("CarIdxOnPitRoad", own));
    }
}

TEST(VariableTable, PublishesTheOwnLapTimeTogetherWithTheRunningTimeAfterTheLine) {
    Published published(shortTrack());
    int settled = 0;
    int ticksSinceLine = 1000;
    float lastPct = 0.0F;
    float lastRunning = 0.0F;
    float lastTime = -1.0F;
    for (int tick = 0; tick < 9000; ++tick) {
        published.advance(1);
        const auto pct = published.value<float>("LapDistPct");
        const auto running = published.value<float>("LapCurrentLapTime");
        const auto time = published.value<float>("LapLastLapTime");
        ticksSinceLine = lastPct - pct > 0.5F ? 0 : ticksSinceLine + 1;
        if (lastRunning - running > 5.0F) {
            EXPECT_GT(ticksSinceLine, 5);
            EXPECT_LT(ticksSinceLine, 60);
            EXPECT_GT(running, 0.0F);
            EXPECT_NEAR(time, lastRunning - running, 0.05F);
            ++settled;
        } else {
            EXPECT_EQ(time, lastTime);
        }
        lastPct = pct;
        lastRunning = running;
        lastTime = time;
    }
    EXPECT_GE(settled, 3);
}

TEST(VariableTable, CountsTheUntimedLapWhileItsRunningTimeIsStillZero) {
    Options options = shortTrack();
    options.cars = 2;
    for (options.seed = 1; options.seed < 12; ++options.seed) {
        Published published(options);
        int seen = 0;
        while (published.value<float>("LapCurrentLapTime") == 0.0F) {
            published.advance(1);
            seen += published.value<std::int32_t>("Lap") == 1 ? 1 : 0;
            ASSERT_LT(published.world.tick(), 6000);
        }
        EXPECT_GE(seen, 6);
    }
}

TEST(VariableTable, ResetsTheEnergyOfALap) {
    Published published(shortTrack());
    float highest = 0.0F;
    bool startedAnew = false;
    for (int tick = 0; tick < 6000; ++tick) {
        published.advance(1);
        const auto deployed = published.value<float>("EnergyBatteryToMGU_KLap");
        startedAnew = startedAnew || deployed < highest * 0.5F;
        highest = std::max(highest, deployed);
        EXPECT_LE(published.value<float>("EnergyMGU_KLapDeployPct"), 1.0F);
    }
    EXPECT_GT(highest, 0.0F);
    EXPECT_TRUE(startedAnew);
}

TEST(VariableTable, ChangesMostValuesAsACarDrives) {
    Published published(shortTrack());
    published.advance(1200);
    std::map<std::string, std::vector<std::byte>> before;
    std::set<std::string> changed;
    for (int step = 0; step < 40; ++step) {
        published.advance(45);
        for (const Variable& variable : published.table.variables()) {
            const auto start =
                published.buffer.begin() + static_cast<std::ptrdiff_t>(variable.offset);
            const std::vector<std::byte> now(
                start,
                start + static_cast<std::ptrdiff_t>(irsdk_varTypeSize(variable.type) *
                                                    static_cast<std::size_t>(variable.count)));
            if (step > 0 && now != before[variable.name]) {
                changed.insert(variable.name);
            }
            before[variable.name] = now;
        }
    }
    EXPECT_GT(changed.size(), 200U);
}

TEST(VariableTable, PublishesTheLapsOfTheLeaderWhoeverLeads) {
    constexpr int kTicksPerSecond = 60;
    constexpr int kSeconds = 300;
    Options options = shortTrack();
    options.session = SessionChoice::Race;
    Published published(options);
    int most = 0;
    int timesAhead = 0;
    for (int second = 0; second < kSeconds; ++second) {
        published.advance(kTicksPerSecond);
        int leading = 0;
        for (int car = 0; car < options.cars; ++car) {
            leading = std::max(leading, published.value<std::int32_t>("CarIdxLapCompleted", car));
        }
        ASSERT_EQ(published.value<std::int32_t>("RaceLaps"), leading);
        timesAhead += leading > published.value<std::int32_t>("LapCompleted") ? 1 : 0;
        most = std::max(most, leading);
    }
    EXPECT_GT(most, 3);
    EXPECT_GT(timesAhead, 0) << "the own car must not lead all the time";
}
