#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr unsigned int kSomebodyElse = 4242;
constexpr std::size_t kPage = 4096;

/** Whether a thread, or a process of one thread, is neither asleep nor at its end. */
bool isAtWork(pid_t thread) {
    std::ifstream file("/proc/" + std::to_string(thread) + "/stat");
    const std::string facts((std::istreambuf_iterator<char>(file)), {});
    const std::size_t afterName = facts.rfind(')');
    return afterName != std::string::npos &&
           (facts.compare(afterName, 3, ") R") == 0 || facts.compare(afterName, 3, ") D") == 0);
}

/** Time of the processor that this thread has had. */
std::chrono::nanoseconds threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

class LinuxLink : public LinkTest {
protected:
    static constexpr int kWaitTime = 200;  // milliseconds

    /** A wait that finds nothing new and takes its time without working. */
    void expectAWaitAsleep() {
        const auto start = std::chrono::steady_clock::now();
        const std::chrono::nanoseconds startOfWork = threadTime();
        EXPECT_FALSE(irsdk_waitForDataReady(kWaitTime, snapshot.data(), length()));
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kWaitTime));
        EXPECT_LT(threadTime() - startOfWork, std::chrono::milliseconds(kWaitTime / 4));
    }
};

/** One wait of the link, and another thread that does something at certain moments of it. */
class WatchedWait {
public:
    template <typename Script>
    explicit WatchedWait(Script script)
        : m_reader(gettid()), m_thread([this, script] { script(*this); }) {}
    ~WatchedWait() {
        m_state = State::Over;
        m_thread.join();
    }
    WatchedWait(const WatchedWait&) = delete;
    WatchedWait& operator=(const WatchedWait&) = delete;

    [[nodiscard]] bool waitForData(char* data, int length) {
        constexpr int kTimeOut = 60'000;  // milliseconds
        m_state = State::Begun;
        const bool taken = irsdk_waitForDataReady(kTimeOut, data, length);
        m_state = State::Over;
        return taken;
    }

    void untilItBegins() const {
        while (m_state == State::ToCome) {
            std::this_thread::yield();
        }
    }

    /** False when it is over instead. */
    bool untilItSleeps() const {
        untilItBegins();
        while (m_state == State::Begun && isAtWork(m_reader)) {
            std::this_thread::yield();
        }
        return m_state == State::Begun;
    }

private:
    enum class State { ToCome, Begun, Over };

    std::atomic<State> m_state{State::ToCome};
    pid_t m_reader;
    std::thread m_thread;
};

TEST_P(LinuxLink, ABlockThatCannotHoldItsHeaderIsRefused) {
    for (const int size : {0, 1, 63}) {
        publisher.command("empty " + std::to_string(size));
        publisher.createEvent();
        EXPECT_FALSE(irsdk_startup()) << size;
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockTooSmall) << size;
        publisher.command("unlink");
        irsdk_shutdown();
    }
}

TEST_P(LinuxLink, ABlockThatStatesAnySizeIsRefused) {
    constexpr std::size_t kMoreThanTheMachineHas = std::size_t{400} << 30;
    publisher.command("empty " + std::to_string(kMoreThanTheMachineHas));
    publisher.createEvent();

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockTooLarge);

    publisher.command("unlink");
    publisher.publishBlock(block);
    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinuxLink, ABlockThatGrowsToItsSizeIsTakenAtTheNextStart) {
    publisher.command("empty 0");
    publisher.createEvent();
    ASSERT_FALSE(irsdk_startup());

    publisher.publishBlock(block);

    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinuxLink, AnEventWithoutRoomForItsCounterIsNoEvent) {
    publisher.publish(block);
    publisher.command("truncate-event 0");

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoEvent);
}

