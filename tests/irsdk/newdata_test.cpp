#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <limits>

namespace {

using testsupport::checkedTick;
using testsupport::isUntorn;

class NewData : public LinkTest {};

TEST_P(NewData, TheFirstLookOnlyTakesTheStartingPoint) {
    publisher.publish(block);
    publisher.completeChecked(0, 10);
    ASSERT_TRUE(irsdk_startup());

    EXPECT_FALSE(takes());
    EXPECT_FALSE(takes());
    publisher.completeChecked(1, 11);
    EXPECT_TRUE(takes());
}

TEST_P(NewData, CopiesTheWholeSnapshot) {
    openAtTick10();
    block.set("Speed", 41.5);
    block.set("CarIdxLap", 7, 63);
    block.set("Gear", -1);

    publisher.complete(1, 11, block);

    ASSERT_TRUE(takes());
    EXPECT_EQ(std::memcmp(snapshot.data(), block.snapshot(), snapshot.size()), 0);
}

TEST_P(NewData, HandsATickOutOnce) {
    openAtTick10();
    publisher.completeChecked(1, 11);

    EXPECT_TRUE(takes());
    EXPECT_FALSE(takes());
}

TEST_P(NewData, TakesTheNewestAndSkipsWhatLiesBetween) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    publisher.completeChecked(2, 12);
    publisher.completeChecked(0, 13);

    ASSERT_TRUE(takes());
    EXPECT_EQ(checkedTick(snapshot.data()), 13);
    EXPECT_TRUE(isUntorn(snapshot.data(), snapshot.size()));
    EXPECT_FALSE(takes());
}

TEST_P(NewData, TheFirstOfBuffersWithEqualCountsIsTaken) {
    openAtTick10();
    publisher.completeChecked(2, 12);
    publisher.completeChecked(1, 11);
    publisher.setTick(1, 12);

    ASSERT_TRUE(takes());
    EXPECT_EQ(checkedTick(snapshot.data()), 11) << "what buffer 1 holds";
}

TEST_P(NewData, NullDataTellsOnlyThatThereIsSome) {
    openAtTick10();
    publisher.completeChecked(1, 11);

    EXPECT_TRUE(irsdk_getNewData(nullptr));
    EXPECT_FALSE(irsdk_getNewData(nullptr)) << "the tick counts as handed out";
}

TEST_P(NewData, AStoppedSimulatorHasNone) {
    openAtTick10();
    publisher.setStatus(0);
    publisher.completeChecked(1, 11);

    EXPECT_FALSE(takes());
}

TEST_P(NewData, OnlyBitZeroOfTheStatusCounts) {
    openAtTick10();
    publisher.setStatus(~irsdk_stConnected);
    publisher.completeChecked(1, 11);
    EXPECT_FALSE(takes());

    publisher.setStatus(-1);
    EXPECT_FALSE(takes()) << "the starting point after the stop";
    publisher.completeChecked(2, 12);
    EXPECT_TRUE(takes());
}

TEST_P(NewData, TheFirstSnapshotAfterAStopOnlyResynchronises) {
    openAtTick10();
    publisher.setStatus(0);
    EXPECT_FALSE(takes());
    publisher.setStatus(irsdk_stConnected);
    publisher.completeChecked(1, 11);

    EXPECT_FALSE(takes());
    publisher.completeChecked(2, 12);
    EXPECT_TRUE(takes());
}

TEST_P(NewData, ACounterThatGoesBackwardsIsANewStartingPoint) {
    openAtTick10();
    publisher.setTick(0, 5);

    EXPECT_FALSE(takes());
    publisher.completeChecked(1, 6);
    ASSERT_TRUE(takes());
    EXPECT_EQ(checkedTick(snapshot.data()), 6);
}

TEST_P(NewData, NegativeCountsAreComparedAsSignedNumbers) {
    publisher.publish(block);
    for (int buffer = 0; buffer < 3; ++buffer) {
        publisher.setTick(buffer, -20);
    }
    ASSERT_FALSE(takes());

    publisher.completeChecked(1, -19);

    ASSERT_TRUE(takes());
    EXPECT_EQ(checkedTick(snapshot.data()), -19);
}

TEST_P(NewData, TheLargestCountIsNeverNewerThanTheStart) {
    publisher.publish(block);
    publisher.setTick(0, std::numeric_limits<std::int32_t>::max());

    EXPECT_FALSE(takes());
    EXPECT_FALSE(takes());
}

