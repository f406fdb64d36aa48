#include "tests/tools/simulator/shorttrack.h"
#include "tools/simulator/sessiontext.h"
#include "tools/simulator/world.h"
#include "yaml/tyamltree.h"

#include <QString>

#include <gtest/gtest.h>

using namespace simulator;

namespace {

Options options() {
    Options options = shortTrack(12, SessionChoice::Weekend);
    options.sessionLength = 80.0;
    return options;
}

}  // namespace

TEST(SessionTextInTheTree, GivesEveryDriverUnderItsSlot) {
    World world(options());
    TYamlTree tree;
    tree.setYaml(sessionText(world, false).c_str());
    for (const Entrant& entrant : world.entrants()) {
        const QString driver = "DriverInfo/Drivers/" + QString::number(entrant.slot());
        ASSERT_EQ(tree.pathSub(driver) != nullptr, entrant.present());
        if (entrant.present()) {
            EXPECT_EQ(tree.pathValue(driver + "/UserName"),
                      QString::fromLatin1(entrant.driver().userName.c_str()));
            EXPECT_EQ(tree.pathValue(driver + "/DivisionName"),
                      QString::fromLatin1(entrant.driver().division.c_str()));
        }
    }
    EXPECT_EQ(tree.pathValue("DriverInfo/DriverCarIdx"), QString::number(world.ownSlot()));
    EXPECT_EQ(tree.pathValue("CarSetup/Chassis/Rear/FuelLevel"), "55.8 L");
    EXPECT_EQ(tree.pathValue("CarSetup/TiresAero/AeroCalculator/LD"), "3.512");
    EXPECT_EQ(tree.pathValue("WeekendInfo/WeekendOptions/WeatherTemp"), "22.50 C");
}

TEST(SessionTextInTheTree, GivesTheResultsOfEverySessionAsTheWeekendGoesOn) {
    World world(options());
    TYamlTree tree;
    int revision = 0;
    int compared = 0;
    while (world.weekend().number() < 3 || world.results().back().lines().size() < 8) {
        world.advance();
        if (world.revision() == revision) {
            continue;
        }
        revision = world.revision();
        tree.setYaml(sessionText(world, false).c_str());
        const QString session = "SessionInfo/Sessions/" + QString::number(world.weekend().number());
        ASSERT_EQ(tree.pathValue(session + "/SessionType"),
                  sessionTypeText(world.weekend().plan().type));
        const auto& lines = world.results().back().lines();
        for (std::size_t place = 0; place < lines.size(); ++place) {
            const QString position =
                session + "/ResultsPositions/" + QString::number(static_cast<int>(place) + 1);
            ASSERT_EQ(tree.pathValue(position + "/CarIdx").toInt(), lines[place].car);
            ASSERT_EQ(tree.pathValue(position + "/LapsComplete").toInt(),
                      lines[place].lapsComplete);
            ASSERT_EQ(static_cast<float>(tree.pathValue(position + "/LastTime").toDouble()),
                      static_cast<float>(lines[place].last));
            ++compared;
        }
        ASSERT_LT(world.tick(), ticksOf(1500.0));
    }
    EXPECT_GT(compared, 100);
}
