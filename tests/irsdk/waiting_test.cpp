#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Limits are wide: a machine may stop a process for a while, and only "waited" and "did not wait"
// have to be told apart.
constexpr int kLong = 60'000;                 // milliseconds, as a time-out that shall not pass
constexpr std::chrono::seconds kSoon{30};     // far less than that
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

    /**
     * Whether a call without new data comes back in less than the shortest time-out there is: one
     * of many, since a busy machine may stop any of them, and all of them wait if one of them does.
     */
    bool comesBackAtOnce(int timeOut) {
        constexpr int kCalls = 100;
        Clock::duration shortest = Clock::duration::max();
        for (int i = 0; i < kCalls; ++i) {
            EXPECT_FALSE(waits(timeOut));
            shortest = std::min(shortest, waited);
        }
        return shortest < milliseconds(1);
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
        EXPECT_TRUE(comesBackAtOnce(timeOut)) << timeOut;
    }
}

TEST_P(Waiting, DoesNotWaitWithoutATimeOutWhileTheSimulatorIsThere) {
    openAtTick10();
    for (const int timeOut : {0, -1, -1'000'000}) {
        EXPECT_TRUE(comesBackAtOnce(timeOut)) << timeOut;
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

/** Does things from another thread, each as soon as it is told to. */
class OnDemand {
public:
    template <typename Action>
    explicit OnDemand(Action action)
        : m_thread([this, action]() mutable {
              while (isDemanded()) {
                  action();
              }
          }) {}
    ~OnDemand() {
        tell(Demand::End);
        m_thread.join();
    }
    OnDemand(const OnDemand&) = delete;
    OnDemand& operator=(const OnDemand&) = delete;

    void demand() { tell(Demand::Once); }

private:
    enum class Demand { Nothing, Once, End };

    void tell(Demand demand) {
        const std::lock_guard lock(m_mutex);
        m_demand = demand;
        m_told.notify_one();
    }

    /** Waits for the next demand; false for the one to end. */
    bool isDemanded() {
        std::unique_lock lock(m_mutex);
        m_told.wait(lock, [this] { return m_demand != Demand::Nothing; });
        return std::exchange(m_demand, Demand::Nothing) == Demand::Once;
    }

    std::mutex m_mutex;
    std::condition_variable m_told;
    Demand m_demand = Demand::Nothing;
    std::thread m_thread;
};

/** Cases in which the signal comes while the link waits. */
class WaitingForOther : public LinkToOtherProcessTest {};

TEST_F(WaitingForOther, ASignalEndsTheWait) {
    openAtTick10();
    irsdk_waitForDataReady(1, nullptr);
    const auto start = Clock::now();
    const TicksToCome ticks(publisher, 11);

    EXPECT_TRUE(irsdk_waitForDataReady(kLong, snapshot.data(), length()));

    EXPECT_LT(Clock::now() - start, kSoon);
    EXPECT_GE(testsupport::checkedTick(snapshot.data()), 11);
}

TEST_F(WaitingForOther, ACompletionThatOnlyResynchronisedDoesNotEndTheWait) {
    publisher.publish(block);
    publisher.completeChecked(0, 10);
    ASSERT_TRUE(irsdk_startup());
    const TicksToCome ticks(publisher, 11);

    // The first look takes tick 10 as the starting point; the wait is for tick 11.
    EXPECT_TRUE(irsdk_waitForDataReady(kLong, snapshot.data(), length()));

    EXPECT_GE(testsupport::checkedTick(snapshot.data()), 11);
}

TEST_F(WaitingForOther, ASimulatorOnItsWayIsMetAtTheFirstWait) {
    publisher.publish(block);
    // With pauses so long that none of the starts falls into a completion.
    publisher.command("every 20000 3");
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
    constexpr int kLast = 500;
    // So slow that it begins with a tick when the one before it was taken.
    OnDemand writer([this, tick = 10]() mutable {
        ++tick;
        publisher.completeChecked(tick % 3, tick);
    });
    for (int tick = 11; tick <= kLast; ++tick) {
        const auto start = Clock::now();
        writer.demand();
        // A signal that was left over may end one wait early.
        const bool taken = irsdk_waitForDataReady(kLong, snapshot.data(), length()) ||
                           irsdk_waitForDataReady(kLong, snapshot.data(), length());
        ASSERT_TRUE(taken) << tick;
        ASSERT_LT(Clock::now() - start, kSoon) << tick;
        ASSERT_TRUE(testsupport::isUntorn(snapshot.data(), snapshot.size()));
        ASSERT_EQ(testsupport::checkedTick(snapshot.data()), tick);
    }
}

TEST_F(LongLook, ATickThatItJustMissesEndsTheWait) {
    openAtTick10();
    constexpr int kRounds = 20;
    OnDemand writer([this, tick = 10]() mutable {
        passIntoTheLook();
        publisher.setTick(0, ++tick);  // in the buffer that was looked at first
        publisher.command("signal");
    });
    for (int round = 0; round < kRounds; ++round) {
        const auto start = Clock::now();
        writer.demand();
        ASSERT_TRUE(irsdk_waitForDataReady(kLong, nullptr) ||
                    irsdk_waitForDataReady(kLong, nullptr));
        ASSERT_LT(Clock::now() - start, kSoon);
    }
}

}  // namespace
