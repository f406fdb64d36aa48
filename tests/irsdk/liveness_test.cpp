#include "tests/irsdk/linktest.h"

#include <ctime>

namespace {

std::int64_t seconds = 0;  // what the clock of these cases shows

class Liveness : public LinkTest {
protected:
    void SetUp() override {
        LinkTest::SetUp();
        seconds = 1'000'000;
        irsdk::setCalendarClock([] { return seconds; });
    }

    void takeTick11() {
        openAtTick10();
        publisher.completeChecked(1, 11);
        ASSERT_TRUE(takes());
    }
};

TEST_P(Liveness, ASimulatorLivesFor29SecondsAfterASnapshot) {
    takeTick11();
    EXPECT_TRUE(irsdk_isConnected());
    seconds += 29;
    EXPECT_TRUE(irsdk_isConnected());
    seconds += 1;
    EXPECT_FALSE(irsdk_isConnected()) << "although the status bit is set";
}

TEST_P(Liveness, ANewSnapshotStartsTheTimeAgain) {
    takeTick11();
    seconds += 100;
    publisher.completeChecked(2, 12);
    ASSERT_TRUE(takes());

    EXPECT_TRUE(irsdk_isConnected());
}

TEST_P(Liveness, LookingWithoutCopyingCountsAsASnapshot) {
    takeTick11();
    seconds += 100;
    publisher.completeChecked(2, 12);
    ASSERT_TRUE(irsdk_getNewData(nullptr));

    EXPECT_TRUE(irsdk_isConnected());
}

TEST_P(Liveness, AStartingPointIsNoSnapshot) {
    takeTick11();
    irsdk_shutdown();
    seconds += 100;
    publisher.completeChecked(2, 12);
    ASSERT_FALSE(takes());

    EXPECT_FALSE(irsdk_isConnected());
}

TEST_P(Liveness, AStoppedSimulatorDoesNotLive) {
    takeTick11();
    publisher.setStatus(0);
    EXPECT_FALSE(irsdk_isConnected());
    publisher.setStatus(2);
    EXPECT_FALSE(irsdk_isConnected());
    publisher.setStatus(3);
    EXPECT_TRUE(irsdk_isConnected());
}

TEST_P(Liveness, AClosedLinkIsNotConnected) {
    takeTick11();
    irsdk_shutdown();

    EXPECT_FALSE(irsdk_isConnected());
}

TEST_P(Liveness, ReopeningKeepsTheTimeOfTheLastSnapshot) {
    takeTick11();
    irsdk_shutdown();
    seconds += 10;
    ASSERT_TRUE(irsdk_startup());

    EXPECT_TRUE(irsdk_isConnected());
}

TEST_P(Liveness, AClockSetBackCountsAsNoTimeGone) {
    takeTick11();
    seconds -= 100'000;

    EXPECT_TRUE(irsdk_isConnected());
}

TEST_P(Liveness, SecondsNeed64Bits) {
    seconds = std::int64_t{1} << 40;
    takeTick11();
    EXPECT_TRUE(irsdk_isConnected());
    seconds += std::int64_t{1} << 32;

    EXPECT_FALSE(irsdk_isConnected()) << "not an age of 0 after losing the upper half";
}

RATAIP_IN_BOTH_PLACES(Liveness);

TEST(CalendarClock, IsTheSystemsUnlessReplaced) {
    const auto before = static_cast<std::int64_t>(std::time(nullptr));
    const std::int64_t now = irsdk::calendarSeconds();

    EXPECT_GE(now, before - 1);
    EXPECT_LE(now, before + 60);
}

TEST(CalendarClock, CanBePutBack) {
    irsdk::setCalendarClock([] { return std::int64_t{42}; });
    EXPECT_EQ(irsdk::calendarSeconds(), 42);

    irsdk::setCalendarClock(nullptr);
    EXPECT_NE(irsdk::calendarSeconds(), 42);
}

}  // namespace