TEST_P(LinuxLink, ABlockOfAnotherUserIsRefused) {
    publisher.publish(block);
    publisher.command("chown " + std::to_string(kSomebodyElse));

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::ForeignBlock);
    EXPECT_EQ(irsdk_getHeader(), nullptr);

    publisher.command("chown " + std::to_string(geteuid()));
    EXPECT_TRUE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::None);
}

TEST_P(LinuxLink, AnEventOfAnotherUserIsRefused) {
    publisher.publish(block);
    publisher.command("chown " + std::to_string(kSomebodyElse) + " event");

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::ForeignEvent);
}

TEST_P(LinuxLink, ABlockThatCannotBeOpenedIsToldApartFromAMissingOne) {
    publisher.publish(block);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const bool opened = irsdk_startup();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);

    EXPECT_FALSE(opened);
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::OpenFailed);
    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinuxLink, AHalfOpenLinkLetsAnAbandonedBlockGo) {
    publisher.publishBlock(block);
    ASSERT_FALSE(irsdk_startup());
    publisher.command("unlink");

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoBlock) << "not the event of a block that is gone";

    publisher.publish(block);
    publisher.completeChecked(0, 10);
    EXPECT_FALSE(takes());
    publisher.completeChecked(1, 11);
    EXPECT_TRUE(takes());
}

TEST_P(LinuxLink, AReplacedBlockIsTakenAfterAShutdown) {
    openAtTick10();
    publisher.command("unlink");
    publisher.publishBlock(block);
    publisher.completeChecked(0, 20);
    EXPECT_FALSE(takes()) << "the old block gets no more ticks";
    ASSERT_NE(irsdk_getHeader(), nullptr);

    irsdk_shutdown();
    EXPECT_FALSE(takes());
    publisher.completeChecked(1, 21);
    EXPECT_TRUE(takes());
}

TEST_P(LinuxLink, OpensWithTheRightToReadAlone) {
    publisher.publish(block);
    ASSERT_TRUE(irsdk_startup());

    std::ifstream maps("/proc/self/maps");
    const auto view = reinterpret_cast<std::uintptr_t>(irsdk_getHeader());
    bool found = false;
    for (std::string line; std::getline(maps, line);) {
        if (std::stoull(line, nullptr, 16) == view) {
            found = true;
            EXPECT_EQ(line.substr(line.find(' ') + 1, 4), "r--s");
        }
    }
    EXPECT_TRUE(found);
}

TEST_P(LinuxLink, ATruncatedBlockIsNoData) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    for (const int size : {64, 10, 0}) {
        publisher.command("truncate " + std::to_string(size));

        EXPECT_FALSE(takes()) << size;
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk) << size;
        EXPECT_FALSE(irsdk_waitForDataReady(1, snapshot.data(), length()));
        EXPECT_FALSE(irsdk_isConnected());
        irsdk_header header{};
        std::vector<irsdk_varHeader> table;
        std::string text;
        int update = 0;
        EXPECT_FALSE(irsdk_copyHeader(header));
        EXPECT_FALSE(irsdk_copyVarHeaders(table));
        EXPECT_FALSE(irsdk_copySessionInfoStr(text, update));
        EXPECT_EQ(update, -1);
    }
}

TEST_P(LinuxLink, NothingIsPointedAtInATruncatedBlock) {
    openAtTick10();
    ASSERT_EQ(irsdk_varNameToIndex("Gear"), 2);
    publisher.command("truncate 0");

    EXPECT_EQ(irsdk_getVarHeaderPtr(), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(0), nullptr);
    EXPECT_EQ(irsdk_varNameToIndex("Gear"), -1);
    EXPECT_EQ(irsdk_varNameToOffset("Gear"), -1);
    EXPECT_EQ(irsdk_getData(0), nullptr);
    EXPECT_EQ(irsdk_getSessionInfoStrUpdate(), -1);
    EXPECT_EQ(irsdk_getSessionInfoStr(), nullptr);
}

