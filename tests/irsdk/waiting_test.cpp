#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <chrono>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Limits are wide: a machine may stop a process for a while, and only "waited" and "did not wait"
// have to be told apart.
constexpr int kLong = 5000;                   // milliseconds, as a time-out that shall not pass
constexpr milliseconds kSoon{2500};           // far less than that
constexpr milliseconds kShortWait{100};       // a time-out that shall pass
constexpr milliseconds kAlmostShortWait{90};  // clocks of different kinds round differently

class Waiting : public LinkTest {
protected:
    bool waits(milliseconds timeOut) { return waits(static_cast<int>(timeOut.count())); }

    bool waits(int timeOut) {
        const auto start = Clock::now();
        const bool result = irsdk_waitForDataReady(timeOut, snapshot.data(), length());
        waited = Clock::now() - start;
        return result;
    }

    Clock::duration waited{};
};

TEST_P(Waiting, SleepsWhileTheSimulatorIsAbsent) {
    EXPECT_FALSE(waits(kShortWait));

    EXPECT_GE(waited, kAlmostShortWait);
    EXPECT_LT(waited, kSoon);
}

TEST_P(Waiting, DoesNotSleepWithoutATimeOut) {
    for (const int timeOut : {0, -1, -1'000'000}) {
        EXPECT_FALSE(waits(timeOut));
        EXPECT_LT(waited, kSoon);
    }
}

TEST_P(Waiting, DoesNotWaitWithoutATimeOutWhileTheSimulatorIsThere) {
    openAtTick10();
    for (const int timeOut : {0, -1, -1'000'000}) {
        EXPECT_FALSE(waits(timeOut));
        EXPECT_LT(waited, kSoon);
    }
}

TEST_P(Waiting, TakesWhatIsThereAtOnce) {
    openAtTick10();
    int tick = 10;
    for (const int timeOut : {0, -1, kLong}) {
        publisher.completeChecked(1, ++tick);

        EXPECT_TRUE(waits(timeOut));
        EXPECT_LT(waited, kSoon);
    }
}

TEST_P(Waiting, WithoutASignalItEndsWithTheTimeOut) {
    openAtTick10();
    publisher.command("signal");
    static_cast<void>(waits(1));  // takes a signal that may have been left over

    EXPECT_FALSE(waits(kShortWait));

    EXPECT_GE(waited, kAlmostShortWait);
    EXPECT_LT(waited, kSoon);
}

TEST_P(Waiting, DataWithoutASignalAreFoundAtTheEnd) {
    openAtTick10();
    static_cast<void>(waits(1));
    publisher.completeChecked(1, 11);
    ASSERT_TRUE(waits(1));
    publisher.setTick(2, 12);

    EXPECT_TRUE(waits(kLong)) << "the look before the wait";
    EXPECT_LT(waited, kSoon);
}

TEST_P(Waiting, ANullBufferOnlyTellsThatDataCame) {
    openAtTick10();
    publisher.completeChecked(1, 11);

    EXPECT_TRUE(irsdk_waitForDataReady(kLong, nullptr));
    EXPECT_FALSE(irsdk_waitForDataReady(0, nullptr));
}

TEST_P(Waiting, TheShortFormCopiesAsMuchAsTheHeaderSays) {
    openAtTick10();
    publisher.completeChecked(1, 11);

    ASSERT_TRUE(irsdk_waitForDataReady(kLong, snapshot.data()));
    EXPECT_TRUE(testsupport::isUntorn(snapshot.data(), snapshot.size()));
}

TEST_P(Waiting, ASnapshotLongerThanTheBufferIsNoNewData) {
    openAtTick10();
    publisher.completeChecked(1, 11);

    EXPECT_FALSE(irsdk_waitForDataReady(1, snapshot.data(), length() - 1));
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BufferTooSmall);
}

TEST_P(Waiting, AStoppedSimulatorIsWaitedFor) {
    openAtTick10();
    static_cast<void>(waits(1));
    publisher.setStatus(0);

    EXPECT_FALSE(waits(kShortWait));
    EXPECT_GE(waited, kAlmostShortWait);
}

TEST_P(Waiting, OpensTheLink) {
    publisher.publish(block);

    static_cast<void>(waits(0));

    EXPECT_NE(irsdk_getHeader(), nullptr);
}

RATAIP_IN_BOTH_PLACES(Waiting);

/** Cases in which the signal comes while the link waits. */
class WaitingForOther : public LinkToOtherProcessTest {
protected:
    /** Completes the tick after a while, from another thread of the test. */
    std::thread later(int buffer, int tickCount) {
        return std::thread([this, buffer, tickCount] {
            std::this_thread::sleep_for(milliseconds(150));
            publisher.completeChecked(buffer, tickCount);
        });
    }
};

TEST_F(WaitingForOther, ASignalEndsTheWait) {
    openAtTick10();
    irsdk_waitForDataReady(1, nullptr);
    const auto start = Clock::now();
    std::thread writer = later(1, 11);

    const bool result = irsdk_waitForDataReady(kLong, snapshot.data(), length());
    const auto waited = Clock::now() - start;
    writer.join();

    EXPECT_TRUE(result);
    EXPECT_LT(waited, kSoon);
    EXPECT_EQ(testsupport::checkedTick(snapshot.data()), 11);
}

TEST_F(WaitingForOther, ACompletionThatOnlyResynchronisedDoesNotEndTheWait) {
    publisher.publish(block);
    publisher.completeChecked(0, 10);
    ASSERT_TRUE(irsdk_startup());
    std::thread writer = later(1, 11);

    // The first look takes tick 10 as the starting point; the wait is for tick 11.
    const bool result = irsdk_waitForDataReady(kLong, snapshot.data(), length());
    writer.join();

    EXPECT_TRUE(result);
    EXPECT_EQ(testsupport::checkedTick(snapshot.data()), 11);
}

TEST_F(WaitingForOther, ASimulatorOnItsWayIsMetAtTheFirstWait) {
    publisher.publish(block);
    publisher.command("every 2000 3");
    int met = 0;
    for (int i = 0; i < 50; ++i) {
        irsdk_shutdown();
        met += irsdk_waitForDataReady(kLong, snapshot.data(), length()) ? 1 : 0;
    }
    publisher.command("stop");

    EXPECT_EQ(met, 50);
}

TEST_F(WaitingForOther, EveryTickOfASlowWriterIsTaken) {
    openAtTick10();
    publisher.command("every 5000 3");
    const auto end = Clock::now() + std::chrono::seconds(60);
    int last = 0;
    int taken = 0;
    int skipped = 0;
    while (taken < 200 && Clock::now() < end) {
        // A signal that was left over may end a wait early; the next one gets the tick.
        if (!irsdk_waitForDataReady(kLong, snapshot.data(), length())) {
            continue;
        }
        ++taken;
        ASSERT_TRUE(testsupport::isUntorn(snapshot.data(), snapshot.size()));
        const int tick = testsupport::checkedTick(snapshot.data());
        ASSERT_GT(tick, last);
        skipped += last == 0 ? 0 : tick - last - 1;
        last = tick;
    }
    publisher.command("stop");

    EXPECT_EQ(taken, 200);
    EXPECT_LT(skipped, 100) << "most ticks are taken one by one even on a busy machine";
}

}  // namespace
