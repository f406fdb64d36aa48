#include "irsdk/platform.h"
#include "tests/irsdk/linktest.h"

namespace {

class LinkStartup : public LinkTest {};

TEST_P(LinkStartup, FailsWithoutABlock) {
    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoBlock);
    EXPECT_EQ(irsdk_getHeader(), nullptr);
}

TEST_P(LinkStartup, OpensBlockAndEvent) {
    publisher.publish(block);

    EXPECT_TRUE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::None);
    ASSERT_NE(irsdk_getHeader(), nullptr);
    EXPECT_EQ(irsdk_getHeader()->numVars, 3);
}

TEST_P(LinkStartup, RefusesABlockLargerThanAnySimulatorPublishes) {
    publisher.command("empty " + std::to_string(irsdk::kLargestBlock + 1));
    publisher.createEvent();

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockTooLarge);
    EXPECT_EQ(irsdk_getHeader(), nullptr);
}

TEST_P(LinkStartup, TakesABlockOfTheLargestSize) {
    publisher.command("empty " + std::to_string(irsdk::kLargestBlock));
    publisher.createEvent();

    EXPECT_TRUE(irsdk_startup()) << irsdk_errorText(irsdk_lastError());
}

TEST_P(LinkStartup, KeepsTheBlockWhileTheEventIsMissing) {
    publisher.publishBlock(block);

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoEvent);
    EXPECT_EQ(irsdk_getHeader(), nullptr);
    EXPECT_FALSE(takes());
    EXPECT_FALSE(irsdk_isConnected());
}

TEST_P(LinkStartup, GoesOnWhenTheEventComesLate) {
    publisher.publishBlock(block);
    ASSERT_FALSE(irsdk_startup());

    publisher.createEvent();

    EXPECT_TRUE(irsdk_startup());
    EXPECT_NE(irsdk_getHeader(), nullptr);
}

TEST_P(LinkStartup, IsTrueAgainWhileOpen) {
    publisher.publish(block);
    ASSERT_TRUE(irsdk_startup());

    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinkStartup, KeepsItsStartingPointWhenCalledAgain) {
    openAtTick10();

    ASSERT_TRUE(irsdk_startup());
    publisher.completeChecked(1, 11);

    EXPECT_TRUE(takes());
}

TEST_P(LinkStartup, AnEventWithoutABlockIsNothing) {
    publisher.createEvent();

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoBlock);
}

TEST_P(LinkStartup, ShutdownClosesEverything) {
    openAtTick10();

    irsdk_shutdown();

    EXPECT_EQ(irsdk_getHeader(), nullptr);
    EXPECT_EQ(irsdk_getData(0), nullptr);
    EXPECT_EQ(irsdk_getSessionInfoStr(), nullptr);
    EXPECT_EQ(irsdk_getSessionInfoStrUpdate(), -1);
    EXPECT_EQ(irsdk_getVarHeaderPtr(), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(0), nullptr);
    EXPECT_EQ(irsdk_varNameToIndex("Speed"), -1);
    EXPECT_EQ(irsdk_varNameToOffset("Speed"), -1);
    EXPECT_FALSE(irsdk_isConnected());
}

TEST_P(LinkStartup, ShutdownOfAClosedLinkDoesNothing) {
    irsdk_shutdown();
    irsdk_shutdown();

    EXPECT_EQ(irsdk_getHeader(), nullptr);
}

TEST_P(LinkStartup, ShutdownOfAHalfOpenLinkLetsTheNextStartBegin) {
    publisher.publishBlock(block);
    ASSERT_FALSE(irsdk_startup());

    irsdk_shutdown();
    publisher.createEvent();

    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinkStartup, AReopenedLinkTakesANewStartingPoint) {
    openAtTick10();
    irsdk_shutdown();
    publisher.completeChecked(1, 11);

    ASSERT_TRUE(irsdk_startup());
    EXPECT_FALSE(takes());
    publisher.completeChecked(2, 12);
    EXPECT_TRUE(takes());
}

TEST_P(LinkStartup, GettingDataOpensTheLink) {
    publisher.publish(block);
    publisher.completeChecked(0, 10);

    EXPECT_FALSE(takes());
    EXPECT_NE(irsdk_getHeader(), nullptr);
    publisher.completeChecked(1, 11);
    EXPECT_TRUE(takes());
}

RATAIP_IN_BOTH_PLACES(LinkStartup);

TEST_F(LinkToOtherProcessTest, NothingOfAKilledSimulatorMeetsTheNextTest) {
    {
        testsupport::Publisher killed(Where::OtherProcess);
        killed.publish(block);
        killed.die();
    }
    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoBlock);
}

TEST_F(LinkToOtherProcessTest, AFreshSimulatorIsFoundAfterAnOrderlyEnd) {
    openAtTick10();
    publisher.quit();
    EXPECT_FALSE(takes());
    irsdk_shutdown();
    EXPECT_FALSE(irsdk_startup());

    testsupport::Publisher next(Where::OtherProcess);
    next.publish(block);
    next.completeChecked(0, 3);

    ASSERT_TRUE(irsdk_startup());
    EXPECT_FALSE(takes());
    next.completeChecked(1, 4);
    EXPECT_TRUE(takes());
}

TEST_F(LinkToOtherProcessTest, AFreshSimulatorIsFoundAfterAViolentEnd) {
    openAtTick10();
    publisher.die();
    EXPECT_FALSE(takes());
    irsdk_shutdown();

    testsupport::Publisher next(Where::OtherProcess);
    next.publish(block);
    next.completeChecked(0, 3);

    EXPECT_FALSE(takes());
    next.completeChecked(1, 4);
    EXPECT_TRUE(takes());
}

TEST(LinkError, HasATextForEveryReason) {
    for (int code = 0; code <= static_cast<int>(irsdk_Error::BufferTooSmall); ++code) {
        EXPECT_STRNE(irsdk_errorText(static_cast<irsdk_Error>(code)), "unknown error") << code;
    }
}

TEST(LinkError, HasATextForAnUnknownReason) {
    EXPECT_STREQ(irsdk_errorText(static_cast<irsdk_Error>(99)), "unknown error");
}

}  // namespace