TEST_P(NewData, ASingleBufferIsTheNewest) {
    block.setBufferCount(1);
    openAtTick10();

    publisher.completeChecked(0, 11);

    ASSERT_TRUE(takes());
    EXPECT_EQ(checkedTick(snapshot.data()), 11);
}

TEST_P(NewData, NoBuffersOrFewerStillMeanTheFirst) {
    openAtTick10();
    int tickCount = 10;
    for (const int stated : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        publisher.poke(offsetof(irsdk_header, numBuf), stated);
        publisher.completeChecked(1, 1000);
        publisher.completeChecked(0, ++tickCount);

        ASSERT_TRUE(takes()) << stated;
        EXPECT_EQ(checkedTick(snapshot.data()), tickCount) << stated;
    }
}

TEST_P(NewData, AThousandBuffersAreAllLookedAt) {
    block.setBufferCount(1000);
    openAtTick10();

    publisher.completeChecked(999, 11);

    ASSERT_TRUE(takes());
    EXPECT_EQ(checkedTick(snapshot.data()), 11);
}

TEST_P(NewData, NothingIsWrittenBehindTheSnapshot) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    std::vector<char> larger(snapshot.size() + 16, '#');

    ASSERT_TRUE(irsdk_getNewData(larger.data(), static_cast<int>(larger.size())));

    EXPECT_TRUE(isUntorn(larger.data(), snapshot.size()));
    EXPECT_EQ(std::string(larger.end() - 16, larger.end()), std::string(16, '#'));
}

TEST_P(NewData, ASnapshotLongerThanTheBufferIsNoNewData) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    std::vector<char> untouched(snapshot.size(), '#');

    EXPECT_FALSE(irsdk_getNewData(untouched.data(), length() - 1));
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BufferTooSmall);
    EXPECT_EQ(untouched, std::vector<char>(snapshot.size(), '#'));
    EXPECT_TRUE(takes()) << "the tick is still there for a buffer that is long enough";
}

TEST_P(NewData, TellsHowLongTheSnapshotWas) {
    const int full = length();
    EXPECT_EQ(irsdk_getDataLength(), 0);
    openAtTick10();
    EXPECT_EQ(irsdk_getDataLength(), 0) << "a starting point is not handed out";
    publisher.completeChecked(1, 11);
    ASSERT_TRUE(takes());
    EXPECT_EQ(irsdk_getDataLength(), full);

    publisher.poke(offsetof(irsdk_header, bufferLength), full / 2);
    EXPECT_EQ(irsdk_getDataLength(), full);
    publisher.completeChecked(2, 12);
    ASSERT_TRUE(takes());
    EXPECT_EQ(irsdk_getDataLength(), full / 2);
    publisher.completeChecked(0, 13);
    ASSERT_TRUE(irsdk_getNewData(nullptr));
    EXPECT_EQ(irsdk_getDataLength(), full / 2) << "nothing was copied";

    irsdk_shutdown();
    EXPECT_EQ(irsdk_getDataLength(), 0);
}

TEST_P(NewData, EachLookTellsItsOwnFailureAlone) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    const auto spoil = [this] {
        publisher.poke(offsetof(irsdk_header, bufferLength), 0);
        EXPECT_FALSE(takes());
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockInvalid);
        publisher.poke(offsetof(irsdk_header, bufferLength), length());
    };

    spoil();
    EXPECT_TRUE(takes());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::None);

    publisher.completeChecked(2, 12);
    spoil();
    publisher.setStatus(0);
    EXPECT_FALSE(takes());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::None) << "a stopped simulator is no failure";
}

TEST_P(NewData, AShutdownKeepsTheReason) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    EXPECT_FALSE(irsdk_getNewData(snapshot.data(), 1));

    irsdk_shutdown();

    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BufferTooSmall);
}

TEST_P(NewData, ALengthBelowZeroTakesNothing) {
    openAtTick10();
    publisher.completeChecked(1, 11);

    EXPECT_FALSE(irsdk_getNewData(snapshot.data(), -1));
    EXPECT_FALSE(irsdk_getNewData(snapshot.data(), 0));
}

TEST_P(NewData, TheNewestBufferIsFoundInALongRing) {
    constexpr int kBuffers = 300;
    constexpr int kStep = 7;
    block.setBufferCount(kBuffers);
    openAtTick10();
    for (int buffer = 1; buffer < kBuffers; buffer += kStep) {
        publisher.completeChecked(buffer, 10 + buffer);
        ASSERT_TRUE(takes()) << buffer;
        EXPECT_EQ(testsupport::checkedTick(snapshot.data()), 10 + buffer);
    }
}

RATAIP_IN_BOTH_PLACES(NewData);

}  // namespace