TEST_P(LinuxLink, NothingIsReadFromWhatIsLeftOfATruncatedBlock) {
    block.setBufferLength(static_cast<int>(kPage));
    snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
    openAtTick10();
    publisher.completeChecked(0, 11);
    publisher.command("truncate " + std::to_string(block.bytes().size() - 1));

    EXPECT_FALSE(takes()) << "the newest buffer is there whole, and so is all before it";
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk);
    EXPECT_FALSE(irsdk_isConnected());
    irsdk_header header{};
    std::vector<irsdk_varHeader> table;
    std::string text;
    int update = 0;
    EXPECT_FALSE(irsdk_copyHeader(header));
    EXPECT_FALSE(irsdk_copyVarHeaders(table));
    EXPECT_FALSE(irsdk_copySessionInfoStr(text, update));
}

TEST_P(LinuxLink, ABlockThatIsWholeAgainIsReadAnew) {
    openAtTick10();
    const std::size_t size = block.bytes().size();
    publisher.command("truncate 0");
    ASSERT_FALSE(takes());
    publisher.command("truncate " + std::to_string(size));
    publisher.publishBlock(block);
    publisher.completeChecked(1, 11);

    EXPECT_FALSE(takes()) << "the starting point";
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::None);
    publisher.completeChecked(2, 12);
    EXPECT_TRUE(takes());
}

TEST_P(LinuxLink, ATickThatNeededNoWaitDoesNotEndTheNextOne) {
    openAtTick10();
    constexpr int kTimeOut = 20;  // milliseconds
    static_cast<void>(irsdk_waitForDataReady(1, nullptr));
    publisher.completeChecked(1, 11);
    ASSERT_TRUE(irsdk_waitForDataReady(kTimeOut, nullptr));
    const auto start = std::chrono::steady_clock::now();

    EXPECT_FALSE(irsdk_waitForDataReady(kTimeOut, nullptr));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kTimeOut));
}

TEST_P(LinuxLink, WithoutItsEventAWaitSleepsForItsTime) {
    openAtTick10();
    std::thread cutter([this, reader = gettid()] {
        while (isAtWork(reader)) {
            std::this_thread::yield();
        }
        publisher.command("truncate-event 0");
    });
    expectAWaitAsleep();
    cutter.join();
    expectAWaitAsleep();
    publisher.poke(descriptorField(1, 0), 11);
    EXPECT_TRUE(irsdk_waitForDataReady(kWaitTime, snapshot.data(), length()));
}

TEST_P(LinuxLink, AnEventThatHasLostAPartOfItsCounterIsWaitedForAsleep) {
    openAtTick10();
    // More than one byte holds. What is left of it later says something else, and stays mapped.
    constexpr int kSignals = 300;
    for (int i = 0; i < kSignals; ++i) {
        publisher.command("signal");
    }
    EXPECT_FALSE(irsdk_waitForDataReady(1, snapshot.data(), length()));
    for (const int size : {3, 2, 1}) {
        publisher.command("truncate-event " + std::to_string(size));
        SCOPED_TRACE(size);
        expectAWaitAsleep();
    }
}

RATAIP_IN_BOTH_PLACES(LinuxLink);

TEST_F(LinkToOtherProcessTest, OneSignalWakesEveryReader) {
    publisher.publish(block);
    publisher.completeChecked(0, 10);
    constexpr int kReaders = 3;
    constexpr int kTimeOut = 60'000;  // milliseconds
    constexpr std::chrono::seconds kFarLess{30};
    std::array<pid_t, kReaders> readers{};
    std::array<int, 2> pipe{};
    ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
    for (pid_t& reader : readers) {
        reader = fork();
        if (reader == 0) {
            const bool atStart = irsdk_startup() && !takes();
            const char ready = '!';
            const bool told = write(pipe[1], &ready, 1) == 1;
            const auto begin = std::chrono::steady_clock::now();
            const bool taken = irsdk_waitForDataReady(kTimeOut, snapshot.data(), length()) &&
                               testsupport::checkedTick(snapshot.data()) == 11;
            const bool woken = std::chrono::steady_clock::now() - begin < kFarLess;
            _exit(atStart && told && taken && woken ? 0 : 1);
        }
    }
    close(pipe[1]);
    // All have their starting point: one that has not reached its wait yet finds tick 11 itself.
    char ready = 0;
    for (int i = 0; i < kReaders; ++i) {
        ASSERT_EQ(read(pipe[0], &ready, 1), 1);
    }
    close(pipe[0]);
    for (const pid_t reader : readers) {
        while (isAtWork(reader)) {
            std::this_thread::yield();
        }
    }
    publisher.completeChecked(1, 11);

    for (const pid_t reader : readers) {
        int status = 0;
        ASSERT_EQ(waitpid(reader, &status, 0), reader);
        EXPECT_EQ(status, 0);
    }
}

