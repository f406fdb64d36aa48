#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <chrono>
#include <cstring>
#include <limits>
#include <thread>

namespace {

using testsupport::isUntorn;

// The snapshot is copied onto the descriptor of the buffer that it comes from. So each copy changes
// the tick count that the link reads again behind it, exactly as a simulator does that overwrites
// the buffer at that moment, and the test decides what the next read finds.

class TornCopies : public LinkToOwnProcessTest {
protected:
    /** A payload that becomes the descriptor of buffer 1 when it is copied there. */
    void setPayload(int buffer, std::int32_t tickCount, std::int32_t nextOffset) {
        const irsdk_varBuf descriptor{tickCount, nextOffset, {0, 0}};
        const std::int32_t offset = block.descriptor(buffer).bufferOffset;
        std::memcpy(published() + offset, &descriptor, sizeof descriptor);
    }

    /** The last place of the block from which a payload can be copied onto a descriptor. */
    [[nodiscard]] char* ownDescriptor() { return published() + descriptorField(1, 0); }

    void openWithPayloadsOfOneDescriptor() {
        openAtTick10();
        publisher.poke(offsetof(irsdk_header, bufferLength), sizeof(irsdk_varBuf));
        publisher.setTick(1, 11);
    }

    [[nodiscard]] bool takesOntoItsDescriptor() {
        return irsdk_getNewData(ownDescriptor(), sizeof(irsdk_varBuf));
    }

    [[nodiscard]] std::int32_t offsetOf(int buffer) {
        return block.descriptor(buffer).bufferOffset;
    }
};

TEST_F(TornCopies, ACountThatStoodStillIsAGoodCopy) {
    openWithPayloadsOfOneDescriptor();
    setPayload(1, 11, offsetOf(1));

    EXPECT_TRUE(takesOntoItsDescriptor());
    EXPECT_FALSE(irsdk_getNewData(nullptr)) << "tick 11 is handed out";
}

TEST_F(TornCopies, ATornCopyIsRepeatedAndItsNewCountCounts) {
    openWithPayloadsOfOneDescriptor();
    setPayload(1, 12, offsetOf(1));  // both copies leave tick 12 behind

    EXPECT_TRUE(takesOntoItsDescriptor());
    publisher.setTick(2, 12);
    EXPECT_FALSE(irsdk_getNewData(nullptr)) << "tick 12 is the one that was handed out";
    publisher.setTick(2, 13);
    EXPECT_TRUE(irsdk_getNewData(nullptr));
}

TEST_F(TornCopies, TheSecondCopyReadsTheOffsetAfresh) {
    openWithPayloadsOfOneDescriptor();
    setPayload(1, 12, offsetOf(2));  // after the first copy the buffer lies elsewhere
    setPayload(2, 12, offsetOf(2) + 4);

    EXPECT_TRUE(takesOntoItsDescriptor());

    irsdk_varBuf descriptor{};
    std::memcpy(&descriptor, ownDescriptor(), sizeof descriptor);
    EXPECT_EQ(descriptor.bufferOffset, offsetOf(2) + 4) << "the copy of the second place";
}

TEST_F(TornCopies, ABufferThatMovedUnderTheSameCountIsCopiedAgain) {
    openWithPayloadsOfOneDescriptor();
    setPayload(1, 11, offsetOf(2));
    setPayload(2, 11, offsetOf(2) + 4);

    EXPECT_TRUE(takesOntoItsDescriptor());

    irsdk_varBuf descriptor{};
    std::memcpy(&descriptor, ownDescriptor(), sizeof descriptor);
    EXPECT_EQ(descriptor.bufferOffset, offsetOf(2) + 4) << "the copy of the second place";
}

TEST_F(TornCopies, ACopyTornTwiceIsNotHandedOut) {
    openWithPayloadsOfOneDescriptor();
    setPayload(1, 12, offsetOf(2));
    setPayload(2, 13, offsetOf(2));  // the second copy finds yet another tick

    EXPECT_FALSE(takesOntoItsDescriptor());
    EXPECT_TRUE(irsdk_getNewData(nullptr)) << "the next call takes the tick that was missed";
}

TEST_F(TornCopies, TheMarkOfABufferInWritingProvesNothing) {
    openWithPayloadsOfOneDescriptor();
    // The count fell to the mark and stands still there: both copies lie within one overwriting.
    setPayload(1, -1, offsetOf(1));

    EXPECT_FALSE(takesOntoItsDescriptor());
    publisher.setTick(1, 11);
    EXPECT_TRUE(irsdk_getNewData(nullptr)) << "the starting point stayed where it was";
}

TEST_F(TornCopies, ASecondCopyThatWouldLeaveTheBlockIsNotMade) {
    openWithPayloadsOfOneDescriptor();
    setPayload(1, 12, std::numeric_limits<std::int32_t>::max());

    EXPECT_FALSE(takesOntoItsDescriptor());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockInvalid);
}

