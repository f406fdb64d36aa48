#include "tools/laps/displayunit.h"

#include <gtest/gtest.h>

namespace {

using rataip::laps::displayUnit;
using rataip::laps::labelWithUnit;

TEST(DisplayUnit, ShowsSpeedsAnglesAndSharesAsDriversReadThem) {
    EXPECT_EQ(displayUnit(QStringLiteral("m/s")).unit, QStringLiteral("km/h"));
    EXPECT_DOUBLE_EQ(displayUnit(QStringLiteral("m/s")).factor, 3.6);
    EXPECT_EQ(displayUnit(QStringLiteral("rad")).unit, QStringLiteral("°"));
    EXPECT_NEAR(displayUnit(QStringLiteral("rad")).factor * 3.14159265358979, 180.0, 1e-9);
    EXPECT_EQ(displayUnit(QStringLiteral("%")).factor, 100.0);
    EXPECT_EQ(displayUnit(QStringLiteral("pu")).unit, QStringLiteral("%"));
}

TEST(DisplayUnit, LeavesEveryOtherUnitAlone) {
    for (const QString& unit : {QString(), QStringLiteral("bar"), QStringLiteral("M/S")}) {
        EXPECT_EQ(displayUnit(unit).unit, unit);
        EXPECT_EQ(displayUnit(unit).factor, 1.0);
    }
}

TEST(LabelWithUnit, NamesTheUnitWhereThereIsOne) {
    EXPECT_EQ(labelWithUnit(QStringLiteral("Speed"), QStringLiteral("km/h")),
              QStringLiteral("Speed (km/h)"));
    EXPECT_EQ(labelWithUnit(QStringLiteral("Gear"), {}), QStringLiteral("Gear"));
}

}  // namespace