TEST_F(LinkToOtherProcessTest, ALateSignalOfTheStartingPointDoesNotEndTheWait) {
    openAtTick10();
    irsdk_shutdown();
    publisher.setTick(1, 11);  // complete, and its signal is still to come
    WatchedWait wait([this](const WatchedWait& moment) {
        moment.untilItSleeps();
        publisher.command("signal");
        moment.untilItSleeps();
        publisher.completeChecked(2, 12);
    });

    ASSERT_TRUE(wait.waitForData(snapshot.data(), length()));
    EXPECT_EQ(testsupport::checkedTick(snapshot.data()), 12);
}

TEST_F(LongLook, TheCompletionOfTheStartingPointNeverEndsTheWait) {
    openAtTick10();
    constexpr int kRounds = 10;
    int tick = 10;
    for (int round = 0; round < kRounds; ++round) {
        irsdk_shutdown();
        publisher.setTick(kLastBuffer, ++tick);
        WatchedWait wait([this, &tick](const WatchedWait& moment) {
            moment.untilItBegins();
            passIntoTheLook();
            // Armed before this signal, the look finds the tick after it as its starting point.
            publisher.command("signal");
            publisher.setTick(kLastBuffer, ++tick);
            moment.untilItSleeps();
            publisher.command("signal");
            moment.untilItSleeps();
            publisher.setTick(kLastBuffer, ++tick);
            publisher.command("signal");
        });

        ASSERT_TRUE(wait.waitForData(nullptr, 0)) << round;
    }
}

TEST_F(LongLook, ATickThatTheFirstLookJustMissesIsTakenWithoutAWait) {
    openAtTick10();
    constexpr int kRounds = 50;
    int tick = 10;
    bool slept = true;
    for (int round = 0; slept && round < kRounds; ++round) {
        irsdk_shutdown();
        slept = false;
        const auto completeIn = [this, &tick](int buffer) {
            publisher.setTick(buffer, ++tick);
            publisher.command("signal");
        };
        WatchedWait wait([&](const WatchedWait& moment) {
            moment.untilItBegins();
            passIntoTheLook();
            completeIn(0);  // the buffer that was looked at first
            slept = moment.untilItSleeps();
            completeIn(kLastBuffer);
        });
        ASSERT_TRUE(wait.waitForData(nullptr, 0)) << round;
    }
    EXPECT_FALSE(slept) << "for as long as the tick after it takes";
}

TEST(LinuxBroadcast, AFullQueueDropsWithoutWaiting) {
    testsupport::BroadcastReceiver receiver(2);
    ASSERT_TRUE(receiver.isReady());
    for (int i = 0; i < 5; ++i) {
        irsdk_broadcastMsg(static_cast<irsdk_BroadcastMsg>(1), 0, i);
    }

    const std::vector<publisher::BroadcastMessage> messages = receiver.take();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[1].lParam, 1);

    irsdk_broadcastMsg(static_cast<irsdk_BroadcastMsg>(1), 0, 9);
    ASSERT_EQ(receiver.take().size(), 1U) << "the channel is as good as before";
}

}  // namespace