TEST_F(TornCopies, ASecondCopyThatBecameTooLongIsNotMade) {
    // The first copy changes the header as well, from the buffer length up to the first descriptor.
    openAtTick10();
    constexpr std::size_t kFrom = offsetof(irsdk_header, bufferLength);
    constexpr std::int32_t kLength = offsetof(irsdk_header, varBuf) + sizeof(irsdk_varBuf) - kFrom;
    const std::int32_t payload[] = {kLength + 1, 0, 0, 12, offsetOf(0), 0, 0};
    static_assert(sizeof payload == kLength);
    publisher.poke(kFrom, kLength);
    publisher.setTick(0, 11);
    std::memcpy(published() + offsetOf(0), payload, sizeof payload);

    EXPECT_FALSE(irsdk_getNewData(published() + kFrom, kLength));
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BufferTooSmall);
}

constexpr int kWantedCopies = 5000;  // a matter of a second where reader and writer both run
constexpr int kEnoughCopies = 100;   // on a machine so busy that they take turns
constexpr std::chrono::seconds kTimeForMoreThanEnough{15};
constexpr int kBufferBytes = 16 * 1024;

class FullSpeed : public LinkToOtherProcessTest {
protected:
    void openWhileWriting(int buffers) {
        block.setBufferCount(buffers);
        block.setBufferLength(kBufferBytes);
        snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
        publisher.publish(block);
        for (int buffer = 0; buffer < buffers; ++buffer) {
            publisher.completeChecked(buffer, buffer + 1);
        }
        ASSERT_TRUE(irsdk_startup());
        publisher.command("write " + std::to_string(buffers));
    }

    /** Torn copies among those that the link hands out of a ring overwritten without pause. */
    int countTornLinkCopies() {
        const auto end = std::chrono::steady_clock::now() + kTimeForMoreThanEnough;
        int copies = 0;
        int torn = 0;
        while (copies < kEnoughCopies ||
               (copies < kWantedCopies && std::chrono::steady_clock::now() < end)) {
            if (takes()) {
                ++copies;
                torn += isUntorn(snapshot.data(), snapshot.size()) ? 0 : 1;
            } else {
                std::this_thread::yield();  // to the writer, where they take turns
            }
        }
        publisher.command("stop");
        return torn;
    }

    static const volatile irsdk_varBuf* descriptors() { return irsdk_getHeader()->varBuf; }

    static int newestBuffer() {
        int newest = 0;
        for (int i = 1; i < irsdk_getHeader()->numBuf; ++i) {
            if (descriptors()[i].tickCount > descriptors()[newest].tickCount) {
                newest = i;
            }
        }
        return newest;
    }

    /** Of a single buffer it is the mark of its being written for a while. */
    static std::int32_t newestTick() { return descriptors()[newestBuffer()].tickCount; }

    static std::int32_t awaitTick(std::int32_t least) {
        std::int32_t tick = newestTick();
        while (tick < least) {
            std::this_thread::yield();
            tick = newestTick();
        }
        return tick;
    }

    /**
     * What a reader would do that takes the newest buffer and does not look at its count again, and
     * that is stopped in the middle for as long as the writer needs to write all of them once and
     * the one that it may be at once more.
     */
    void takeWithoutSecondLook(int buffers) {
        const int buffer = newestBuffer();
        const std::size_t half = snapshot.size() / 2;
        std::memcpy(snapshot.data(), irsdk_getData(buffer), half);
        const std::int32_t tick = awaitTick(1);
        awaitTick(tick + buffers + 1);
        std::memcpy(snapshot.data() + half, irsdk_getData(buffer) + half, half);
    }
};

TEST_F(FullSpeed, NoTornSnapshotIsHandedOutFromARingOfThree) {
    openWhileWriting(3);

    EXPECT_EQ(countTornLinkCopies(), 0);
}

TEST_F(FullSpeed, NoTornSnapshotIsHandedOutFromARingOfTwo) {
    openWhileWriting(2);

    EXPECT_EQ(countTornLinkCopies(), 0);
}

TEST_F(FullSpeed, NoTornSnapshotIsHandedOutFromASingleBuffer) {
    openWhileWriting(1);

    EXPECT_EQ(countTornLinkCopies(), 0);
}

TEST_F(FullSpeed, AReaderWithoutTheSecondLookIsCaught) {
    for (const int buffers : {1, 2, 3}) {
        openWhileWriting(buffers);
        takeWithoutSecondLook(buffers);
        publisher.command("stop");

        EXPECT_FALSE(isUntorn(snapshot.data(), snapshot.size()))
            << "else the cases above would prove nothing";
        irsdk_shutdown();
        publisher.command("unlink");
    }
}

}  // namespace
