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

struct Count {
    int copies = 0;
    int torn = 0;
};

constexpr int kWantedCopies = 5000;  // a matter of a second where reader and writer both run
constexpr int kEnoughCopies = 100;   // on a machine so busy that they take turns
constexpr std::chrono::seconds kTimeForMoreThanEnough{15};
constexpr int kUntilATear = 1'000'000;  // as many ticks and as many copies
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

    /** Takes snapshots until `enough` says so. */
    template <typename Take, typename Enough>
    Count countCopies(Take take, Enough enough) {
        Count count;
        while (!enough(count)) {
            if (take()) {
                ++count.copies;
                count.torn += isUntorn(snapshot.data(), snapshot.size()) ? 0 : 1;
            } else {
                std::this_thread::yield();  // to the writer, where they take turns
            }
        }
        publisher.command("stop");
        return count;
    }

    /** What the link hands out of a ring that is overwritten without pause. */
    Count countLinkCopies() {
        const auto end = std::chrono::steady_clock::now() + kTimeForMoreThanEnough;
        return countCopies(
            [this] { return takes(); },
            [end](const Count& soFar) {
                return soFar.copies >= kWantedCopies ||
                       (soFar.copies >= kEnoughCopies && std::chrono::steady_clock::now() >= end);
            });
    }

    static const volatile irsdk_varBuf* buffers() { return irsdk_getHeader()->varBuf; }

    static int newestBuffer() {
        int newest = 0;
        for (int i = 1; i < irsdk_getHeader()->numBuf; ++i) {
            if (buffers()[i].tickCount > buffers()[newest].tickCount) {
                newest = i;
            }
        }
        return newest;
    }

    static std::int32_t newestTick() { return buffers()[newestBuffer()].tickCount; }

    /** What a reader would do that takes the newest buffer and does not look at its count again. */
    bool takeWithoutSecondLook() {
        std::memcpy(snapshot.data(), irsdk_getData(newestBuffer()), snapshot.size());
        return true;
    }
};

TEST_F(FullSpeed, NoTornSnapshotIsHandedOutFromARingOfThree) {
    openWhileWriting(3);
    const Count count = countLinkCopies();

    EXPECT_EQ(count.torn, 0);
}

TEST_F(FullSpeed, NoTornSnapshotIsHandedOutFromARingOfTwo) {
    openWhileWriting(2);
    const Count count = countLinkCopies();

    EXPECT_EQ(count.torn, 0);
}

TEST_F(FullSpeed, NoTornSnapshotIsHandedOutFromASingleBuffer) {
    openWhileWriting(1);
    const Count count = countLinkCopies();

    EXPECT_EQ(count.torn, 0);
}

TEST_F(FullSpeed, AReaderWithoutTheSecondLookIsCaught) {
    openWhileWriting(2);
    const Count count = countCopies(
        [this] { return takeWithoutSecondLook(); },
        [this](const Count& soFar) {
            return soFar.torn > 0 || (soFar.copies >= kUntilATear && newestTick() >= kUntilATear);
        });

    EXPECT_GT(count.torn, 0) << "else the cases above would prove nothing";
}

}  // namespace
